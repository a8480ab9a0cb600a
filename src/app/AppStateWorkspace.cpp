#include "app/AppState.h"

#include "api/KvtInfo.h"
#include "core/FileTools.h"
#include "core/Version.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace {

const QString createdKey = QStringLiteral("created");

QString modificationTime(const QString &path)
{
    return QFileInfo(path).lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

} // namespace

void AppState::openKvt(const QString &path)
{
    QString error;
    const QByteArray bytes = FileTools::readFile(path, &error);
    if (bytes.isEmpty()) {
        setStatus(error.isEmpty() ? QStringLiteral("Could not read file.") : error, 0);
        return;
    }

    m_file = {path, QFileInfo(path).fileName(), bytes, m_file.generation + 1};
    m_hexModel->setBytes(bytes);
    m_identifiers.clear();
    m_identifiers.insert(FileTools::extractKvtIdentifiers(bytes));
    if (identifier(createdKey).isEmpty())
        m_identifiers.insert(createdKey, modificationTime(path));

    emit fileChanged();
    emit identifiersChanged();
    setStatus(QStringLiteral("Opened %1 \u2014 %2 bytes.").arg(m_file.name, QString::number(bytes.size())),
              1);
    requestKvtInfoFromApi();
}

void AppState::saveKvt(const QString &path)
{
    const QByteArray bytes = currentKvtBytes();
    if (bytes.isEmpty()) {
        setStatus(QStringLiteral("Open an KVT first."), 0);
        return;
    }
    QString error;
    if (!FileTools::writeFile(path, bytes, &error)) {
        setStatus(error, 0);
        return;
    }
    m_file.path = path;
    m_file.name = QFileInfo(path).fileName();
    emit fileChanged();
    setStatus(QStringLiteral("Saved."), 1);
}

QByteArray AppState::currentKvtBytes() const
{
    const QByteArray edited = m_hexModel->bytes();
    return edited.isEmpty() ? m_file.bytes : edited;
}

QUrl AppState::dialogFolder() const
{
    if (!m_file.path.isEmpty())
        return QUrl::fromLocalFile(QFileInfo(m_file.path).absolutePath());
    const QString documents = FileTools::documentsDir();
    return QUrl::fromLocalFile(QFileInfo(documents).isDir() ? documents : QDir::homePath());
}

QString AppState::suggestName(const QString &suffix) const
{
    const QString base = QFileInfo(m_file.name).completeBaseName();
    return (base.isEmpty() ? QStringLiteral("tune") : base) + suffix;
}

void AppState::requestKvtInfoFromApi()
{
    if (m_file.bytes.isEmpty())
        return;
    const QString name = m_file.name.isEmpty() ? QStringLiteral("tune.kvt") : m_file.name;
    m_client->kvtWorker(applicationVersion(), QStringLiteral("kvt_info"), {},
                        {{QStringLiteral("file"), name, m_file.bytes}},
                        [this, generation = m_file.generation](const WorkerResult &result) {
                            // One truck's numbers must never show on another's file.
                            if (generation == m_file.generation && result.ok && result.isJson)
                                applyKvtInfoJson(result.text);
                        });
}

void AppState::applyKvtInfoJson(const QString &json)
{
    m_identifiers = mergeKvtInfo(m_identifiers, json);
    emit identifiersChanged();
}

void AppState::setId(const QString &key, const QString &value)
{
    if (identifier(key) == value)
        return;
    m_identifiers.insert(key, value);
    emit identifiersChanged();
}

QString AppState::identifier(const QString &key) const
{
    return m_identifiers.value(key).toString();
}

QString AppState::vin() const
{
    return identifier(QStringLiteral("vin"));
}

QString AppState::serial() const
{
    return identifier(QStringLiteral("serial"));
}

QString AppState::mainOS() const
{
    return identifier(QStringLiteral("mainOS"));
}

QString AppState::system() const
{
    return identifier(QStringLiteral("system"));
}

QString AppState::fuel() const
{
    return identifier(QStringLiteral("fuel"));
}

QString AppState::speedometer() const
{
    return identifier(QStringLiteral("speedometer"));
}

QString AppState::engineDiag() const
{
    return identifier(QStringLiteral("engineDiag"));
}

QString AppState::engineOp() const
{
    return identifier(QStringLiteral("engineOp"));
}

QString AppState::interfaceID() const
{
    return identifier(QStringLiteral("interfaceID"));
}

QString AppState::created() const
{
    return identifier(createdKey);
}

QString AppState::editorVersion() const
{
    return identifier(QStringLiteral("editorVersion"));
}

QVariantList AppState::modules() const
{
    return m_identifiers.value(QStringLiteral("modules")).toList();
}

QString AppState::moduleOneOs() const
{
    return modules().value(0).toMap().value(QStringLiteral("mainOs")).toString();
}

void AppState::setVin(const QString &value)
{
    setId(QStringLiteral("vin"), value);
}

void AppState::setSerial(const QString &value)
{
    setId(QStringLiteral("serial"), value);
}

void AppState::setMainOS(const QString &value)
{
    setId(QStringLiteral("mainOS"), value);
}

void AppState::setSystem(const QString &value)
{
    setId(QStringLiteral("system"), value);
}

void AppState::setFuel(const QString &value)
{
    setId(QStringLiteral("fuel"), value);
}

void AppState::setSpeedometer(const QString &value)
{
    setId(QStringLiteral("speedometer"), value);
}

void AppState::setEngineDiag(const QString &value)
{
    setId(QStringLiteral("engineDiag"), value);
}

void AppState::setEngineOp(const QString &value)
{
    setId(QStringLiteral("engineOp"), value);
}

void AppState::setInterfaceID(const QString &value)
{
    setId(QStringLiteral("interfaceID"), value);
}
