#include "app/AppState.h"

#include "api/JsonReading.h"
#include "api/KvtInfo.h"
#include "app/HexEditing.h"
#include "core/FileTools.h"
#include "core/Version.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

QString modificationTime(const QString &path)
{
    return QFileInfo(path).lastModified().toString(u"yyyy-MM-dd HH:mm"_s);
}

} // namespace

void AppState::openKvt(const QString &path)
{
    QString error;
    const QByteArray bytes = FileTools::readFile(path, &error);
    if (bytes.isEmpty()) {
        setStatus(error.isEmpty() ? u"Could not read file."_s : error, 0);
        return;
    }

    m_file = {path, QFileInfo(path).fileName(), bytes, m_file.generation + 1};
    m_hexModel->setBytes(bytes);
    if (m_showHex)
        m_hexEditing->prepare(m_file.bytes);
    m_identifiers.clear();
    m_identifiers.insert(FileTools::extractKvtIdentifiers(bytes));
    if (created().isEmpty())
        m_identifiers.insert(u"created"_s, modificationTime(path));

    emit fileChanged();
    emit identifiersChanged();
    setStatus(u"Opened %1 \u2014 %2 bytes."_s.arg(m_file.name, QString::number(bytes.size())), 1);
    requestKvtInfoFromApi();
}

void AppState::saveKvt(const QString &path)
{
    const QByteArray bytes = currentKvtBytes();
    if (bytes.isEmpty()) {
        setStatus(u"Open an KVT first."_s, 0);
        return;
    }
    QString error;
    if (!FileTools::writeFile(path, bytes, &error)) {
        setStatus(error, 0);
        return;
    }
    m_file.path = path;
    m_file.name = QFileInfo(path).fileName();
    m_hexEditing->markSaved();
    if (m_showHex)
        m_hexEditing->prepare(m_file.bytes);
    emit fileChanged();
    setStatus(u"Saved."_s, 1);
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

QString AppState::expandedPath(const QString &path) const
{
    return path == "~"_L1 || path.startsWith("~/"_L1) ? QDir::homePath() + path.sliced(1) : path;
}

bool AppState::replacesOtherFile(const QString &path) const
{
    const QFileInfo file(path);
    return file.exists() && file.canonicalFilePath() != QFileInfo(m_file.path).canonicalFilePath();
}

QString AppState::suggestName(const QString &suffix) const
{
    const QString base = QFileInfo(m_file.name).completeBaseName();
    return (base.isEmpty() ? u"tune"_s : base) + suffix;
}

void AppState::requestKvtInfoFromApi()
{
    if (m_file.bytes.isEmpty())
        return;
    const QString name = m_file.name.isEmpty() ? u"tune.kvt"_s : m_file.name;
    m_client->kvtWorker(applicationVersion(), u"kvt_info"_s, {}, {{u"file"_s, name, m_file.bytes}},
                        [this, generation = m_file.generation](const WorkerResult &result) {
                            // One truck's numbers must never show on another's file.
                            if (generation == m_file.generation && result.ok && result.isJson)
                                applyKvtInfo(result.object);
                        });
}

void AppState::applyKvtInfoJson(const QString &json)
{
    applyKvtInfo(jsonObjectInText(json));
}

void AppState::applyKvtInfo(const QJsonObject &answer)
{
    m_identifiers = mergeKvtInfo(m_identifiers, answer);
    emit identifiersChanged();
}

void AppState::setId(const QString &key, const QString &value)
{
    if (identifier(key) == value)
        return;
    m_identifiers.insert(key, value);
    emit identifiersChanged();
}

QString AppState::moduleOneOs() const
{
    return modules().value(0).toMap().value(u"mainOs"_s).toString();
}
