// A deployment's service file: the whole input is its text.

#include "FuzzSupport.h"
#include "api/JsonReading.h"
#include "api/ServiceConfig.h"

#include <QHostAddress>
#include <QJsonDocument>
#include <QMetaType>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <iterator>

namespace {

constexpr const char *knownKeys[] = {"apiBase", "authFields", "storeUrl", "placeholderEmail"};

ServiceConfig defaults()
{
    return {QStringLiteral("https://default.example/api/"),
            {{QStringLiteral("program"), QStringLiteral("one")}},
            QStringLiteral("https://shop.example/"),
            QStringLiteral("nobody@example.invalid")};
}

bool isSame(const ServiceConfig &a, const ServiceConfig &b)
{
    return a.apiBase == b.apiBase && a.authFields == b.authFields && a.storeUrl == b.storeUrl
        && a.placeholderEmail == b.placeholderEmail;
}

void expectSafe(const ServiceConfig &config)
{
    const QUrl base(config.apiBase, QUrl::StrictMode);
    FUZZ_EXPECT(base.isValid() && !base.host().isEmpty() && config.apiBase.endsWith(QLatin1Char('/')));
    FUZZ_EXPECT(base.userInfo().isEmpty());
    // What is joined to it stays on its host.
    const QUrl endpoint(config.apiBase + QStringLiteral("stock/list.aspx"));
    FUZZ_EXPECT(endpoint.host() == base.host() && endpoint.scheme() == base.scheme());
    FUZZ_EXPECT(endpoint.path().endsWith(QStringLiteral("/stock/list.aspx")));
    const bool isLocal =
        base.host().toLower() == QStringLiteral("localhost") || QHostAddress(base.host()).isLoopback();
    FUZZ_EXPECT(base.scheme() == QStringLiteral("https")
                || (base.scheme() == QStringLiteral("http") && isLocal));
    for (const QVariant &field : config.authFields)
        FUZZ_EXPECT(field.typeId() == QMetaType::QString);
}

QByteArray writtenOut(const ServiceConfig &config)
{
    const QJsonObject object{{QStringLiteral("apiBase"), config.apiBase},
                             {QStringLiteral("authFields"), QJsonObject::fromVariantMap(config.authFields)},
                             {QStringLiteral("storeUrl"), config.storeUrl},
                             {QStringLiteral("placeholderEmail"), config.placeholderEmail}};
    return QJsonDocument(object).toJson();
}

bool isKnownKey(const QString &key)
{
    return std::any_of(std::begin(knownKeys), std::end(knownKeys),
                       [&key](const char *known) { return key == QLatin1String(known); });
}

// The file may hold secrets, so no refusal quotes more of it than a key.
QStringList discreetReasons(const QJsonObject &object)
{
    QStringList reasons{
        QStringLiteral("\"authFields\" is no object of texts"),
        QStringLiteral("\"apiBase\" is no text"),
        QStringLiteral("\"storeUrl\" is no text"),
        QStringLiteral("\"placeholderEmail\" is no text"),
        QStringLiteral("\"apiBase\" is neither HTTPS nor HTTP on a loopback address"),
        QStringLiteral("\"apiBase\" holds user information, a query or a fragment"),
    };
    const QStringList keys = object.keys();
    for (const QString &key : keys) {
        if (!isKnownKey(key))
            reasons.append(QStringLiteral("the key \"") + key + QStringLiteral("\" is unknown"));
    }
    return reasons;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json = FuzzInput(data, size).takeRest();
    const QString untouched = QStringLiteral("untouched");
    QString error = untouched;
    const std::optional<ServiceConfig> config = parseServiceConfig(json, defaults(), &error);
    const std::optional<QJsonObject> object = jsonObjectFromBody(json);

    FUZZ_EXPECT(config.has_value() == (error == untouched));
    FUZZ_EXPECT(config.has_value() == parseServiceConfig(json, defaults(), nullptr).has_value());
    FUZZ_EXPECT(!config || object);
    if (config) {
        expectSafe(*config);
        FUZZ_EXPECT(object->contains(QStringLiteral("apiBase")) || config->apiBase == defaults().apiBase);
        const std::optional<ServiceConfig> again =
            parseServiceConfig(writtenOut(*config), builtInServiceConfig(), nullptr);
        FUZZ_EXPECT(!keepsItsTexts(json) || (again && isSame(*again, *config)));
    } else {
        FUZZ_EXPECT(!error.isEmpty());
        FUZZ_EXPECT(!object || discreetReasons(*object).contains(error));
    }
    return 0;
}
