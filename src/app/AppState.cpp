#include "app/AppState.h"

#include "api/ServiceConfig.h"
#include "app/HexEditing.h"
#include "app/ScanLink.h"
#include "core/FileTools.h"
#include "core/MessageHelp.h"
#include "core/Version.h"
#include "platform/WebToolWindow.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMutexLocker>
#include <QNetworkReply>

using namespace Qt::StringLiterals;

AppState::AppState(QObject *parent)
    : QObject(parent)
    , m_client(new VoxApiClient(this))
    , m_hexModel(new HexModel(this))
    , m_hexEditing(new HexEditing(m_hexModel, this))
    , m_transfers(new TransferMeter(this))
{
    if (const QString &refusal = serviceConfig().refusal; !refusal.isEmpty())
        setStatus(refusal, 0);
    connect(m_client, &VoxApiClient::requestSent, m_transfers, &TransferMeter::watch);
    connect(m_hexEditing, &HexEditing::said, this, &AppState::setStatus);
    m_search.link = std::make_shared<ScanLink>();
    m_search.link->owner = this;
}

AppState::~AppState()
{
    // What it has at work reads the model's bytes, and the model would go first.
    delete m_hexEditing;
    m_search.link->cancel = true;
    const QMutexLocker lock(&m_search.link->mutex);
    m_search.link->owner = nullptr;
}

QString AppState::version() const
{
    return applicationVersion();
}

void AppState::setStatus(const QString &text, int ok)
{
    m_status = text;
    m_statusOK = ok;
    emit statusChanged();
}

QString AppState::statusHelp() const
{
    constexpr qsizetype longestExplained = 2000;
    static const MessageHelp help = [] {
        QFile chapter(u":/manual/messages.md"_s);
        return MessageHelp(chapter.open(QIODevice::ReadOnly) ? QString::fromUtf8(chapter.readAll())
                                                             : QString());
    }();
    // The manual has no longer ones, but a service may send any.
    return m_status.size() <= longestExplained ? help.explain(m_status) : QString();
}

void AppState::setTab(const QString &key)
{
    if (std::exchange(m_tab, key) != key)
        emit tabChanged();
}

void AppState::copyText(const QString &text, const QString &label)
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        QGuiApplication::clipboard()->setText(text);
    setStatus(label + u" copied."_s, 1);
}

void AppState::openEditorDebug() { }

void AppState::setBusy(bool busy)
{
    m_busy = busy;
    emit busyChanged();
}

bool AppState::failed(const QString &error)
{
    if (!error.isEmpty())
        setStatus(error, 0);
    return !error.isEmpty();
}

QByteArray AppState::readInput(const QString &path)
{
    QString error;
    const QByteArray bytes = FileTools::readFile(path, &error);
    if (bytes.isEmpty())
        setStatus(error, 0);
    return bytes;
}

QString AppState::saveToDocuments(const QByteArray &bytes, const QString &name)
{
    QString error;
    const QString path = FileTools::exportToDocuments(bytes, name, &error);
    if (path.isEmpty())
        setStatus(error, 0);
    else
        FileTools::revealInExplorer(path);
    return path;
}
