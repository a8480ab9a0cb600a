#include "SwapRules.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

namespace {

SampleModule module(const QString &title, const QList<SampleSegment> &segments)
{
    return {title, {}, {}, {}, {}, segments};
}

SampleTune tuneOf(const QList<SampleModule> &modules)
{
    return {u"2015"_s, u"3.9"_s, u"18"_s, modules};
}

using Pairs = QList<std::pair<int, int>>;

Pairs pairsOf(const QList<SwapCandidate> &candidates)
{
    Pairs pairs;
    for (const SwapCandidate &candidate : candidates)
        pairs.append({candidate.targetIndex, candidate.donorIndex});
    return pairs;
}

} // namespace

class TestSwapRules : public QObject
{
    Q_OBJECT

private slots:
    void candidates_data();
    void candidates();
    void candidateIsDescribed();
    void chosen_data();
    void chosen();
    void swappedChangesTheChosenBytesOnly();
    void swappedKeepsWhatAHexEditorLeft();
    void swappedWithoutChoiceIsTheBase();
};

void TestSwapRules::candidates_data()
{
    QTest::addColumn<SampleTune>("base");
    QTest::addColumn<SampleTune>("donor");
    QTest::addColumn<Pairs>("pairs");
    const SampleTune one = tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}, {u"Spark"_s, "cde"}})});
    QTest::newRow("same-layout") << one << one << Pairs{{0, 0}, {1, 1}};
    QTest::newRow("other-order") << one << tuneOf({module(u"D"_s, {{u"Spark"_s, "123"}, {u"Fuel"_s, "45"}})})
                                 << Pairs{{0, 1}, {1, 0}};
    QTest::newRow("other-size") << one << tuneOf({module(u"D"_s, {{u"Fuel"_s, "123"}, {u"Spark"_s, "456"}})})
                                << Pairs{{1, 1}};
    QTest::newRow("other-name") << one << tuneOf({module(u"D"_s, {{u"fuel"_s, "12"}})}) << Pairs{};
    const SampleTune two = tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}}), module(u"B"_s, {{u"Fuel"_s, "cd"}})});
    QTest::newRow("module-at-the-same-place") << two << two << Pairs{{0, 0}, {1, 1}};
    QTest::newRow("donor-of-one-module")
        << two << tuneOf({module(u"D"_s, {{u"Fuel"_s, "12"}})}) << Pairs{{0, 0}, {1, 0}};
    QTest::newRow("base-of-one-module")
        << tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}})}) << two << Pairs{{0, 0}};
    QTest::newRow("nothing-to-swap") << tuneOf({}) << two << Pairs{};
}

void TestSwapRules::candidates()
{
    QFETCH(SampleTune, base);
    QFETCH(SampleTune, donor);
    QFETCH(Pairs, pairs);
    QCOMPARE(pairsOf(SwapRules::candidates(base, donor)), pairs);
}

void TestSwapRules::candidateIsDescribed()
{
    const SampleTune tune = tuneOf({module(u"Engine"_s, {{u"Fuel"_s, QByteArray(7, 'x')}})});
    const SwapCandidate expected = {0, 0, u"Fuel"_s, 7, u"Engine: Fuel (7 bytes)"_s};
    QVERIFY(SwapRules::candidates(tune, tune) == QList<SwapCandidate>{expected});
}

void TestSwapRules::chosen_data()
{
    QTest::addColumn<QString>("places");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QList<int>>("targets");
    QTest::newRow("none") << QString() << true << QList<int>();
    QTest::newRow("one") << u"1"_s << true << QList<int>{11};
    QTest::newRow("several") << u"2,0"_s << true << QList<int>{12, 10};
    QTest::newRow("past-the-end") << u"3"_s << false << QList<int>();
    QTest::newRow("negative") << u"-1"_s << false << QList<int>();
    QTest::newRow("no-number") << u"x"_s << false << QList<int>();
    QTest::newRow("gap") << u"0,,1"_s << false << QList<int>();
    QTest::newRow("beyond-32-bits") << u"4294967296"_s << false << QList<int>();
}

void TestSwapRules::chosen()
{
    QFETCH(QString, places);
    QFETCH(bool, valid);
    QFETCH(QList<int>, targets);
    const QList<SwapCandidate> candidates = {{10, 0, {}, 1, {}}, {11, 0, {}, 1, {}}, {12, 0, {}, 1, {}}};
    const std::optional<QList<SwapCandidate>> chosen = SwapRules::chosen(candidates, places);
    QCOMPARE(chosen.has_value(), valid);
    QList<int> found;
    for (const SwapCandidate &candidate : chosen.value_or(QList<SwapCandidate>()))
        found.append(candidate.targetIndex);
    QCOMPARE(found, targets);
}

void TestSwapRules::swappedChangesTheChosenBytesOnly()
{
    SampleTune base = tuneOf(
        {module(u"A"_s, {{u"Fuel"_s, "ab"}, {u"Spark"_s, "cde"}}), module(u"B"_s, {{u"Fuel"_s, "\n\n"}})});
    const SampleTune donor = tuneOf({module(u"D"_s, {{u"Spark"_s, "123"}, {u"Fuel"_s, "45"}})});
    const QList<SwapCandidate> candidates = SwapRules::candidates(base, donor);
    const QByteArray swapped = SwapRules::swapped(SampleContainer::write(base), SampleContainer::write(donor),
                                                  {candidates.at(1), candidates.at(2)});
    base.modules[0].segments[1].bytes = "123";
    base.modules[1].segments[0].bytes = "45";
    QCOMPARE(swapped, SampleContainer::write(base));
}

void TestSwapRules::swappedKeepsWhatAHexEditorLeft()
{
    const SampleTune tune = tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}})});
    // Padding in front of a value, which writing the tune anew would move behind it.
    QByteArray base = SampleContainer::write(tune);
    const qsizetype value = base.indexOf("2015");
    base.replace(value, 6, "  2015");
    QByteArray expected = base;
    expected.replace("\nab\n", "\n12\n");
    const SampleTune donor = tuneOf({module(u"D"_s, {{u"Fuel"_s, "12"}})});
    const QList<SwapCandidate> candidates = SwapRules::candidates(tune, donor);
    QCOMPARE(SwapRules::swapped(base, SampleContainer::write(donor), candidates), expected);
}

void TestSwapRules::swappedWithoutChoiceIsTheBase()
{
    const QByteArray base = SampleContainer::write(tuneOf({module(u"A"_s, {{u"Fuel"_s, "ab"}})}));
    QCOMPARE(SwapRules::swapped(base, base, {}), base);
}

KVTEDITOR_TEST_MAIN(TestSwapRules)
#include "tst_SwapRules.moc"
