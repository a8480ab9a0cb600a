#include "app/AppState.h"

#include "core/Version.h"
#include "platform/WebToolWindow.h"

#include <QClipboard>
#include <QGuiApplication>

AppState::AppState(QObject *parent)
    : QObject(parent)
    , m_client(new VoxApiClient(this))
    , m_hexModel(new HexModel(this))
{
}

AppState::~AppState() = default;

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

void AppState::setTab(const QString &key)
{
    if (m_tab == key)
        return;
    m_tab = key;
    emit tabChanged();
}

void AppState::copyText(const QString &text, const QString &label)
{
    if (QClipboard *const clipboard = qGuiApp ? QGuiApplication::clipboard() : nullptr)
        clipboard->setText(text);
    setStatus(label + QStringLiteral(" copied."), 1);
}

void AppState::openEditorDebug() { }

void AppState::setBusy(bool busy)
{
    m_busy = busy;
    emit busyChanged();
}

void AppState::setXdfEmail(const QString &email)
{
    if (m_xdf.email == email)
        return;
    m_xdf.email = email;
    emit xdfChanged();
}

void AppState::setXdfPassword(const QString &password)
{
    if (m_xdf.password == password)
        return;
    m_xdf.password = password;
    emit xdfChanged();
}

QString AppState::searchRecursive() const
{
    return m_search.recursive ? QStringLiteral("1") : QStringLiteral("0");
}

void AppState::setSearchRecursive(const QString &text)
{
    m_search.recursive = text != QLatin1String("0");
    emit searchChanged();
}
