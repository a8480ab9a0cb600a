#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct ExpectedProperty
{
    const char *name;
    const char *type;
    bool writable;
    const char *signal;
    QVariant value;
};

const QVariant noText = QString();
const QVariant noList = QVariantList();

const ExpectedProperty expectedProperties[] = {
    {"version", "QString", false, "", u"4.0.2"_s},
    {"isMacOS", "bool", false, "", true},
    {"tab", "QString", true, "tabChanged", u"main"_s},
    {"busy", "bool", false, "busyChanged", false},
    {"status", "QString", false, "statusChanged", noText},
    {"statusOK", "int", false, "statusChanged", -1},
    {"fileName", "QString", false, "fileChanged", noText},
    {"vin", "QString", true, "identifiersChanged", noText},
    {"serial", "QString", true, "identifiersChanged", noText},
    {"mainOS", "QString", true, "identifiersChanged", noText},
    {"system", "QString", true, "identifiersChanged", noText},
    {"fuel", "QString", true, "identifiersChanged", noText},
    {"speedometer", "QString", true, "identifiersChanged", noText},
    {"engineDiag", "QString", true, "identifiersChanged", noText},
    {"engineOp", "QString", true, "identifiersChanged", noText},
    {"interfaceID", "QString", true, "identifiersChanged", noText},
    {"modules", "QVariantList", false, "identifiersChanged", noList},
    {"moduleOneOS", "QString", false, "identifiersChanged", noText},
    {"created", "QString", false, "identifiersChanged", noText},
    {"editorVersion", "QString", false, "identifiersChanged", noText},
    {"showHex", "bool", true, "showHexChanged", false},
    {"hexModel", "HexModel*", false, "", {}},
    {"xdfEmail", "QString", true, "xdfChanged", noText},
    {"xdfPassword", "QString", true, "xdfChanged", noText},
    {"xdfToken", "QString", false, "xdfChanged", noText},
    {"xdfCredits", "QString", false, "xdfChanged", noText},
    {"xdfItems", "QVariantList", false, "xdfChanged", noList},
    {"searchHits", "QVariantList", false, "searchChanged", noList},
    {"searchBusy", "bool", false, "searchChanged", false},
    {"swapCandidates", "QVariantList", false, "segmentsChanged", noList},
    {"patchItems", "QVariantList", false, "patcherChanged", noList},
    {"stockRows", "QVariantList", false, "stockChanged", noList},
    {"j1939Rows", "QVariantList", false, "toolsChanged", noList},
    {"catalogText", "QString", false, "xdfChanged", noText},
    {"threadText", "QString", false, "feedbackChanged", noText},
    {"vbfSkipVerify", "bool", true, "toolsChanged", false},
    {"xcalMode", "QString", true, "toolsChanged", u"kvt"_s},
    {"searchRecursive", "QString", true, "searchChanged", u"1"_s},
};

const QByteArrayList expectedSignals{
    "tabChanged",     "busyChanged",  "statusChanged",   "fileChanged",     "identifiersChanged",
    "showHexChanged", "xdfChanged",   "searchChanged",   "segmentsChanged", "patcherChanged",
    "stockChanged",   "toolsChanged", "feedbackChanged",
};

} // namespace

class TestAppState : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void properties_data();
    void properties();
    void propertiesStandInTheirOrder();
    void signalsStandInTheirOrder();
    void invokables_data();
    void invokables();
    void constructionIsSilent();

    void setStatus_announcesEveryTime();
    void setStatus_textAloneIsNeutral();
    void setTab();
    void setTab_takesAnyKey();
    void copyText();
    void openEditorDebug_doesNothing();
    void simpleSetter_data();
    void simpleSetter();
    void setShowHex_twiceAnnouncesOnce();
    void setVbfSkipVerify_twiceAnnouncesOnce();
    void setSearchRecursive_data();
    void setSearchRecursive();
    void identifierSetter_data();
    void identifierSetter();
    void setId_comparesAsText();

private:
    std::unique_ptr<AppState> m_state;
};

void TestAppState::init()
{
    m_state = std::make_unique<AppState>();
}

void TestAppState::cleanup()
{
    m_state.reset();
}

void TestAppState::properties_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < static_cast<int>(std::size(expectedProperties)); ++i) {
        QTest::newRow(expectedProperties[i].name) << i;
    }
}

void TestAppState::properties()
{
    QFETCH(int, index);
    const ExpectedProperty &expected = expectedProperties[index];
    const QMetaObject &meta = AppState::staticMetaObject;
    const QMetaProperty property = meta.property(meta.indexOfProperty(expected.name));
    QVERIFY(property.isValid());
    QCOMPARE(QByteArray(property.typeName()), QByteArray(expected.type));
    QCOMPARE(property.isWritable(), expected.writable);
    QCOMPARE(property.notifySignal().name(), QByteArray(expected.signal));
    QCOMPARE(property.isConstant(), QByteArray(expected.signal).isEmpty());
    if (expected.value.isValid()) {
        QCOMPARE(property.read(m_state.get()), expected.value);
    } else {
        QCOMPARE(property.read(m_state.get()).value<HexModel *>(), m_state->findChild<HexModel *>());
        QVERIFY(m_state->hexModel());
    }
}

void TestAppState::propertiesStandInTheirOrder()
{
    QByteArrayList expected;
    for (const ExpectedProperty &property : expectedProperties) {
        expected.append(property.name);
    }
    const QMetaObject &meta = AppState::staticMetaObject;
    QByteArrayList actual;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        actual.append(meta.property(i).name());
    }
    QCOMPARE(actual, expected);
}

void TestAppState::signalsStandInTheirOrder()
{
    const QMetaObject &meta = AppState::staticMetaObject;
    QByteArrayList actual;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == QMetaMethod::Signal) {
            actual.append(meta.method(i).name());
            QCOMPARE(meta.method(i).parameterCount(), 0);
        }
    }
    QCOMPARE(actual, expectedSignals);
}

void TestAppState::invokables_data()
{
    QTest::addColumn<QByteArray>("signature");
    for (const char *signature : {
             "setStatus(QString)",
             "setStatus(QString,int)",
             "setTab(QString)",
             "copyText(QString,QString)",
             "openEditorDebug()",
             "setShowHex(bool)",
             "setVbfSkipVerify(bool)",
             "setXcalMode(QString)",
             "setXdfEmail(QString)",
             "setXdfPassword(QString)",
             "setSearchRecursive(QString)",
             "setVin(QString)",
             "setSerial(QString)",
             "setMainOS(QString)",
             "setSystem(QString)",
             "setFuel(QString)",
             "setSpeedometer(QString)",
             "setEngineDiag(QString)",
             "setEngineOp(QString)",
             "setInterfaceID(QString)",
             "openKvt(QString)",
             "saveKvt(QString)",
             "dialogFolder()",
             "convertOp(QString,QString)",
             "convertOp(QString,QString,QString)",
             "convertOp(QString,QString,QString,QString)",
             "pickBaseKvt(QString)",
             "toolConvert(QString,QString)",
             "toolConvert(QString,QString,QString)",
             "hexFind(QString)",
             "hexPatch(QString)",
             "hexWriteBack()",
             "scanFolder(QString,bool,QString,QString,QString,QString)",
             "cancelScan()",
             "clearSearch()",
             "openSearchHit(int)",
             "sortCopy(QStringList,QString,QString)",
             "pickSegmentFile(QString,QString)",
             "previewSegments()",
             "applySegments()",
             "setCandidateSelected(int,bool)",
             "selectAllCandidates(bool)",
             "xdfLogin()",
             "xdfCatalog()",
             "xdfDownload(int)",
             "loadPatches(QString)",
             "applyPatchToBin(int,QString)",
             "stockSearch(QVariantMap)",
             "clearStock()",
             "stockDownload(int,bool)",
             "decodeJ1939(QString)",
             "launchTool(QString)",
             "serviceUrl(QString)",
             "sendToDev(QString,QString)",
             "loadTicket(QString)",
             "replyTicket(QString,QString)",
             "checkUpdate()",
             "goHelp()",
             "openWebTool(QString,QString)",
         }) {
        QTest::newRow(signature) << QByteArray(signature);
    }
}

void TestAppState::invokables()
{
    QFETCH(QByteArray, signature);
    QVERIFY(AppState::staticMetaObject.indexOfMethod(signature.constData()) >= 0);
}

void TestAppState::constructionIsSilent()
{
    QCOMPARE(m_state->status(), QString());
    QCOMPARE(m_state->findChildren<VoxApiClient *>(Qt::FindDirectChildrenOnly).size(), 1);
    QCOMPARE(m_state->findChildren<HexModel *>(Qt::FindDirectChildrenOnly).size(), 1);
    QCOMPARE(m_state->hexModel()->byteCount(), 0);
    // No request in progress: each would have a manager as a child of the client.
    QCOMPARE(m_state->findChild<VoxApiClient *>()->children().size(), 0);
}

void TestAppState::setStatus_announcesEveryTime()
{
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->setStatus(u"It failed."_s, 0);
    m_state->setStatus(u"It failed."_s, 0);
    QCOMPARE(changes.count(), 2);
    QCOMPARE(m_state->status(), u"It failed."_s);
    QCOMPARE(m_state->statusOK(), 0);
    m_state->setStatus(u"Done."_s, 1);
    QCOMPARE(changes.count(), 3);
    QCOMPARE(m_state->statusOK(), 1);
}

void TestAppState::setStatus_textAloneIsNeutral()
{
    m_state->setStatus(u"Done."_s, 1);
    m_state->setStatus(u"Working"_s);
    QCOMPARE(m_state->status(), u"Working"_s);
    QCOMPARE(m_state->statusOK(), -1);
}

void TestAppState::setTab()
{
    QSignalSpy changes(m_state.get(), &AppState::tabChanged);
    m_state->setTab(u"main"_s);
    QCOMPARE(changes.count(), 0);
    m_state->setTab(u"search"_s);
    m_state->setTab(u"search"_s);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(m_state->tab(), u"search"_s);
    QVERIFY(m_state->setProperty("tab", u"main"_s));
    QCOMPARE(changes.count(), 2);
    QCOMPARE(m_state->tab(), u"main"_s);
}

void TestAppState::setTab_takesAnyKey()
{
    m_state->setTab(u"no such view"_s);
    QCOMPARE(m_state->tab(), u"no such view"_s);
    m_state->setTab(QString());
    QCOMPARE(m_state->tab(), QString());
}

void TestAppState::copyText()
{
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->copyText(u"ABC"_s, u"VIN"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"ABC"_s);
    QCOMPARE(m_state->status(), u"VIN copied."_s);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(changes.count(), 1);
    m_state->copyText(u"<b>R&D</b>\n"_s, u"%1"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"<b>R&D</b>\n"_s);
    QCOMPARE(m_state->status(), u"%1 copied."_s);
    m_state->copyText(QString(), QString());
    QCOMPARE(m_state->status(), u" copied."_s);
}

void TestAppState::openEditorDebug_doesNothing()
{
    QSignalSpy changes(m_state.get(), &AppState::statusChanged);
    m_state->openEditorDebug();
    QCOMPARE(changes.count(), 0);
    QCOMPARE(m_state->status(), QString());
}

void TestAppState::simpleSetter_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QByteArray>("signal");

    QTest::newRow("xcalMode") << QByteArray("xcalMode") << QByteArray(SIGNAL(toolsChanged()));
    QTest::newRow("xdfEmail") << QByteArray("xdfEmail") << QByteArray(SIGNAL(xdfChanged()));
    QTest::newRow("xdfPassword") << QByteArray("xdfPassword") << QByteArray(SIGNAL(xdfChanged()));
}

void TestAppState::simpleSetter()
{
    QFETCH(QByteArray, property);
    QFETCH(QByteArray, signal);
    QSignalSpy changes(m_state.get(), signal.constData());
    QVERIFY(m_state->setProperty(property.constData(), m_state->property(property.constData())));
    QCOMPARE(changes.count(), 0);
    QVERIFY(m_state->setProperty(property.constData(), u"efi <b>"_s));
    QVERIFY(m_state->setProperty(property.constData(), u"efi <b>"_s));
    QCOMPARE(changes.count(), 1);
    QCOMPARE(m_state->property(property.constData()).toString(), u"efi <b>"_s);
    QCOMPARE(m_state->status(), QString());
}

void TestAppState::setShowHex_twiceAnnouncesOnce()
{
    QSignalSpy changes(m_state.get(), &AppState::showHexChanged);
    m_state->setShowHex(false);
    QCOMPARE(changes.count(), 0);
    m_state->setShowHex(true);
    m_state->setShowHex(true);
    QCOMPARE(changes.count(), 1);
    QVERIFY(m_state->showHex());
}

void TestAppState::setVbfSkipVerify_twiceAnnouncesOnce()
{
    QSignalSpy changes(m_state.get(), &AppState::toolsChanged);
    m_state->setVbfSkipVerify(false);
    QCOMPARE(changes.count(), 0);
    m_state->setVbfSkipVerify(true);
    m_state->setVbfSkipVerify(true);
    QCOMPARE(changes.count(), 1);
    QVERIFY(m_state->vbfSkipVerify());
}

void TestAppState::setSearchRecursive_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::newRow("0") << u"0"_s << u"0"_s;
    QTest::newRow("1") << u"1"_s << u"1"_s;
    QTest::newRow("00") << u"00"_s << u"1"_s;
    QTest::newRow("no") << u"no"_s << u"1"_s;
    QTest::newRow("empty") << QString() << u"1"_s;
    QTest::newRow("false") << u"false"_s << u"1"_s;
    QTest::newRow("0-blank") << u"0 "_s << u"1"_s;
    QTest::newRow("full-width-0") << u"\uff10"_s << u"1"_s;
}

void TestAppState::setSearchRecursive()
{
    QFETCH(QString, text);
    for (const QString &before : {u"0"_s, u"1"_s}) {
        m_state->setSearchRecursive(before);
        QSignalSpy changes(m_state.get(), &AppState::searchChanged);
        m_state->setSearchRecursive(text);
        QTEST(m_state->searchRecursive(), "expected");
        m_state->setSearchRecursive(text);
        QCOMPARE(changes.count(), 2);
    }
}

void TestAppState::identifierSetter_data()
{
    QTest::addColumn<QByteArray>("property");
    for (const char *name : {"vin", "serial", "mainOS", "system", "fuel", "speedometer", "engineDiag",
                             "engineOp", "interfaceID"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void TestAppState::identifierSetter()
{
    QFETCH(QByteArray, property);
    QSignalSpy changes(m_state.get(), &AppState::identifiersChanged);
    QVERIFY(m_state->setProperty(property.constData(), QString()));
    QCOMPARE(changes.count(), 0);
    QVERIFY(m_state->setProperty(property.constData(), u"typed"_s));
    QVERIFY(m_state->setProperty(property.constData(), u"typed"_s));
    QCOMPARE(changes.count(), 1);
    for (const ExpectedProperty &other : expectedProperties) {
        if (QByteArray(other.signal) == "identifiersChanged" && QByteArray(other.type) == "QString") {
            const QString expected = property == other.name ? u"typed"_s : QString();
            QCOMPARE(m_state->property(other.name).toString(), expected);
        }
    }
    QVERIFY(m_state->setProperty(property.constData(), QString()));
    QCOMPARE(changes.count(), 2);
}

void TestAppState::setId_comparesAsText()
{
    QSignalSpy changes(m_state.get(), &AppState::identifiersChanged);
    m_state->setId(u"vin"_s, u"V"_s);
    m_state->setId(u"vin"_s, u"V"_s);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(m_state->vin(), u"V"_s);
    m_state->setId(u"created"_s, u"2024"_s);
    QCOMPARE(m_state->created(), u"2024"_s);
    QCOMPARE(changes.count(), 2);
}

KVTEDITOR_TEST_MAIN(TestAppState)
#include "tst_AppState.moc"
