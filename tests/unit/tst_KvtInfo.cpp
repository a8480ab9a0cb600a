#include "api/JsonReading.h"
#include "api/KvtInfo.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QVariantMap moduleEntry(const QString &title, const QString &vin, const QString &serial,
                        const QString &mainOs, const QList<std::pair<QString, QString>> &pairs = {})
{
    QVariantList rows;
    for (const auto &pair : pairs) {
        rows.append(QVariantMap{{u"label"_s, pair.first}, {u"value"_s, pair.second}});
    }
    return {{u"title"_s, title},
            {u"vin"_s, vin},
            {u"serial"_s, serial},
            {u"mainOs"_s, mainOs},
            {u"rows"_s, rows}};
}

} // namespace

class TestKvtInfo : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void osAndSerial_data();
    void osAndSerial();
    void targets_data();
    void targets();
    void modules_data();
    void modules();
    void hundredThousandModules();
};

void TestKvtInfo::texts_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("vin");

    // The VIN held before is OLD; it stays where the answer has none.
    QTest::newRow("plain") << uR"({"vin":"V"})"_s << u"V"_s;
    QTest::newRow("log-line-before") << u"worker 1.0\nreading\n{\"vin\":\"V\"}"_s << u"V"_s;
    QTest::newRow("log-line-not-ascii-before")
        << u"caf\u00e9 \U0001F697 {\"vin\":\"\u00c9\"}"_s << u"\u00c9"_s;
    QTest::newRow("log-line-with-brace-before") << u"{log} {\"vin\":\"V\"}"_s << u"OLD"_s;
    QTest::newRow("text-after") << uR"({"vin":"V"} done)"_s << u"OLD"_s;
    QTest::newRow("empty") << QString() << u"OLD"_s;
    QTest::newRow("no-brace") << u"no information"_s << u"OLD"_s;
    QTest::newRow("only-brace") << u"{"_s << u"OLD"_s;
    QTest::newRow("empty-object") << u"{}"_s << u"OLD"_s;
    QTest::newRow("array-of-objects") << uR"([{"vin":"V"}])"_s << u"OLD"_s;
    QTest::newRow("array-of-texts") << uR"(["vin"])"_s << u"OLD"_s;
    QTest::newRow("in-kvt") << uR"({"vin":"outer","kvt":{"vin":"V"}})"_s << u"V"_s;
    QTest::newRow("in-kvt-without-it") << uR"({"vin":"outer","kvt":{}})"_s << u"OLD"_s;
    QTest::newRow("kvt-is-text") << uR"({"vin":"V","kvt":"x"})"_s << u"V"_s;
    QTest::newRow("kvt-is-array") << uR"({"vin":"V","kvt":[{"vin":"x"}]})"_s << u"V"_s;
    QTest::newRow("in-identifiers") << uR"({"vin":"outer","identifiers":{"vin":"V"}})"_s << u"V"_s;
    QTest::newRow("identifiers-is-null") << uR"({"vin":"V","identifiers":null})"_s << u"V"_s;
    QTest::newRow("in-kvt-identifiers") << uR"({"kvt":{"vin":"x","identifiers":{"vin":"V"}}})"_s << u"V"_s;
    QTest::newRow("identifiers-beside-kvt")
        << uR"({"kvt":{"vin":"V"},"identifiers":{"vin":"x"}})"_s << u"V"_s;
    QTest::newRow("kvt-in-identifiers-not-entered")
        << uR"({"identifiers":{"vin":"V","kvt":{"vin":"x"}}})"_s << u"V"_s;
    QTest::newRow("vin1-before-vin") << uR"({"vin":"x","vin1":"V"})"_s << u"V"_s;
    QTest::newRow("vin1-empty") << uR"({"vin":"V","vin1":""})"_s << u"V"_s;
    QTest::newRow("vin1-wrong-type") << uR"({"vin":"V","vin1":["x"]})"_s << u"V"_s;
    QTest::newRow("vin2-not-used") << uR"({"vin2":"x"})"_s << u"OLD"_s;
    QTest::newRow("vin-empty") << uR"({"vin":""})"_s << u"OLD"_s;
    QTest::newRow("vin-null") << uR"({"vin":null})"_s << u"OLD"_s;
    QTest::newRow("vin-boolean") << uR"({"vin":true})"_s << u"OLD"_s;
    QTest::newRow("vin-whole-number") << uR"({"vin":12.0})"_s << u"12"_s;
    QTest::newRow("vin-fraction") << uR"({"vin":12.7})"_s << u"0"_s;
    QTest::newRow("vin-2^31") << uR"({"vin":2147483648})"_s << u"0"_s;
    QTest::newRow("vin-key-in-capitals") << uR"({"VIN":"x"})"_s << u"OLD"_s;
}

void TestKvtInfo::texts()
{
    QFETCH(QString, json);
    QFETCH(QString, vin);
    const QVariantMap before{{u"vin"_s, u"OLD"_s}, {u"created"_s, u"2024-03-05 14:07"_s}};
    const QVariantMap expected{{u"vin"_s, vin}, {u"created"_s, u"2024-03-05 14:07"_s}};
    QCOMPARE(mergeKvtInfo(before, jsonObjectInText(json)), expected);
}

void TestKvtInfo::osAndSerial_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("mainOs");
    QTest::addColumn<QString>("serial");

    // Held before: main OS "OLD-OS", serial "OLD-SERIAL". "-" stands for what was held before.
    const auto row = [](const char *name, const QString &json, const QString &mainOs, const QString &serial) {
        QTest::newRow(name) << json << (mainOs == u"-"_s ? u"OLD-OS"_s : mainOs)
                            << (serial == u"-"_s ? u"OLD-SERIAL"_s : serial);
    };
    row("nothing", u"{}"_s, u"-"_s, u"-"_s);
    row("os-mainOs", uR"({"mainOs":"1","main_os":"2","os1":"","baseOs":"4","os":"5"})"_s, u"1"_s, u"-"_s);
    row("os-main_os", uR"({"mainOs":"","main_os":"2","baseOs":"4","os":"5"})"_s, u"2"_s, u"-"_s);
    row("os-os1", uR"({"os1":"3","baseOs":"4","os":"5"})"_s, u"3"_s, u"-"_s);
    row("os-baseOs", uR"({"baseOs":"4","os":"5"})"_s, u"4"_s, u"-"_s);
    row("os-os", uR"({"os":"5"})"_s, u"5"_s, u"-"_s);
    row("os-mainOS-not-tried", uR"({"mainOS":"x"})"_s, u"-"_s, u"-"_s);
    row("os-number", uR"({"mainOs":12345678})"_s, u"12345678"_s, u"-"_s);
    row("os1-overrides", uR"({"mainOs":"1","os1":"3","os2":"9"})"_s, u"3"_s, u"-"_s);
    row("os2-not-used", uR"({"os2":"9"})"_s, u"-"_s, u"-"_s);

    row("serial-serial1", uR"({"serial":"x","serial1":"S1"})"_s, u"-"_s, u"S1"_s);
    row("serial-serial", uR"({"serial":"S","serial1":""})"_s, u"-"_s, u"S"_s);
    row("serial2-alone-not-used", uR"({"serial2":"S2"})"_s, u"-"_s, u"-"_s);
    row("serial-and-weak-os", uR"({"serial1":"S1","mainOs":"12345678"})"_s, u"12345678"_s, u"S1"_s);

    row("cummins-serial1", uR"({"serial1":"a1234567bc"})"_s, u"A1234567BC"_s, QString());
    row("cummins-serial-leaves-held-serial", uR"({"serial":"a1234567bc"})"_s, u"A1234567BC"_s, u"-"_s);
    row("cummins-serial2", uR"({"serial2":"a1234567bc"})"_s, u"A1234567BC"_s, u"-"_s);
    row("cummins-serial2-plain-serial1", uR"({"serial1":"S1","serial2":"a1234567bc"})"_s, u"A1234567BC"_s,
        u"S1"_s);
    row("cummins-two-serials", uR"({"serial1":"a1234567bc","serial2":"12345678ab"})"_s,
        u"A1234567BC / 12345678AB"_s, QString());
    row("cummins-two-serials-same", uR"({"serial1":"a1234567bc","serial2":"A1234567BC"})"_s, u"A1234567BC"_s,
        QString());
    row("cummins-two-serials-same-in-small-letters", uR"({"serial1":"a1234567bc","serial2":"a1234567bc"})"_s,
        u"A1234567BC"_s, QString());
    row("cummins-serial-and-serial2", uR"({"serial":"a1234567bc","serial2":"12345678ab"})"_s,
        u"A1234567BC / 12345678AB"_s, u"-"_s);

    row("main-cummins-kept-as-read", uR"({"mainOs":"c1234567de"})"_s, u"c1234567de"_s, u"-"_s);
    row("main-cummins-serial1-cummins", uR"({"mainOs":"c1234567de","serial1":"a1234567bc"})"_s,
        u"c1234567de"_s, QString());
    row("main-cummins-serial1-same", uR"({"mainOs":"c1234567de","serial1":"C1234567DE"})"_s, u"c1234567de"_s,
        QString());
    row("main-cummins-serial1-plain", uR"({"mainOs":"c1234567de","serial1":"S1"})"_s, u"c1234567de"_s,
        u"S1"_s);
    row("main-cummins-serial-cummins", uR"({"mainOs":"c1234567de","serial":"a1234567bc"})"_s, u"c1234567de"_s,
        u"-"_s);
    row("main-cummins-three-candidates",
        uR"({"mainOs":"c1234567de","serial1":"a1234567bc","serial2":"12345678ab"})"_s, u"c1234567de"_s,
        QString());

    row("main-weak-becomes-serial", uR"({"mainOs":"12345678","serial1":"a1234567bc"})"_s, u"A1234567BC"_s,
        u"12345678"_s);
    row("main-weak-becomes-serial-for-serial2", uR"({"mainOs":"1234567","serial2":"a1234567bc"})"_s,
        u"A1234567BC"_s, u"1234567"_s);
    row("main-weak-becomes-serial-for-serial", uR"({"mainOs":"123456789","serial":"a1234567bc"})"_s,
        u"A1234567BC"_s, u"123456789"_s);
    row("main-weak-serial1-plain", uR"({"mainOs":"12345678","serial1":"S1","serial2":"a1234567bc"})"_s,
        u"A1234567BC"_s, u"S1"_s);
    row("main-weak-two-serials", uR"({"mainOs":"12345678","serial1":"a1234567bc","serial2":"12345678ab"})"_s,
        u"A1234567BC / 12345678AB"_s, u"12345678"_s);
    row("main-other-dropped", uR"({"mainOs":"E38-OS","serial1":"a1234567bc"})"_s, u"A1234567BC"_s, QString());
    row("main-six-digits-is-not-weak", uR"({"mainOs":"123456","serial1":"a1234567bc"})"_s, u"A1234567BC"_s,
        QString());
    row("os1-weak-moves-and-overrides", uR"({"os1":"1234567","serial1":"a1234567bc"})"_s, u"1234567"_s,
        u"1234567"_s);
    row("os1-overrides-two-serials", uR"({"os1":"Q","serial1":"a1234567bc","serial2":"12345678ab"})"_s,
        u"Q"_s, QString());
}

void TestKvtInfo::osAndSerial()
{
    QFETCH(QString, json);
    QFETCH(QString, mainOs);
    QFETCH(QString, serial);
    const QVariantMap before{{u"mainOS"_s, u"OLD-OS"_s}, {u"serial"_s, u"OLD-SERIAL"_s}};
    const QVariantMap after = mergeKvtInfo(before, jsonObjectInText(json));
    QCOMPARE(after.value(u"mainOS"_s).toString(), mainOs);
    QCOMPARE(after.value(u"serial"_s).toString(), serial);
    QCOMPARE(after.size(), 2);
}

void TestKvtInfo::targets_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("expected");

    const QList<std::pair<QString, QStringList>> keysOfTargets{
        {u"system"_s, {u"gmSystem"_s, u"system"_s, u"module"_s}},
        {u"fuel"_s, {u"gmFuel"_s, u"fuel"_s}},
        {u"speedometer"_s, {u"gmSpeedometer"_s, u"speedometer"_s}},
        {u"engineDiag"_s, {u"gmEngineDiag"_s, u"engine_diag"_s, u"engineDiag"_s}},
        {u"engineOp"_s, {u"gmEngineOp"_s, u"engine_op"_s, u"engineOp"_s}},
        {u"interfaceID"_s, {u"interfaceCalId"_s, u"interfaceId"_s, u"interface_id"_s, u"interfaceID"_s}},
        {u"created"_s, {u"created"_s}},
        {u"editorVersion"_s, {u"softwareVersion"_s, u"editor_version"_s}},
    };
    for (const auto &[target, keys] : keysOfTargets) {
        for (qsizetype first = 0; first < keys.size(); ++first) {
            // The keys before `first` are empty, those from it on hold their own names.
            QStringList members;
            for (qsizetype i = 0; i < keys.size(); ++i) {
                members.append(u"\"%1\":\"%2\""_s.arg(keys[i], i < first ? QString() : keys[i]));
            }
            QTest::addRow("%s-from-%s", qPrintable(target), qPrintable(keys[first]))
                << target << u"{%1}"_s.arg(members.join(u',')) << keys[first];
        }
        QTest::addRow("%s-kept", qPrintable(target))
            << target << u"{\"%1\":\"\"}"_s.arg(keys.first()) << u"OLD"_s;
    }
    QTest::newRow("editorVersion-own-key-not-tried")
        << u"editorVersion"_s << uR"({"editorVersion":"9"})"_s << u"OLD"_s;
    QTest::newRow("fuel-number") << u"fuel"_s << uR"({"gmFuel":7})"_s << u"7"_s;
}

void TestKvtInfo::targets()
{
    QFETCH(QString, target);
    QFETCH(QString, json);
    QFETCH(QString, expected);
    const QVariantMap before{{target, u"OLD"_s}};
    QCOMPARE(mergeKvtInfo(before, jsonObjectInText(json)), QVariantMap({{target, expected}}));
}

void TestKvtInfo::modules_data()
{
    QTest::addColumn<QVariantMap>("before");
    QTest::addColumn<QString>("json");
    QTest::addColumn<QVariantMap>("after");

    const QVariantList held{moduleEntry(u"Held"_s, {}, {}, {})};
    const QVariantMap before{{u"modules"_s, held}, {u"vin"_s, u"OLD"_s}};
    const auto with = [](QVariantMap map, const QVariantMap &more) {
        map.insert(more);
        return map;
    };
    const auto list = [](const QVariantList &entries) { return QVariantMap{{u"modules"_s, entries}}; };

    QTest::newRow("absent") << before << uR"({"vin":"V"})"_s << with(before, {{u"vin"_s, u"V"_s}});
    QTest::newRow("empty") << before << uR"({"modules":[]})"_s << before;
    QTest::newRow("object") << before << uR"({"modules":{"title":"x"}})"_s << before;
    QTest::newRow("text") << before << uR"({"modules":"x"})"_s << before;
    QTest::newRow("elements-not-objects")
        << before << uR"({"modules":[1,"x",null]})"_s
        << with(
               before,
               list({moduleEntry({}, {}, {}, {}), moduleEntry({}, {}, {}, {}), moduleEntry({}, {}, {}, {})}));
    QTest::newRow("replaces-list-and-overrides")
        << before
        << uR"({"vin":"V","serial":"S","mainOs":"M","modules":[{"title":"E","vin":"V1",)"
           uR"("serial":"S1","mainOs":"M1"}]})"_s
        << with(list({moduleEntry(u"E"_s, u"V1"_s, u"S1"_s, u"M1"_s)}),
                {{u"vin"_s, u"V1"_s}, {u"serial"_s, u"S1"_s}, {u"mainOS"_s, u"M1"_s}});
    QTest::newRow("empty-members-override-nothing")
        << before
        << uR"({"vin":"V","serial":"S","mainOs":"M","modules":[{"title":"E","vin":"","serial":""}]})"_s
        << with(list({moduleEntry(u"E"_s, {}, {}, {})}),
                {{u"vin"_s, u"V"_s}, {u"serial"_s, u"S"_s}, {u"mainOS"_s, u"M"_s}});
    QTest::newRow("numbers-as-text")
        << QVariantMap() << uR"({"modules":[{"title":1,"vin":2,"serial":3.5,"mainOs":12345678}]})"_s
        << with(list({moduleEntry(u"1"_s, u"2"_s, u"0"_s, u"12345678"_s)}),
                {{u"vin"_s, u"2"_s}, {u"serial"_s, u"0"_s}, {u"mainOS"_s, u"12345678"_s}});
    QTest::newRow("second-module-overrides-nothing")
        << QVariantMap()
        << uR"({"modules":[{"title":"A","vin":"V1"},{"title":"B","vin":"V2",)"
           uR"("rows":[{"label":"l","value":"v"}]}]})"_s
        << with(list({moduleEntry(u"A"_s, u"V1"_s, {}, {}),
                      moduleEntry(u"B"_s, u"V2"_s, {}, {}, {{u"l"_s, u"v"_s}})}),
                {{u"vin"_s, u"V1"_s}});
    QTest::newRow("os1-does-not-override-module")
        << QVariantMap() << uR"({"os1":"O","modules":[{"mainOs":"M1"}]})"_s
        << with(list({moduleEntry({}, {}, {}, u"M1"_s)}), {{u"mainOS"_s, u"M1"_s}});
    QTest::newRow("five-rows-by-position")
        << QVariantMap()
        << uR"({"gmSystem":"x","gmFuel":"x","modules":[{"rows":[{"label":"Op",)"
           uR"("value":"1"},{"label":"Fuel","value":"2"},{"label":"","value":"3"},)"
           uR"({"label":"d","value":"4"},{"label":"e","value":"5"},{"label":"f",)"
           uR"("value":"6"}]}]})"_s
        << with(list({moduleEntry({}, {}, {}, {},
                                  {{u"Op"_s, u"1"_s},
                                   {u"Fuel"_s, u"2"_s},
                                   {QString(), u"3"_s},
                                   {u"d"_s, u"4"_s},
                                   {u"e"_s, u"5"_s},
                                   {u"f"_s, u"6"_s}})}),
                {{u"system"_s, u"1"_s},
                 {u"fuel"_s, u"2"_s},
                 {u"speedometer"_s, u"3"_s},
                 {u"engineDiag"_s, u"4"_s},
                 {u"engineOp"_s, u"5"_s}});
    QTest::newRow("fewer-rows-fill-fewer")
        << QVariantMap{{u"speedometer"_s, u"OLD"_s}}
        << uR"({"gmEngineDiag":"D","modules":[{"rows":[{"label":"a","value":"1"},)"
           uR"({"label":"b","value":"2"}]}]})"_s
        << with(list({moduleEntry({}, {}, {}, {}, {{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}})}),
                {{u"system"_s, u"1"_s},
                 {u"fuel"_s, u"2"_s},
                 {u"speedometer"_s, u"OLD"_s},
                 {u"engineDiag"_s, u"D"_s}});
    QTest::newRow("empty-values-drop-rows-before-counting")
        << QVariantMap()
        << uR"({"modules":[{"rows":[{"label":"a","value":""},{"label":"b"},7,{"label":"c",)"
           uR"("value":12.0}]}]})"_s
        << with(list({moduleEntry({}, {}, {}, {}, {{u"c"_s, u"12"_s}})}), {{u"system"_s, u"12"_s}});
    QTest::newRow("rows-not-an-array")
        << QVariantMap() << uR"({"modules":[{"title":"A","rows":{"label":"a","value":"1"}}]})"_s
        << list({moduleEntry(u"A"_s, {}, {}, {})});
    QTest::newRow("in-kvt-identifiers")
        << QVariantMap()
        << uR"({"modules":[{"title":"x"}],"kvt":{"identifiers":{"modules":[{"title":"A"}]}}})"_s
        << list({moduleEntry(u"A"_s, {}, {}, {})});
    QTest::newRow("module-serial-beats-cleared-serial")
        << QVariantMap() << uR"({"serial1":"a1234567bc","modules":[{"serial":"S1"}]})"_s
        << with(list({moduleEntry({}, {}, u"S1"_s, {})}),
                {{u"serial"_s, u"S1"_s}, {u"mainOS"_s, u"A1234567BC"_s}});
}

void TestKvtInfo::modules()
{
    QFETCH(QVariantMap, before);
    QFETCH(QString, json);
    QTEST(mergeKvtInfo(before, jsonObjectInText(json)), "after");
}

void TestKvtInfo::hundredThousandModules()
{
    QString json = u"{\"modules\":["_s;
    for (int i = 0; i < 100'000; ++i) {
        json += i == 0 ? u"{\"vin\":\"V\"}"_s : u",{\"vin\":\"W\"}"_s;
    }
    const QVariantMap after = mergeKvtInfo({}, jsonObjectInText(json + u"]}"_s));
    QCOMPARE(after.value(u"modules"_s).toList().size(), 100'000);
    QCOMPARE(after.value(u"vin"_s).toString(), u"V"_s);
}

KVTEDITOR_TEST_MAIN(TestKvtInfo)
#include "tst_KvtInfo.moc"
