#include "api/StoreAnswers.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

QJsonObject objectOf(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(json, &error).object();
    if (error.error != QJsonParseError::NoError)
        qFatal("A row that is no JSON: %s", json.constData());
    return object;
}

QVariantMap catalogItem(const QString &id, const QString &title, const QString &os, int credits)
{
    return {{u"id"_s, id}, {u"title"_s, title}, {u"os"_s, os}, {u"credits"_s, credits}};
}

QVariantMap patchItem(int id, const QString &variant, const QString &description, int credits)
{
    return {{u"id"_s, id}, {u"variant"_s, variant}, {u"description"_s, description}, {u"credits"_s, credits}};
}

QVariantMap stockRow(const QString &id, const QString &filename, const QString &os = {},
                     const QString &module = {}, const QString &year = {}, const QString &make = {},
                     const QString &model = {})
{
    return {{u"id"_s, id},     {u"filename"_s, filename}, {u"os"_s, os},      {u"module"_s, module},
            {u"year"_s, year}, {u"make"_s, make},         {u"model"_s, model}};
}

// Two maps may compare equal while their values differ in type, which the views would notice.
bool hasTypes(const QVariantMap &map, const QStringList &numbers)
{
    return std::all_of(map.keyBegin(), map.keyEnd(), [&](const QString &key) {
        const int type = numbers.contains(key) ? QMetaType::Int : QMetaType::QString;
        return map.value(key).typeId() == type;
    });
}

} // namespace

class TestStoreAnswers : public QObject
{
    Q_OBJECT

private slots:
    void xdfLogin_data();
    void xdfLogin();
    void xdfLogin_refused_data();
    void xdfLogin_refused();

    void xdfCatalog_item_data();
    void xdfCatalog_item();
    void xdfCatalog_array_data();
    void xdfCatalog_array();
    void xdfCatalog_text_data();
    void xdfCatalog_text();

    void patchList_item_data();
    void patchList_item();
    void patchList_array_data();
    void patchList_array();
    void patchList_credits_data();
    void patchList_credits();
    void patchOutcome_file_data();
    void patchOutcome_file();
    void patchOutcome_noFile_data();
    void patchOutcome_noFile();
    void patchedName_data();
    void patchedName();

    void stockList_row_data();
    void stockList_row();
    void stockList_array_data();
    void stockList_array();
    void stockFilters_namesEachArgument();
    void stockFilters_keepsEmptyOnes();
    void downloadError_data();
    void downloadError();
    void bareFileName_data();
    void bareFileName();

    void manyElements();
};

void TestStoreAnswers::xdfLogin_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("credits");

    const auto row = [](const char *name, const QByteArray &answer, const QString &token,
                        const QString &credits) { QTest::newRow(name) << answer << token << credits; };
    row("both-texts", R"({"session_token":"s","credits":"7"})", u"s"_s, u"7"_s);
    row("session-token-first", R"({"session_token":"s","token":"t"})", u"s"_s, u"0"_s);
    row("token-only", R"({"token":"abc","credits":15})", u"abc"_s, u"15"_s);
    row("session-token-empty", R"({"session_token":"","token":"t"})", u"t"_s, u"0"_s);
    row("session-token-null", R"({"session_token":null,"token":"t"})", u"t"_s, u"0"_s);
    row("session-token-boolean", R"({"session_token":true,"token":"t"})", u"t"_s, u"0"_s);
    row("session-token-array", R"({"session_token":["s"],"token":"t"})", u"t"_s, u"0"_s);
    row("session-token-object", R"({"session_token":{"token":"s"},"token":"t"})", u"t"_s, u"0"_s);
    row("session-token-number", R"({"session_token":12.0,"token":"t"})", u"12"_s, u"0"_s);
    row("session-token-2^31", R"({"session_token":2147483648,"token":"t"})", u"0"_s, u"0"_s);
    row("session-token-zero", R"({"session_token":0,"token":"t"})", u"0"_s, u"0"_s);
    row("token-blank-counts", R"({"session_token":" ","token":"t"})", u" "_s, u"0"_s);
    row("token-beside-error", R"({"token":"t","error":"No."})", u"t"_s, u"0"_s);
    row("token-not-ascii", "{\"token\":\"\xc3\xa9\"}", u"\u00e9"_s, u"0"_s);
    row("credits-empty", R"({"token":"t","credits":""})", u"t"_s, u"0"_s);
    row("credits-null", R"({"token":"t","credits":null})", u"t"_s, u"0"_s);
    row("credits-boolean", R"({"token":"t","credits":true})", u"t"_s, u"0"_s);
    row("credits-array", R"({"token":"t","credits":[5]})", u"t"_s, u"0"_s);
    row("credits-fraction", R"({"token":"t","credits":12.7})", u"t"_s, u"0"_s);
    row("credits-negative", R"({"token":"t","credits":-3})", u"t"_s, u"-3"_s);
    row("credits-2^31", R"({"token":"t","credits":2147483648})", u"t"_s, u"0"_s);
    row("credits-text-2^31", R"({"token":"t","credits":"2147483648"})", u"t"_s, u"2147483648"_s);
    row("credits-text-as-it-is", R"({"token":"t","credits":"about 12.50"})", u"t"_s, u"about 12.50"_s);
    row("duplicate-last-counts", R"({"token":"a","token":"b"})", u"b"_s, u"0"_s);
}

void TestStoreAnswers::xdfLogin()
{
    QFETCH(QByteArray, answer);
    const XdfLogin login = decodeXdfLogin(objectOf(answer));
    QTEST(login.token, "token");
    QTEST(login.credits, "credits");
    QCOMPARE(login.error, QString());
}

void TestStoreAnswers::xdfLogin_refused_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("error");

    const QString failed = u"XDF login failed."_s;
    const auto row = [](const char *name, const QByteArray &answer, const QString &error) {
        QTest::newRow(name) << answer << error;
    };
    row("empty-object", "{}", failed);
    row("all-three-empty", R"({"session_token":"","token":"","error":""})", failed);
    row("all-three-null", R"({"session_token":null,"token":null,"error":null})", failed);
    row("error-text", R"({"session_token":"","token":"","error":"Unknown account."})", u"Unknown account."_s);
    row("error-as-it-is", R"({"error":" <b>R&D</b>\n%1 "})", u" <b>R&D</b>\n%1 "_s);
    row("error-number", R"({"error":403})", u"403"_s);
    row("error-array", R"({"error":["No."]})", failed);
    row("error-object", R"({"error":{"message":"No."}})", failed);
    row("error-boolean", R"({"error":true})", failed);
    row("message-is-not-read", R"({"message":"No."})", failed);
    row("token-in-capitals", R"({"Token":"t","SESSION_TOKEN":"s"})", failed);
    row("token-wrong-types", R"({"session_token":false,"token":{"a":1}})", failed);
    row("token-nested", R"({"data":{"token":"t"}})", failed);
}

void TestStoreAnswers::xdfLogin_refused()
{
    QFETCH(QByteArray, answer);
    const XdfLogin login = decodeXdfLogin(objectOf(answer));
    QCOMPARE(login.token, QString());
    QTEST(login.error, "error");
}

void TestStoreAnswers::xdfCatalog_item_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<QVariantMap>("item");

    const QVariantMap nothing = catalogItem({}, {}, {}, 0);
    const auto row = [](const char *name, const QByteArray &element, const QVariantMap &item) {
        QTest::newRow(name) << element << item;
    };
    row("all-texts", R"({"id":"x1","title":"T","os_id":"12","credits":"3"})",
        catalogItem(u"x1"_s, u"T"_s, u"12"_s, 3));
    row("first-names-win", R"({"title":"T","name":"N","os_id":"1","os":"2"})",
        catalogItem({}, u"T"_s, u"1"_s, 0));
    row("second-names", R"({"id":7,"name":"N","os":"2","credits":"3"})",
        catalogItem(u"7"_s, u"N"_s, u"2"_s, 3));
    row("first-names-empty", R"({"title":"","name":"N","os_id":"","os":"2"})",
        catalogItem({}, u"N"_s, u"2"_s, 0));
    row("first-names-null", R"({"title":null,"name":"N","os_id":null,"os":"2"})",
        catalogItem({}, u"N"_s, u"2"_s, 0));
    row("first-names-wrong-type", R"({"title":["T"],"name":"N","os_id":false,"os":"2"})",
        catalogItem({}, u"N"_s, u"2"_s, 0));
    row("numbers", R"({"id":7,"title":8,"os_id":9,"credits":10})", catalogItem(u"7"_s, u"8"_s, u"9"_s, 10));
    row("numbers-2^31", R"({"id":2147483648,"title":2147483648,"os_id":2147483648,"credits":2147483648})",
        catalogItem(u"0"_s, u"0"_s, u"0"_s, 0));
    row("numbers-fractions", R"({"id":1.5,"title":0.5,"os_id":1e300,"credits":3.7})",
        catalogItem(u"0"_s, u"0"_s, u"0"_s, 0));
    row("numbers-negative", R"({"id":-1,"credits":-2})", catalogItem(u"-1"_s, {}, {}, -2));
    row("credits-highest", R"({"credits":2147483647})", catalogItem({}, {}, {}, 2147483647));
    row("credits-text-2^31", R"({"credits":"2147483648"})", nothing);
    row("credits-text-fraction", R"({"credits":"3.0"})", nothing);
    row("credits-text-word", R"({"credits":"three"})", nothing);
    row("all-null", R"({"id":null,"title":null,"name":null,"os_id":null,"os":null,"credits":null})", nothing);
    row("all-boolean", R"({"id":true,"title":true,"name":true,"os_id":true,"os":true,"credits":true})",
        nothing);
    row("all-arrays", R"({"id":[1],"title":["T"],"name":["N"],"os_id":[1],"os":[1],"credits":[1]})", nothing);
    row("all-objects", R"({"id":{},"title":{},"name":{},"os_id":{},"os":{},"credits":{}})", nothing);
    row("others-are-dropped", R"({"credits_cost":5,"price":6,"TITLE":"T"})", nothing);
    row("empty-object", "{}", nothing);
    row("element-null", "null", nothing);
    row("element-text", "\"T\"", nothing);
    row("element-number", "7", nothing);
    row("element-boolean", "true", nothing);
    row("element-array", R"([{"id":"x"}])", nothing);
    row("texts-as-they-are", R"({"id":" 1 ","title":"<img src='x'>\n\u0000\u202e","os_id":"R&D"})",
        catalogItem(u" 1 "_s, u"<img src='x'>\n"_s + QChar::Null + QChar(0x202e), u"R&D"_s, 0));
}

void TestStoreAnswers::xdfCatalog_item()
{
    QFETCH(QByteArray, element);
    const QVariantList items = decodeXdfCatalog(objectOf("{\"items\":[" + element + "]}")).items;
    QCOMPARE(items.size(), 1);
    const QVariantMap item = items.first().toMap();
    QTEST(item, "item");
    QVERIFY(hasTypes(item, {u"credits"_s}));
}

void TestStoreAnswers::xdfCatalog_array_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("ids");

    const auto row = [](const char *name, const QByteArray &answer, const QStringList &ids) {
        QTest::newRow(name) << answer << ids;
    };
    row("items", R"({"items":[{"id":"b"},{"id":"a"},{"id":"c"}]})", {u"b"_s, u"a"_s, u"c"_s});
    row("catalog", R"({"catalog":[{"id":"c"}]})", {u"c"_s});
    row("items-first", R"({"catalog":[{"id":"c"}],"items":[{"id":"i"}]})", {u"i"_s});
    row("items-empty-is-an-array", R"({"catalog":[{"id":"c"}],"items":[]})", {});
    row("items-text", R"({"catalog":[{"id":"c"}],"items":"none"})", {u"c"_s});
    row("items-null", R"({"catalog":[{"id":"c"}],"items":null})", {u"c"_s});
    row("items-object", R"({"catalog":[{"id":"c"}],"items":{"0":{"id":"i"}}})", {u"c"_s});
    row("no-objects-among-objects", R"({"items":[1,{"id":"i"},null]})", {QString(), u"i"_s, QString()});
    row("neither", R"({"results":[{"id":"r"}]})", {});
    row("both-wrong", R"({"items":1,"catalog":"[]"})", {});
    row("empty-object", "{}", {});
}

void TestStoreAnswers::xdfCatalog_array()
{
    QFETCH(QByteArray, answer);
    QStringList ids;
    for (const QVariant &item : decodeXdfCatalog(objectOf(answer)).items)
        ids.append(item.toMap().value(u"id"_s).toString());
    QTEST(ids, "ids");
}

void TestStoreAnswers::xdfCatalog_text_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty-object") << QByteArray("{}") << u"{\n}\n"_s;
    QTest::newRow("indented-in-key-order")
        << QByteArray(R"({"b":[1,"x"],"a":{"c":null}})")
        << u"{\n    \"a\": {\n        \"c\": null\n    },\n    \"b\": [\n        1,\n        \"x\"\n    ]\n}\n"_s;
    QTest::newRow("not-ascii-as-it-is")
        << QByteArray("{\"a\":\"caf\xc3\xa9 \\u20ac\"}") << u"{\n    \"a\": \"caf\u00e9 \u20ac\"\n}\n"_s;

    // Around the text: two characters and ten before it, four after it.
    const auto bulky = [](const char *name, qsizetype length, const QByteArray &letter, QChar shown) {
        const QString whole = u"{\n    \"a\": \""_s + QString(length, shown) + u"\"\n}\n"_s;
        QTest::newRow(name) << "{\"a\":\"" + letter.repeated(length) + "\"}" << whole.sliced(0, 4000);
    };
    QTest::newRow("3999-whole") << "{\"a\":\"" + QByteArray(3983, 'x') + "\"}"
                                << u"{\n    \"a\": \""_s + QString(3983, u'x') + u"\"\n}\n"_s;
    bulky("4000-whole", 3984, "x", u'x');
    bulky("4001-cut", 3985, "x", u'x');
    bulky("64-KiB-cut", 65536, "x", u'x');
    bulky("4000-characters-not-bytes", 3984, "\xc3\xa9", u'\u00e9');
    bulky("4001-characters-not-bytes", 3985, "\xc3\xa9", u'\u00e9');
}

void TestStoreAnswers::xdfCatalog_text()
{
    QFETCH(QByteArray, answer);
    QTEST(decodeXdfCatalog(objectOf(answer)).text, "text");
}

void TestStoreAnswers::patchList_item_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<QVariantMap>("item");

    const QVariantMap nothing = patchItem(0, {}, {}, 0);
    const auto row = [](const char *name, const QByteArray &element, const QVariantMap &item) {
        QTest::newRow(name) << element << item;
    };
    row("all", R"({"id":5,"variant":"V","description":"D","credits_cost":2})",
        patchItem(5, u"V"_s, u"D"_s, 2));
    row("numbers-as-texts", R"({"id":"5","credits_cost":"10"})", patchItem(5, {}, {}, 10));
    row("texts-as-numbers", R"({"variant":1,"description":2.0})", patchItem(0, u"1"_s, u"2"_s, 0));
    row("texts-as-fractions", R"({"variant":1.5,"description":-0.0})", patchItem(0, u"0"_s, u"0"_s, 0));
    row("credits-is-no-cost", R"({"id":1,"credits":9})", patchItem(1, {}, {}, 0));
    row("credits-beside-cost", R"({"credits":9,"credits_cost":4})", patchItem(0, {}, {}, 4));
    row("credits-beside-empty-cost", R"({"credits":9,"credits_cost":""})", nothing);
    row("fractions", R"({"id":1.5,"credits_cost":1.5})", nothing);
    row("2^31", R"({"id":2147483648,"credits_cost":2147483648})", nothing);
    row("text-2^31", R"({"id":"2147483648","credits_cost":"2147483648"})", nothing);
    row("2^53+1", R"({"id":9007199254740993,"credits_cost":9007199254740993})", nothing);
    row("lowest", R"({"id":-2147483648,"credits_cost":"-1"})",
        patchItem(std::numeric_limits<int>::min(), {}, {}, -1));
    row("all-null", R"({"id":null,"variant":null,"description":null,"credits_cost":null})", nothing);
    row("all-boolean", R"({"id":true,"variant":true,"description":true,"credits_cost":true})", nothing);
    row("all-arrays", R"({"id":[1],"variant":["V"],"description":["D"],"credits_cost":[1]})", nothing);
    row("all-objects", R"({"id":{},"variant":{},"description":{},"credits_cost":{}})", nothing);
    row("no-other-names", R"({"patch_id":5,"name":"V","title":"T","cost":2})", nothing);
    row("empty-object", "{}", nothing);
    row("element-null", "null", nothing);
    row("element-text", "\"V\"", nothing);
    row("element-number", "5", nothing);
    row("element-array", R"([{"id":5}])", nothing);
    row("texts-as-they-are", R"({"variant":"<b>R&D</b>","description":"a\nb \u0000"})",
        patchItem(0, u"<b>R&D</b>"_s, u"a\nb "_s + QChar::Null, 0));
}

void TestStoreAnswers::patchList_item()
{
    QFETCH(QByteArray, element);
    const QVariantList items = decodePatchList(objectOf("{\"patches\":[" + element + "]}")).items;
    QCOMPARE(items.size(), 1);
    const QVariantMap item = items.first().toMap();
    QTEST(item, "item");
    QVERIFY(hasTypes(item, {u"id"_s, u"credits"_s}));
}

void TestStoreAnswers::patchList_array_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QList<int>>("ids");

    const auto row = [](const char *name, const QByteArray &answer, const QList<int> &ids) {
        QTest::newRow(name) << answer << ids;
    };
    row("in-order", R"({"patches":[{"id":3},{"id":1},{"id":2}]})", {3, 1, 2});
    row("no-objects-among-objects", R"({"patches":[null,{"id":3},"x"]})", {0, 3, 0});
    row("empty", R"({"patches":[]})", {});
    row("missing", "{}", {});
    row("null", R"({"patches":null})", {});
    row("object", R"({"patches":{"0":{"id":3}}})", {});
    row("text", R"({"patches":"[{}]"})", {});
    row("number", R"({"patches":1})", {});
    row("no-other-key", R"({"items":[{"id":3}],"files":[{"id":3}],"results":[{"id":3}]})", {});
}

void TestStoreAnswers::patchList_array()
{
    QFETCH(QByteArray, answer);
    QList<int> ids;
    for (const QVariant &item : decodePatchList(objectOf(answer)).items)
        ids.append(item.toMap().value(u"id"_s).toInt());
    QTEST(ids, "ids");
}

void TestStoreAnswers::patchList_credits_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("credits");

    QTest::newRow("number") << QByteArray(R"({"credits":4})") << u"4"_s;
    QTest::newRow("zero") << QByteArray(R"({"credits":0})") << u"0"_s;
    QTest::newRow("text") << QByteArray(R"({"credits":"4.50"})") << u"4.50"_s;
    QTest::newRow("fraction") << QByteArray(R"({"credits":4.5})") << u"0"_s;
    QTest::newRow("missing") << QByteArray("{}") << QString();
    QTest::newRow("empty") << QByteArray(R"({"credits":""})") << QString();
    QTest::newRow("null") << QByteArray(R"({"credits":null})") << QString();
    QTest::newRow("boolean") << QByteArray(R"({"credits":true})") << QString();
    QTest::newRow("array") << QByteArray(R"({"credits":[4]})") << QString();
}

void TestStoreAnswers::patchList_credits()
{
    QFETCH(QByteArray, answer);
    QTEST(decodePatchList(objectOf(answer)).credits, "credits");
}

void TestStoreAnswers::patchOutcome_file_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("file");

    const auto row = [](const char *name, const QByteArray &text, const QByteArray &file) {
        QTest::newRow(name) << "{\"file_data\":\"" + text + "\"}" << file;
    };
    row("one-byte", "AA==", QByteArray(1, '\0'));
    row("two-bytes", "/wA=", QByteArray("\xff\0", 2));
    row("three-bytes", "UEFU", "PAT");
    row("last-two-letters-of-the-alphabet", "++//", "\xfb\xef\xff");
    row("no-padding-one", "AA", QByteArray(1, '\0'));
    row("no-padding-two", "/wA", QByteArray("\xff\0", 2));
    row("too-much-padding", "UEFU====", "PAT");
    row("padding-in-the-middle", "UE==FU", "PAT");
    row("left-over-letter", "UEFUU", "PAT");
    row("line-breaks", "UE\\r\\nFU\\n", "PAT");
    row("blanks-and-tabs", " UE FU\\t", "PAT");
    row("junk-letters", "U*E!F.U?", "PAT");
    row("url-alphabet-is-junk", "U-E_FU", "PAT");
    row("nul-is-skipped", "UE\\u0000FU", "PAT");
    row("latin-1-is-skipped",
        "UE\xc3\xa9\xc3\xbf"
        "FU",
        "PAT");
    row("no-latin-letters-are-skipped",
        "UE\xe2\x82\xac\xd0\x96\xf0\x9f\x98\x80"
        "FU",
        "PAT");
    QTest::newRow("number-is-its-digits")
        << QByteArray(R"({"file_data":1234})") << QByteArray("\xd7\x6d\xf8");
    QTest::newRow("file-before-status")
        << QByteArray(R"({"file_data":"UEFU","status":"failed","error":"No.","message":"m"})")
        << QByteArray("PAT");
    QTest::newRow("1-MiB") << "{\"file_data\":\"" + QByteArray("UEFU").repeated(349526) + "\"}"
                           << QByteArray("PAT").repeated(349526);
}

void TestStoreAnswers::patchOutcome_file()
{
    QFETCH(QByteArray, answer);
    const PatchOutcome outcome = decodePatchOutcome(objectOf(answer));
    QTEST(outcome.file, "file");
    QCOMPARE(outcome.status, u"Patch applied."_s);
    QCOMPARE(outcome.level, 1);
}

void TestStoreAnswers::patchOutcome_noFile_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("level");

    const QString failed = u"Patch failed."_s;
    const auto row = [](const char *name, const QByteArray &answer, const QString &status, int level) {
        QTest::newRow(name) << answer << status << level;
    };
    row("ok", R"({"status":"ok","message":"Queued."})", u"Patch processed: Queued."_s, 1);
    row("ok-no-message", R"({"file_data":"","status":"ok"})", u"Patch processed: "_s, 1);
    row("ok-message-null", R"({"status":"ok","message":null})", u"Patch processed: "_s, 1);
    row("ok-message-number", R"({"status":"ok","message":3})", u"Patch processed: 3"_s, 1);
    row("ok-message-array", R"({"status":"ok","message":["m"]})", u"Patch processed: "_s, 1);
    row("ok-message-as-it-is", R"({"status":"ok","message":"%1 <b>\n"})", u"Patch processed: %1 <b>\n"_s, 1);
    row("ok-beside-error", R"({"status":"ok","error":"No."})", u"Patch processed: "_s, 1);
    row("ok-file-null", R"({"status":"ok","file_data":null})", u"Patch processed: "_s, 1);
    row("ok-file-array", R"({"status":"ok","file_data":["UEFU"]})", u"Patch processed: "_s, 1);
    row("ok-file-boolean", R"({"status":"ok","file_data":true})", u"Patch processed: "_s, 1);
    row("ok-file-junk-only", R"({"status":"ok","file_data":"*!. -_="})", u"Patch processed: "_s, 1);
    row("ok-file-one-letter", R"({"status":"ok","file_data":"U"})", u"Patch processed: "_s, 1);
    row("ok-file-not-latin", "{\"status\":\"ok\",\"file_data\":\"\xd0\x96\xd0\x96\"}", u"Patch processed: "_s,
        1);
    row("status-in-capitals", R"({"status":"OK","message":"m"})", failed, 0);
    row("status-mixed", R"({"status":"Ok"})", failed, 0);
    row("status-with-blank", R"({"status":"ok "})", failed, 0);
    row("status-empty", R"({"status":""})", failed, 0);
    row("status-null", R"({"status":null})", failed, 0);
    row("status-boolean", R"({"status":true})", failed, 0);
    row("status-array", R"({"status":["ok"]})", failed, 0);
    row("error", R"({"status":"OK","error":"Not enough credits."})", u"Not enough credits."_s, 0);
    row("error-as-it-is", R"({"error":"<b>R&D</b> %1"})", u"<b>R&D</b> %1"_s, 0);
    row("error-number", R"({"error":12.0})", u"12"_s, 0);
    row("error-empty", R"({"error":""})", failed, 0);
    row("error-null", R"({"error":null})", failed, 0);
    row("error-object", R"({"error":{"message":"No."}})", failed, 0);
    row("message-is-no-error", R"({"status":"fail","message":"m"})", failed, 0);
    row("empty-object", "{}", failed, 0);
}

void TestStoreAnswers::patchOutcome_noFile()
{
    QFETCH(QByteArray, answer);
    const PatchOutcome outcome = decodePatchOutcome(objectOf(answer));
    QCOMPARE(outcome.file, QByteArray());
    QTEST(outcome.status, "status");
    QTEST(outcome.level, "level");
}

void TestStoreAnswers::patchedName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    QTest::newRow("bin") << u"tune.bin"_s << u"tune_patched.bin"_s;
    QTest::newRow("two-suffixes") << u"tune.rev2.bin"_s << u"tune.rev2_patched.bin"_s;
    QTest::newRow("no-suffix") << u"stock"_s << u"stock_patched.bin"_s;
    QTest::newRow("other-suffix") << u"tune.kvt"_s << u"tune_patched.bin"_s;
    QTest::newRow("suffix-in-capitals") << u"TUNE.BIN"_s << u"TUNE_patched.bin"_s;
    QTest::newRow("suffix-empty") << u"tune."_s << u"tune_patched.bin"_s;
    QTest::newRow("suffix-only") << u".bin"_s << u"_patched.bin"_s;
    QTest::newRow("patched-before") << u"tune_patched.bin"_s << u"tune_patched_patched.bin"_s;
    QTest::newRow("folders") << u"/home/a.user/b.c/tune.rev2.bin"_s << u"tune.rev2_patched.bin"_s;
    QTest::newRow("folder-with-a-dot") << u"/home/b.c/stock"_s << u"stock_patched.bin"_s;
    QTest::newRow("relative") << u"../x/tune.bin"_s << u"tune_patched.bin"_s;
    QTest::newRow("blanks-and-signs") << u"/d/ a #%20?&<b>.bin"_s << u" a #%20?&<b>_patched.bin"_s;
    QTest::newRow("not-ascii") << u"/d/\u00e9.bin"_s << u"\u00e9_patched.bin"_s;
    QTest::newRow("newline") << u"/d/a\nb.bin"_s << u"a\nb_patched.bin"_s;
    QTest::newRow("empty") << QString() << u"_patched.bin"_s;
}

void TestStoreAnswers::patchedName()
{
    QFETCH(QString, path);
    QTEST(::patchedName(path), "name");
}

void TestStoreAnswers::stockList_row_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<QVariantMap>("row");

    const QVariantMap nothing = stockRow({}, {});
    const auto row = [](const char *name, const QByteArray &element, const QVariantMap &expected) {
        QTest::newRow(name) << element << expected;
    };
    row("all",
        R"({"id":"1","filename":"a.kvt","os":"12","module":"ECM","year":"2015","make":"GM","model":"C"})",
        stockRow(u"1"_s, u"a.kvt"_s, u"12"_s, u"ECM"_s, u"2015"_s, u"GM"_s, u"C"_s));
    row("numbers", R"({"id":1,"filename":2,"os":3,"module":4,"year":2015.0,"make":5,"model":6})",
        stockRow(u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"2015"_s, u"5"_s, u"6"_s));
    row("first-names-win",
        R"({"id":"1","path":"p","filename":"f","name":"n","module":"m","module_type":"t"})",
        stockRow(u"1"_s, u"f"_s, {}, u"m"_s));
    row("second-names", R"({"path":"gm/a.kvt","name":"a.kvt","module_type":"TCM"})",
        stockRow(u"gm/a.kvt"_s, u"a.kvt"_s, {}, u"TCM"_s));
    row("first-names-empty", R"({"id":"","path":"p","filename":"","name":"n","module":"","module_type":"t"})",
        stockRow(u"p"_s, u"n"_s, {}, u"t"_s));
    row("first-names-null",
        R"({"id":null,"path":"p","filename":null,"name":"n","module":null,"module_type":"t"})",
        stockRow(u"p"_s, u"n"_s, {}, u"t"_s));
    row("first-names-wrong-type",
        R"({"id":[1],"path":"p","filename":true,"name":"n","module":{},"module_type":"t"})",
        stockRow(u"p"_s, u"n"_s, {}, u"t"_s));
    row("id-fraction-is-zero", R"({"id":1.5,"path":"p"})", stockRow(u"0"_s, {}));
    row("2^31", R"({"id":2147483648,"path":"p","year":2147483648})", stockRow(u"0"_s, {}, {}, {}, u"0"_s));
    row("no-second-name-for-the-others", R"({"os_id":"1","model_year":"2","brand":"3","size":4})", nothing);
    row("all-null",
        R"({"id":null,"filename":null,"os":null,"module":null,"year":null,"make":null,"model":null})",
        nothing);
    row("all-boolean",
        R"({"id":true,"filename":true,"os":true,"module":true,"year":true,"make":true,"model":true})",
        nothing);
    row("all-arrays",
        R"({"id":[1],"filename":["f"],"os":[1],"module":["m"],"year":[1],"make":["g"],"model":["c"]})",
        nothing);
    row("empty-object", "{}", nothing);
    row("element-null", "null", nothing);
    row("element-text", "\"a.kvt\"", nothing);
    row("element-number", "7", nothing);
    row("element-array", R"([{"id":"1"}])", nothing);
    row("texts-as-they-are", R"({"filename":"../../x.kvt","make":"<b>R&D</b>","model":" \n\u0000"})",
        stockRow({}, u"../../x.kvt"_s, {}, {}, {}, u"<b>R&D</b>"_s, u" \n"_s + QChar::Null));
}

void TestStoreAnswers::stockList_row()
{
    QFETCH(QByteArray, element);
    const QVariantList rows = decodeStockList(objectOf("{\"files\":[" + element + "]}"));
    QCOMPARE(rows.size(), 1);
    const QVariantMap row = rows.first().toMap();
    QTEST(row, "row");
    QVERIFY(hasTypes(row, {}));
}

void TestStoreAnswers::stockList_array_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("ids");

    const auto row = [](const char *name, const QByteArray &answer, const QStringList &ids) {
        QTest::newRow(name) << answer << ids;
    };
    row("files", R"({"files":[{"id":"b"},{"id":"a"}]})", {u"b"_s, u"a"_s});
    row("items", R"({"items":[{"id":"i"}]})", {u"i"_s});
    row("results", R"({"results":[{"id":"r"}]})", {u"r"_s});
    row("files-first", R"({"files":[{"id":"f"}],"items":[{"id":"i"}],"results":[{"id":"r"}]})", {u"f"_s});
    row("items-before-results", R"({"items":[{"id":"i"}],"results":[{"id":"r"}]})", {u"i"_s});
    row("files-text", R"({"files":"none","items":[{"id":"i"}],"results":[{"id":"r"}]})", {u"i"_s});
    row("files-null", R"({"files":null,"items":[{"id":"i"}]})", {u"i"_s});
    row("files-and-items-objects", R"({"files":{},"items":{},"results":[{"id":"r"}]})", {u"r"_s});
    row("files-empty-is-an-array", R"({"files":[],"items":[{"id":"i"}]})", {});
    row("no-objects-among-objects", R"({"files":[1,{"id":"f"},null]})", {QString(), u"f"_s, QString()});
    row("none", R"({"rows":[{"id":"x"}],"catalog":[{"id":"y"}]})", {});
    row("empty-object", "{}", {});
}

void TestStoreAnswers::stockList_array()
{
    QFETCH(QByteArray, answer);
    QStringList ids;
    for (const QVariant &row : decodeStockList(objectOf(answer)))
        ids.append(row.toMap().value(u"id"_s).toString());
    QTEST(ids, "ids");
}

void TestStoreAnswers::stockFilters_namesEachArgument()
{
    const QVariantMap expected{{u"make"_s, u"1"_s},    {u"file_type"_s, u"2"_s},   {u"folder"_s, u"3"_s},
                               {u"model"_s, u"5"_s},   {u"module_type"_s, u"4"_s}, {u"os"_s, u"6"_s},
                               {u"keyword"_s, u"7"_s}, {u"sort"_s, u"8"_s},        {u"sort_dir"_s, u"9"_s}};
    QCOMPARE(stockFilters(u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s, u"8"_s, u"9"_s), expected);
}

void TestStoreAnswers::stockFilters_keepsEmptyOnes()
{
    const QVariantMap filters = stockFilters({}, {}, {}, {}, {}, {}, {}, u" as typed "_s, {});
    QCOMPARE(filters.keys(),
             QStringList({u"file_type"_s, u"folder"_s, u"keyword"_s, u"make"_s, u"model"_s, u"module_type"_s,
                          u"os"_s, u"sort"_s, u"sort_dir"_s}));
    QVERIFY(hasTypes(filters, {}));
    QCOMPARE(filters.value(u"sort"_s).toString(), u" as typed "_s);
    QCOMPARE(filters.value(u"make"_s).toString(), QString());
}

void TestStoreAnswers::downloadError_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QJsonObject>("answer");
    QTest::addColumn<QString>("transport");
    QTest::addColumn<QString>("error");

    const QByteArray none;
    const QByteArray some = "bytes";
    const QJsonObject refusal{{u"error"_s, u"No."_s}};
    const QString cut = u"Connection closed"_s;
    QTest::newRow("file") << some << QJsonObject() << QString() << QString();
    QTest::newRow("file-beside-transport-error") << some << QJsonObject() << cut << QString();
    QTest::newRow("empty-file") << none << QJsonObject() << QString() << QString();
    QTest::newRow("no-byte") << none << QJsonObject() << cut << cut;
    QTest::newRow("refusal") << some << refusal << QString() << u"No."_s;
    QTest::newRow("refusal-beside-transport-error") << some << refusal << cut << u"No."_s;
    QTest::newRow("refusal-as-number") << some << QJsonObject{{u"error"_s, 7}} << QString() << u"7"_s;
    QTest::newRow("json-file") << some << QJsonObject{{u"a"_s, 1}} << cut << QString();
    QTest::newRow("empty-reason") << some << QJsonObject{{u"error"_s, QString()}} << cut << QString();
}

void TestStoreAnswers::downloadError()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QJsonObject, answer);
    QFETCH(QString, transport);
    QTEST(::downloadError(bytes, answer, transport), "error");
}

void TestStoreAnswers::bareFileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("bare");

    const QString nul(QChar::Null);
    QTest::newRow("bare") << u"tune.kvt"_s << u"tune.kvt"_s;
    QTest::newRow("up") << u"../../x.kvt"_s << u"x.kvt"_s;
    QTest::newRow("absolute") << u"/etc/x.kvt"_s << u"x.kvt"_s;
    QTest::newRow("folder") << u"a/b.kvt"_s << u"b.kvt"_s;
    QTest::newRow("backslash-up") << u"..\\x.bin"_s << u"x.bin"_s;
    QTest::newRow("drive") << u"C:\\a\\x.bin"_s << u"x.bin"_s;
    QTest::newRow("slash-then-backslash") << u"a/b\\c.bin"_s << u"c.bin"_s;
    QTest::newRow("backslash-then-slash") << u"a\\b/c.bin"_s << u"c.bin"_s;
    QTest::newRow("two-dots") << u".."_s << QString();
    QTest::newRow("one-dot") << u"."_s << QString();
    QTest::newRow("folder-two-dots") << u"a/.."_s << QString();
    QTest::newRow("backslash-two-dots") << u"a\\.."_s << QString();
    QTest::newRow("three-dots-are-a-name") << u"..."_s << u"..."_s;
    QTest::newRow("hidden") << u".profile"_s << u".profile"_s;
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("trailing-slash") << u"a/b.kvt/"_s << QString();
    QTest::newRow("trailing-backslash") << u"a\\b.kvt\\"_s << QString();
    QTest::newRow("only-separators") << u"//\\"_s << QString();
    QTest::newRow("nul") << u"x.kvt"_s + nul + u".png"_s << u"x.kvt_.png"_s;
    QTest::newRow("nul-before-separator") << u"a"_s + nul + u"/x.kvt"_s << u"x.kvt"_s;
    QTest::newRow("nul-after-two-dots") << u".."_s + nul << u".._"_s;
    QTest::newRow("nul-only") << nul << u"_"_s;
    QTest::newRow("newline") << u"a\nb.kvt"_s << u"a\nb.kvt"_s;
    QTest::newRow("blanks-kept") << u"a/ b .kvt "_s << u" b .kvt "_s;
    QTest::newRow("encoded-separator-does-not-separate") << u"..%2fx.kvt"_s << u"..%2fx.kvt"_s;
    QTest::newRow("look-alike-slash-is-a-letter") << u"..\u2215x.kvt"_s << u"..\u2215x.kvt"_s;
    QTest::newRow("right-to-left-override") << u"a\u202etvk.exe"_s << u"a\u202etvk.exe"_s;
    QTest::newRow("not-ascii") << u"\u00e9/\u00e9.kvt"_s << u"\u00e9.kvt"_s;
    QTest::newRow("300-characters") << QString(300, u'x') << QString(300, u'x');
    QTest::newRow("300-folders") << u"../"_s.repeated(300) + u"x"_s << u"x"_s;
}

void TestStoreAnswers::bareFileName()
{
    QFETCH(QString, name);
    QTEST(::bareFileName(name), "bare");
}

void TestStoreAnswers::manyElements()
{
    const QByteArray many = "[" + QByteArray("{\"id\":7},").repeated(99999) + "{\"id\":8}]";
    const QVariantList catalog = decodeXdfCatalog(objectOf("{\"items\":" + many + "}")).items;
    const QVariantList patches = decodePatchList(objectOf("{\"patches\":" + many + "}")).items;
    const QVariantList stock = decodeStockList(objectOf("{\"files\":" + many + "}"));
    for (const QVariantList &list : {catalog, patches, stock}) {
        QCOMPARE(list.size(), 100000);
        QCOMPARE(list.last().toMap().value(u"id"_s).toString(), u"8"_s);
    }
}

KVTEDITOR_TEST_MAIN(TestStoreAnswers)
#include "tst_StoreAnswers.moc"
