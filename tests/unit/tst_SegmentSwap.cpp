#include "api/SegmentSwap.h"

#include "api/JsonReading.h"
#include "support/TestMain.h"

#include <QStringList>
#include <QTest>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace {

/// One text for each candidate, "index selected label".
QStringList summaries(const QVariantList &candidates)
{
    QStringList texts;
    for (const QVariant &entry : candidates) {
        const QVariantMap candidate = entry.toMap();
        texts.append(u"%1 %2 %3"_s.arg(candidate.value(u"index"_s).toString(),
                                       candidate.value(u"selected"_s).toString(),
                                       candidate.value(u"label"_s).toString()));
    }
    return texts;
}

QVariantMap onlyCandidate(const QString &members)
{
    const QVariantList candidates =
        decodeSwapCandidates(jsonObjectInText(u"{\"candidates\":[{"_s + members + u"}]}"_s));
    return candidates.size() == 1 ? candidates.first().toMap() : QVariantMap();
}

QVariantMap candidate(const QVariant &index, const QVariant &selected)
{
    return {{u"index"_s, index}, {u"selected"_s, selected}};
}

} // namespace

class TestSegmentSwap : public QObject
{
    Q_OBJECT

private slots:
    void candidates_data();
    void candidates();
    void label_data();
    void label();
    void clientMembersReplaceTheServices();
    void otherMembersAreKept();
    void typesOfTheClientsMembers();
    void hundredThousandCandidates();
    void indices_data();
    void indices();
};

void TestSegmentSwap::candidates_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QStringList>("expected");

    const QStringList none;
    QTest::newRow("empty") << u"{}"_s << none;
    QTest::newRow("member-missing") << uR"({"status":"ok"})"_s << none;
    QTest::newRow("member-empty") << uR"({"candidates":[]})"_s << none;
    QTest::newRow("member-object") << uR"({"candidates":{"0":{"label":"a"}}})"_s << none;
    QTest::newRow("member-text") << uR"({"candidates":"[{}]"})"_s << none;
    QTest::newRow("member-null") << uR"({"candidates":null})"_s << none;
    QTest::newRow("member-in-capitals") << uR"({"Candidates":[{"label":"a"}]})"_s << none;
    QTest::newRow("in-order") << uR"({"candidates":[{"label":"b"},{"label":"a"},{"label":"b"}]})"_s
                              << QStringList({u"0 true b"_s, u"1 true a"_s, u"2 true b"_s});
    QTest::newRow("elements-of-other-types")
        << uR"({"candidates":[null,5,"x",[{"label":"a"}],true,{"label":"a"}]})"_s
        << QStringList({u"0 true T0 \u2190 D0"_s, u"1 true T0 \u2190 D0"_s, u"2 true T0 \u2190 D0"_s,
                        u"3 true T0 \u2190 D0"_s, u"4 true T0 \u2190 D0"_s, u"5 true a"_s});
}

void TestSegmentSwap::candidates()
{
    QFETCH(QString, json);
    QTEST(summaries(decodeSwapCandidates(jsonObjectInText(json))), "expected");
}

void TestSegmentSwap::label_data()
{
    QTest::addColumn<QString>("members");
    QTest::addColumn<QVariant>("label");

    const auto row = [](const char *name, const QString &members, const QVariant &label) {
        QTest::newRow(name) << members << label;
    };
    row("built", uR"("targetIndex":3,"donorIndex":12)"_s, u"T3 \u2190 D12"_s);
    row("built-from-nothing", u""_s, u"T0 \u2190 D0"_s);
    row("built-from-texts", uR"("targetIndex":"3","donorIndex":"x")"_s, u"T3 \u2190 D0"_s);
    row("built-negative", uR"("targetIndex":-1,"donorIndex":-2147483648)"_s, u"T-1 \u2190 D-2147483648"_s);
    row("built-not-whole", uR"("targetIndex":1.5,"donorIndex":2147483648)"_s, u"T0 \u2190 D0"_s);
    row("built-whole-as-fraction", uR"("targetIndex":2.0,"donorIndex":-0.0)"_s, u"T2 \u2190 D0"_s);
    row("built-other-types", uR"("targetIndex":null,"donorIndex":[1])"_s, u"T0 \u2190 D0"_s);
    row("kept", uR"("label":"ECM \u2190 donor","targetIndex":3,"donorIndex":1)"_s, u"ECM \u2190 donor"_s);
    row("kept-empty", uR"("label":"","targetIndex":3,"donorIndex":1)"_s, u""_s);
    row("kept-null", uR"("label":null,"targetIndex":3,"donorIndex":1)"_s, QVariant::fromValue(nullptr));
    row("kept-number", uR"("label":7)"_s, 7);
    row("kept-markup", uR"("label":"<b>R&D</b> %1\n")"_s, u"<b>R&D</b> %1\n"_s);
    row("other-case-is-another-member", uR"("Label":"x","targetIndex":1,"donorIndex":2)"_s,
        u"T1 \u2190 D2"_s);
}

void TestSegmentSwap::label()
{
    QFETCH(QString, members);
    QFETCH(QVariant, label);
    const QVariantMap decoded = onlyCandidate(members);
    QVERIFY(decoded.contains(u"label"_s));
    QCOMPARE(decoded.value(u"label"_s).isNull(), label.isNull());
    QCOMPARE(decoded.value(u"label"_s).toString(), label.toString());
}

void TestSegmentSwap::clientMembersReplaceTheServices()
{
    const QVariantMap decoded = onlyCandidate(uR"("index":99,"selected":false,"label":"x")"_s);
    QCOMPARE(decoded.value(u"index"_s), QVariant(0));
    QCOMPARE(decoded.value(u"selected"_s), QVariant(true));
    QCOMPARE(decoded.size(), 3);
}

void TestSegmentSwap::otherMembersAreKept()
{
    const QVariantMap decoded =
        onlyCandidate(uR"("targetIndex":"3","donorIndex":1.5,"size":65536,"note":"R&D","ok":true,)"
                      uR"("none":null,"tags":["a",1],"where":{"page":2},"":"empty name")"_s);
    QCOMPARE(decoded,
             QVariantMap({{u"targetIndex"_s, u"3"_s},
                          {u"donorIndex"_s, 1.5},
                          {u"size"_s, 65536},
                          {u"note"_s, u"R&D"_s},
                          {u"ok"_s, true},
                          {u"none"_s, QVariant::fromValue(nullptr)},
                          {u"tags"_s, QVariantList({u"a"_s, 1})},
                          {u"where"_s, QVariantMap({{u"page"_s, 2}})},
                          {u""_s, u"empty name"_s},
                          {u"label"_s, u"T3 \u2190 D0"_s},
                          {u"index"_s, 0},
                          {u"selected"_s, true}}));
}

// A view compares and counts with them.
void TestSegmentSwap::typesOfTheClientsMembers()
{
    const QVariantMap decoded = onlyCandidate({});
    QCOMPARE(decoded.value(u"index"_s).typeId(), int(QMetaType::Int));
    QCOMPARE(decoded.value(u"selected"_s).typeId(), int(QMetaType::Bool));
    QCOMPARE(decoded.value(u"label"_s).typeId(), int(QMetaType::QString));
}

void TestSegmentSwap::hundredThousandCandidates()
{
    const QVariantList candidates = decodeSwapCandidates(
        jsonObjectInText(u"{\"candidates\":["_s + u"{},"_s.repeated(99'999) + u"{}]}"_s));
    QCOMPARE(candidates.size(), 100'000);
    QCOMPARE(candidates.last().toMap().value(u"index"_s), QVariant(99'999));
    const QString indices = selectedCandidateIndices(candidates);
    QVERIFY(indices.startsWith(u"0,1,2,"_s));
    QVERIFY(indices.endsWith(u",99998,99999"_s));
    QCOMPARE(indices.count(u','), 99'999);
}

void TestSegmentSwap::indices_data()
{
    QTest::addColumn<QVariantList>("candidates");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no-candidates") << QVariantList() << QString();
    QTest::newRow("one") << QVariantList{candidate(0, true)} << u"0"_s;
    QTest::newRow("none-selected") << QVariantList{candidate(0, false), candidate(1, false)} << QString();
    QTest::newRow("all-of-three") << QVariantList{candidate(0, true), candidate(1, true), candidate(2, true)}
                                  << u"0,1,2"_s;
    QTest::newRow("five-without-1-and-3")
        << QVariantList{candidate(0, true), candidate(1, false), candidate(2, true), candidate(3, false),
                        candidate(4, true)}
        << u"0,2,4"_s;
    QTest::newRow("only-last") << QVariantList{candidate(0, false), candidate(11, true)} << u"11"_s;
    QTest::newRow("member-missing") << QVariantList{QVariantMap{{u"index"_s, 0}}, candidate(1, true)}
                                    << u"1"_s;
    QTest::newRow("not-a-map") << QVariantList{u"x"_s, QVariant(), candidate(2, true)} << u"2"_s;
}

void TestSegmentSwap::indices()
{
    QFETCH(QVariantList, candidates);
    QTEST(selectedCandidateIndices(candidates), "expected");
}

KVTEDITOR_TEST_MAIN(TestSegmentSwap)
#include "tst_SegmentSwap.moc"
