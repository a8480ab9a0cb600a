#include "core/MessageHelp.h"

#include "app/AppState.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestMessageHelp : public QObject
{
    Q_OBJECT

private slots:
    void explains_data();
    void explains();
    void manualExplainsFailures_data();
    void manualExplainsFailures();
};

void TestMessageHelp::explains_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("text");

    QTest::newRow("plain") << u"Could not read."_s << u"It is empty. See Files."_s;
    QTest::newRow("part-of-one") << u"Could not"_s << QString();
    QTest::newRow("more-than-one") << u"Could not read. Really."_s << QString();
    QTest::newRow("no-wildcard") << u"Could not readX"_s << QString();
    QTest::newRow("second-of-a-row") << u"Also not"_s << u"It is empty. See Files."_s;
    QTest::newRow("name") << u"Saved a \"name\" (1).kvt"_s << u"Done."_s;
    QTest::newRow("numbers") << u"3 of 17 KVT: 2 byte(s)"_s << u"Counted."_s;
    QTest::newRow("offset") << u"At 0x1F."_s << u"There."_s;
    QTest::newRow("other-capitals-are-themselves") << u"3 of 17 BIN: 2 byte(s)"_s << QString();
    QTest::newRow("several-lines") << u"Failed: a\nb"_s << u"Why?"_s;
    QTest::newRow("first-row-counts") << u"Failed: badly"_s << u"Very badly."_s;
    QTest::newRow("marks-are-gone") << u"Marked"_s << u"Press KEY or code."_s;
    QTest::newRow("heading") << u"message"_s << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestMessageHelp::explains()
{
    QFETCH(QString, message);
    const MessageHelp help(uR"(# Messages

| message | cause | remedy |
|---|---|---|
| `Could not read.`, `Also not` | It is empty. | See [Files](files.md#open). |
| `Saved NAME` | Done. | |
| `N of M KVT: K byte(s)` | Counted. | |
| `At 0xOFFSET.` | | There. |
| `Failed: badly` | Very badly. | |
| `Failed: REASON` | Why? | |
| `Marked` | | Press **KEY** or `code`. |
| *(an empty line)* | Nothing. | |
)"_s);
    QTEST(help.explain(message), "text");
}

void TestMessageHelp::manualExplainsFailures_data()
{
    QTest::addColumn<QString>("status");

    for (const char *status : {"Could not read file.", "Open an KVT first.", "Patch past EOF or empty.",
                               "Outside the file: its last byte is at 0x1FF.", "Connection refused",
                               "HTTP 103: the outcome is unknown.", "Host vox.example not found",
                               "Search cancelled. 12 file(s) kept.", "Worker error: failed"})
        QTest::newRow(status) << QString::fromLatin1(status);
}

void TestMessageHelp::manualExplainsFailures()
{
    QFETCH(QString, status);
    AppState state;
    QCOMPARE(state.statusHelp(), QString());
    state.setStatus(status, 0);
    QVERIFY(state.statusHelp().size() > 10);
    state.setStatus(u"a reason of the service's own"_s, 0);
    QCOMPARE(state.statusHelp(), QString());
    state.setStatus(status + QString(50'000'000, u'x'), 0);
    QCOMPARE(state.statusHelp(), QString());
}

KVTEDITOR_TEST_MAIN(TestMessageHelp)
#include "tst_MessageHelp.moc"
