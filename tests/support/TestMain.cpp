#include "support/TestMain.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *unwantedVariables[] = {
    "KVTEDITOR_SERVICE_CONFIG",
    "http_proxy",
    "HTTP_PROXY",
    "https_proxy",
    "HTTPS_PROXY",
    "all_proxy",
    "ALL_PROXY",
    "XDG_DOCUMENTS_DIR",
};

constexpr const char *takenSchemes[] = {"file", "http", "https"};

void setFolder(const char *variable, const QDir &root, const QString &name)
{
    root.mkpath(name);
    qputenv(variable, root.filePath(name).toLocal8Bit());
}

} // namespace

TestEnvironment::TestEnvironment()
{
    const QDir root(m_root.path());
    setFolder("HOME", root, u"home"_s);
    setFolder("XDG_CONFIG_HOME", root, u"config"_s);
    setFolder("XDG_DATA_HOME", root, u"data"_s);
    setFolder("XDG_CACHE_HOME", root, u"cache"_s);
    setFolder("TMPDIR", root, u"tmp"_s);
    setFolder("XDG_RUNTIME_DIR", root, u"run"_s);
    QFile::setPermissions(root.filePath(u"run"_s),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("KVTEDITOR_FILE_DIALOGS", "own");
    qputenv("LC_ALL", "C.UTF-8");
    for (const char *variable : unwantedVariables) {
        qunsetenv(variable);
    }
}

QString TestEnvironment::home()
{
    return qEnvironmentVariable("HOME");
}

QString TestEnvironment::documents()
{
    return home() + u"/Documents"_s;
}

bool isExhaustive()
{
    return qEnvironmentVariableIntValue("KVTEDITOR_EXHAUSTIVE") != 0;
}

UrlRecorder::UrlRecorder()
{
    for (const char *scheme : takenSchemes) {
        QDesktopServices::setUrlHandler(QLatin1StringView(scheme), this, "open");
    }
}

UrlRecorder::~UrlRecorder()
{
    for (const char *scheme : takenSchemes) {
        QDesktopServices::unsetUrlHandler(QLatin1StringView(scheme));
    }
}

void UrlRecorder::open(const QUrl &url)
{
    opened.append(url);
}
