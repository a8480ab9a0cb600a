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

using namespace Qt::StringLiterals;

namespace {

constexpr const char *knownKeys[] = {"apiBase", "authFields", "storeUrl", "placeholderEmail"};

ServiceConfig defaults()
{
    return {u"https://default.example/api/"_s,
            {{u"program"_s, u"one"_s}},
            u"https://shop.example/"_s,
            u"nobody@example.invalid"_s};
}

bool isSame(const ServiceConfig &a, const ServiceConfig &b)
{
    return a.apiBase == b.apiBase && a.authFields == b.authFields && a.storeUrl == b.storeUrl
        && a.placeholderEmail == b.placeholderEmail;
}

void expectSafe(const ServiceConfig &config)
{
    const QUrl base(config.apiBase, QUrl::StrictMode);
    FUZZ_EXPECT(base.isValid() && !base.host().isEmpty() && config.apiBase.endsWith('/'_L1));
    FUZZ_EXPECT(base.userInfo().isEmpty());
    // What is joined to it stays on its host.
    const QUrl endpoint(config.apiBase + u"stock/list.aspx"_s);
    FUZZ_EXPECT(endpoint.host() == base.host() && endpoint.scheme() == base.scheme());
    FUZZ_EXPECT(endpoint.path().endsWith(u"/stock/list.aspx"_s));
    const bool isLocal = base.host().toLower() == u"localhost"_s || QHostAddress(base.host()).isLoopback();
    FUZZ_EXPECT(base.scheme() == u"https"_s || (base.scheme() == u"http"_s && isLocal));
    for (const QVariant &field : config.authFields)
        FUZZ_EXPECT(field.typeId() == QMetaType::QString);
}

QByteArray writtenOut(const ServiceConfig &config)
{
    const QJsonObject object{{u"apiBase"_s, config.apiBase},
                             {u"authFields"_s, QJsonObject::fromVariantMap(config.authFields)},
                             {u"storeUrl"_s, config.storeUrl},
                             {u"placeholderEmail"_s, config.placeholderEmail}};
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
        u"\"authFields\" is no object of texts"_s,
        u"\"apiBase\" is no text"_s,
        u"\"storeUrl\" is no text"_s,
        u"\"placeholderEmail\" is no text"_s,
        u"\"apiBase\" is neither HTTPS nor HTTP on a loopback address"_s,
        u"\"apiBase\" holds user information, a query or a fragment"_s,
    };
    const QStringList keys = object.keys();
    for (const QString &key : keys) {
        if (!isKnownKey(key))
            reasons.append(u"the key \""_s + key + u"\" is unknown"_s);
    }
    return reasons;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json = FuzzInput(data, size).takeRest();
    const QString untouched = u"untouched"_s;
    QString error = untouched;
    const std::optional<ServiceConfig> config = parseServiceConfig(json, defaults(), &error);
    const std::optional<QJsonObject> object = jsonObjectFromBody(json);

    FUZZ_EXPECT(config.has_value() == (error == untouched));
    FUZZ_EXPECT(config.has_value() == parseServiceConfig(json, defaults(), nullptr).has_value());
    FUZZ_EXPECT(!config || object);
    if (config) {
        expectSafe(*config);
        FUZZ_EXPECT(object->contains(u"apiBase"_s) || config->apiBase == defaults().apiBase);
        const std::optional<ServiceConfig> again =
            parseServiceConfig(writtenOut(*config), builtInServiceConfig(), nullptr);
        FUZZ_EXPECT(!keepsItsTexts(json) || (again && isSame(*again, *config)));
    } else {
        FUZZ_EXPECT(!error.isEmpty());
        FUZZ_EXPECT(!object || discreetReasons(*object).contains(error));
    }
    return 0;
}
