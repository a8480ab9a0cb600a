#include "api/JsonReading.h"
#include "support/TestMain.h"

#include <QJsonValue>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class TestJsonReading : public QObject
{
    Q_OBJECT

private slots:
    void member_data();
    void member();
    void missingMember();
    void keysAreCaseSensitive();
    void firstArray_data();
    void firstArray();
    void objectFromBody_data();
    void objectFromBody();
    void objectInText_data();
    void objectInText();
};

void TestJsonReading::member_data()
{
    QTest::addColumn<QJsonValue>("value");
    QTest::addColumn<QString>("asString");
    QTest::addColumn<int>("asInt");

    constexpr int lowest = std::numeric_limits<int>::min();
    constexpr int highest = std::numeric_limits<int>::max();
    QTest::newRow("text") << QJsonValue(u"abc"_s) << u"abc"_s << 0;
    QTest::newRow("text-empty") << QJsonValue(QString()) << QString() << 0;
    QTest::newRow("text-blanks-kept") << QJsonValue(u" a b "_s) << u" a b "_s << 0;
    QTest::newRow("text-number") << QJsonValue(u"12"_s) << u"12"_s << 12;
    QTest::newRow("text-negative") << QJsonValue(u"-7"_s) << u"-7"_s << -7;
    QTest::newRow("text-leading-zero-is-decimal") << QJsonValue(u"010"_s) << u"010"_s << 10;
    QTest::newRow("text-hex") << QJsonValue(u"0x10"_s) << u"0x10"_s << 0;
    QTest::newRow("text-fraction") << QJsonValue(u"12.0"_s) << u"12.0"_s << 0;
    QTest::newRow("text-exponent") << QJsonValue(u"1e3"_s) << u"1e3"_s << 0;
    QTest::newRow("text-trailing-letter") << QJsonValue(u"12a"_s) << u"12a"_s << 0;
    QTest::newRow("text-highest") << QJsonValue(u"2147483647"_s) << u"2147483647"_s << highest;
    QTest::newRow("text-past-highest") << QJsonValue(u"2147483648"_s) << u"2147483648"_s << 0;
    QTest::newRow("text-lowest") << QJsonValue(u"-2147483648"_s) << u"-2147483648"_s << lowest;
    QTest::newRow("text-past-lowest") << QJsonValue(u"-2147483649"_s) << u"-2147483649"_s << 0;
    QTest::newRow("number-zero") << QJsonValue(0) << u"0"_s << 0;
    QTest::newRow("number-minus-zero") << QJsonValue(-0.0) << u"0"_s << 0;
    QTest::newRow("number-whole") << QJsonValue(5) << u"5"_s << 5;
    QTest::newRow("number-whole-as-double") << QJsonValue(12.0) << u"12"_s << 12;
    QTest::newRow("number-negative") << QJsonValue(-3) << u"-3"_s << -3;
    QTest::newRow("number-fraction") << QJsonValue(12.7) << u"0"_s << 0;
    QTest::newRow("number-small-fraction") << QJsonValue(1e-9) << u"0"_s << 0;
    QTest::newRow("number-just-not-whole") << QJsonValue(2147483646.5) << u"0"_s << 0;
    QTest::newRow("number-highest") << QJsonValue(2147483647.0) << u"2147483647"_s << highest;
    QTest::newRow("number-past-highest") << QJsonValue(2147483648.0) << u"0"_s << 0;
    QTest::newRow("number-lowest") << QJsonValue(-2147483648.0) << u"-2147483648"_s << lowest;
    QTest::newRow("number-past-lowest") << QJsonValue(-2147483649.0) << u"0"_s << 0;
    QTest::newRow("number-2^53+1") << QJsonValue(Q_INT64_C(9007199254740993)) << u"0"_s << 0;
    QTest::newRow("number-2^63-1") << QJsonValue(std::numeric_limits<qint64>::max()) << u"0"_s << 0;
    QTest::newRow("number-1e300") << QJsonValue(1e300) << u"0"_s << 0;
    QTest::newRow("number-infinite") << QJsonValue(std::numeric_limits<double>::infinity()) << u"0"_s << 0;
    QTest::newRow("number-minus-infinite")
        << QJsonValue(-std::numeric_limits<double>::infinity()) << u"0"_s << 0;
    QTest::newRow("null") << QJsonValue(QJsonValue::Null) << QString() << 0;
    QTest::newRow("true") << QJsonValue(true) << QString() << 0;
    QTest::newRow("false") << QJsonValue(false) << QString() << 0;
    QTest::newRow("array") << QJsonValue(QJsonArray{1}) << QString() << 0;
    QTest::newRow("object") << QJsonValue(QJsonObject{{u"a"_s, 1}}) << QString() << 0;
}

void TestJsonReading::member()
{
    QFETCH(QJsonValue, value);
    const QJsonObject object{{u"key"_s, value}};
    QTEST(jsonString(object, u"key"_s), "asString");
    QTEST(jsonInt(object, u"key"_s), "asInt");
}

void TestJsonReading::missingMember()
{
    QCOMPARE(jsonString({}, u"key"_s), QString());
    QCOMPARE(jsonInt({}, u"key"_s), 0);
    QCOMPARE(jsonString({{u"other"_s, 1}}, QString()), QString());
}

void TestJsonReading::keysAreCaseSensitive()
{
    const QJsonObject object{{u"Key"_s, 1}};
    QCOMPARE(jsonString(object, u"key"_s), QString());
    QCOMPARE(jsonString(object, u"Key"_s), u"1"_s);
}

void TestJsonReading::firstArray_data()
{
    QTest::addColumn<QJsonObject>("object");
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QJsonArray>("expected");

    const QJsonObject object{
        {u"a"_s, QJsonArray{1}}, {u"b"_s, QJsonArray{2}},      {u"none"_s, QJsonArray()},
        {u"text"_s, u"[1]"_s},   {u"object"_s, QJsonObject()}, {u"null"_s, QJsonValue::Null},
    };
    const QJsonArray one{1};
    const QJsonArray two{2};
    QTest::newRow("first-key") << object << QStringList{u"a"_s, u"b"_s} << one;
    QTest::newRow("key-order-not-member-order") << object << QStringList{u"b"_s, u"a"_s} << two;
    QTest::newRow("missing-skipped") << object << QStringList{u"x"_s, u"b"_s} << two;
    QTest::newRow("text-skipped") << object << QStringList{u"text"_s, u"a"_s} << one;
    QTest::newRow("object-skipped") << object << QStringList{u"object"_s, u"a"_s} << one;
    QTest::newRow("null-skipped") << object << QStringList{u"null"_s, u"a"_s} << one;
    QTest::newRow("empty-array-is-an-array") << object << QStringList{u"none"_s, u"a"_s} << QJsonArray();
    QTest::newRow("not-an-array") << object << QStringList{u"text"_s, u"x"_s} << QJsonArray();
    QTest::newRow("no-keys") << object << QStringList() << QJsonArray();
    QTest::newRow("empty-object") << QJsonObject() << QStringList{u"a"_s} << QJsonArray();
}

void TestJsonReading::firstArray()
{
    QFETCH(QJsonObject, object);
    QFETCH(QStringList, keys);
    QTEST(::firstArray(object, keys), "expected");
}

void TestJsonReading::objectFromBody_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("isObject");
    QTest::addColumn<QJsonObject>("object");

    const QJsonObject one{{u"a"_s, 1}};
    const QJsonObject none;
    QTest::newRow("object") << QByteArray("{\"a\":1}") << true << one;
    QTest::newRow("object-empty") << QByteArray("{}") << true << none;
    QTest::newRow("object-white-space-around") << QByteArray(" \n{ \"a\" : 1 }\r\n ") << true << one;
    QTest::newRow("empty") << QByteArray() << false << none;
    QTest::newRow("blank") << QByteArray("  ") << false << none;
    QTest::newRow("array") << QByteArray("[{\"a\":1}]") << false << none;
    QTest::newRow("number") << QByteArray("1") << false << none;
    QTest::newRow("text") << QByteArray("\"a\"") << false << none;
    QTest::newRow("null") << QByteArray("null") << false << none;
    QTest::newRow("two-letters") << QByteArray("OK") << false << none;
    QTest::newRow("html") << QByteArray("<html></html>") << false << none;
    QTest::newRow("trailing-text") << QByteArray("{\"a\":1} x") << false << none;
    QTest::newRow("trailing-object") << QByteArray("{\"a\":1}{\"a\":1}") << false << none;
    QTest::newRow("cut-short") << QByteArray("{\"a\":1") << false << none;
    QTest::newRow("not-a-number") << QByteArray("{\"a\":NaN}") << false << none;
    QTest::newRow("single-quotes") << QByteArray("{'a':1}") << false << none;
    QTest::newRow("bad-utf8") << QByteArray("{\"a\":\"\xff\xfe\"}") << false << none;
    QTest::newRow("deep-nesting") << QByteArray(100'000, '[') << false << none;
    QTest::newRow("deep-nesting-in-object") << "{\"a\":" + QByteArray(100'000, '[') << false << none;
    QTest::newRow("duplicate-keys-last-wins") << QByteArray("{\"a\":2,\"a\":1}") << true << one;
}

void TestJsonReading::objectFromBody()
{
    QFETCH(QByteArray, body);
    const std::optional<QJsonObject> result = jsonObjectFromBody(body);
    QTEST(result.has_value(), "isObject");
    QTEST(result.value_or(QJsonObject()), "object");
}

void TestJsonReading::objectInText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QJsonObject>("object");

    const QJsonObject one{{u"a"_s, 1}};
    const QJsonObject none;
    QTest::newRow("object") << u"{\"a\":1}"_s << one;
    QTest::newRow("lines-ahead") << u"worker 1.0\n\u00e9\n{\"a\":1}"_s << one;
    QTest::newRow("brace-ahead") << u"{log} {\"a\":1}"_s << none;
    QTest::newRow("text-after") << u"{\"a\":1} done"_s << none;
    QTest::newRow("array-around") << u"[{\"a\":1}]"_s << none;
    QTest::newRow("no-brace") << u"no information"_s << none;
    QTest::newRow("empty") << QString() << none;
}

void TestJsonReading::objectInText()
{
    QFETCH(QString, text);
    QTEST(jsonObjectInText(text), "object");
}

KVTEDITOR_TEST_MAIN(TestJsonReading)
#include "tst_JsonReading.moc"
