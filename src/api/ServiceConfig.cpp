#include "api/ServiceConfig.h"

#include "core/ErrorText.h"
#include "core/FileTools.h"
#include "core/SystemPath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QUrl>

#include <algorithm>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

const QString apiBaseKey = u"apiBase"_s;
const QString authFieldsKey = u"authFields"_s;
const QString storeUrlKey = u"storeUrl"_s;
const QString placeholderEmailKey = u"placeholderEmail"_s;

bool isLoopback(const QString &host)
{
    return host.compare("localhost"_L1, Qt::CaseInsensitive) == 0 || QHostAddress(host).isLoopback();
}

// Tune files and passwords travel to this address, so nothing in between may read along.
bool isSafeBase(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty()
        && (url.scheme() == "https"_L1 || (url.scheme() == "http"_L1 && isLoopback(url.host())));
}

// The address is shown and joined with paths.
bool isMoreThanAPlace(const QUrl &url)
{
    return url.authority().contains('@'_L1) || url.hasQuery() || url.hasFragment();
}

QString objectionToBase(const QUrl &url)
{
    if (!isSafeBase(url))
        return u"\"apiBase\" is neither HTTPS nor HTTP on a loopback address"_s;
    if (isMoreThanAPlace(url))
        return u"\"apiBase\" holds user information, a query or a fragment"_s;
    return {};
}

bool isTextMap(const QJsonValue &value)
{
    if (!value.isObject())
        return false;
    const QJsonObject object = value.toObject();
    return std::all_of(object.begin(), object.end(),
                       [](const QJsonValue &member) { return member.isString(); });
}

// Empty when `value` may stand under `key`, else what is wrong with it. Never quotes the value: it may be a
// secret.
QString objection(const QString &key, const QJsonValue &value)
{
    if (key == authFieldsKey)
        return isTextMap(value) ? QString() : u"\"authFields\" is no object of texts"_s;
    if (key != apiBaseKey && key != storeUrlKey && key != placeholderEmailKey)
        return u"the key \"%1\" is unknown"_s.arg(key);
    if (!value.isString())
        return u"\"%1\" is no text"_s.arg(key);
    return key == apiBaseKey ? objectionToBase(QUrl(value.toString(), QUrl::StrictMode)) : QString();
}

ServiceConfig noService(const QString &path, const QString &reason)
{
    ServiceConfig config;
    config.refusal =
        u"Service configuration %1 is not used: %2"_s.arg(QDir::toNativeSeparators(path), reason);
    qWarning("%s", qUtf8Printable(config.refusal));
    return config;
}

QString withSlash(const QString &url)
{
    return url.endsWith('/'_L1) ? url : url + '/'_L1;
}

} // namespace

ServiceConfig builtInServiceConfig()
{
    return {withSlash(QStringLiteral(KVTEDITOR_API_BASE)),
            {},
            QStringLiteral(KVTEDITOR_STORE_URL),
            QStringLiteral(KVTEDITOR_PLACEHOLDER_EMAIL)};
}

std::optional<ServiceConfig> parseServiceConfig(const QByteArray &json, const ServiceConfig &defaults,
                                                QString *error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        setError(error, parseError.errorString());
        return std::nullopt;
    }
    if (!document.isObject()) {
        setError(error, u"it is no JSON object"_s);
        return std::nullopt;
    }
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString reason = objection(it.key(), it.value());
        if (!reason.isEmpty()) {
            setError(error, reason);
            return std::nullopt;
        }
    }
    ServiceConfig config = defaults;
    config.apiBase = withSlash(object.value(apiBaseKey).toString(defaults.apiBase));
    config.storeUrl = object.value(storeUrlKey).toString(defaults.storeUrl);
    config.placeholderEmail = object.value(placeholderEmailKey).toString(defaults.placeholderEmail);
    if (object.contains(authFieldsKey))
        config.authFields = object.value(authFieldsKey).toObject().toVariantMap();
    return config;
}

ServiceConfig loadServiceConfig(const QString &environmentFile, const QString &programDir)
{
    QString path = environmentFile;
    if (path.isEmpty()) {
        path = QDir(programDir).filePath(u"service.json"_s);
        std::error_code problem;
        if (std::filesystem::status(systemPath(path), problem).type()
            == std::filesystem::file_type::not_found)
            return builtInServiceConfig();
    }
    QString error;
    const QByteArray json = FileTools::readFile(path, &error);
    if (!error.isEmpty())
        return noService(path, error);
    std::optional<ServiceConfig> config = parseServiceConfig(json, builtInServiceConfig(), &error);
    if (!config)
        return noService(path, error);
    if (!config->authFields.isEmpty() && QFileInfo(path).permission(QFileDevice::ReadOther)) {
        config->warning =
            u"Service configuration %1 holds \"authFields\" and can be read by everybody."_s.arg(
                QDir::toNativeSeparators(path));
        qWarning("%s", qUtf8Printable(config->warning));
    }
    return *config;
}

const ServiceConfig &serviceConfig()
{
    static const ServiceConfig config = loadServiceConfig(qEnvironmentVariable("KVTEDITOR_SERVICE_CONFIG"),
                                                          QCoreApplication::applicationDirPath());
    return config;
}
