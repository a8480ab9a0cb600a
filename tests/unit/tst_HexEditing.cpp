#include "app/AppState.h"
#include "app/HexEditing.h"
#include "core/FileTools.h"
#include "support/TestMain.h"
#include "support/Waiting.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

/// Through the controller, as the views reach it.
class TestHexEditing : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void typing_data();
    void typing();
    void typingRefused_data();
    void typingRefused();
    void firstDigitWaits();
    void firstDigitIsDropped_data();
    void firstDigitIsDropped();
    void typingStopsAtTheEnd();
    void typingBeginsAtTheSelection();

    void runIsOneStep();
    void movingEndsTheRun();
    void everyChangeIsAStep();
    void bytesTypedAsTheyAreStayInTheRun();
    void undoAndRedo();
    void nothingToUndo();
    void undoGoesBeyondWriteBackAndSave();
    void openingAFileForgetsTheSteps();
    void changeAfterUndoForgetsWhatWasUndone();
    void randomEditsUndone();

    void copy_data();
    void copy();
    void copyTooMuch();
    void paste_data();
    void paste();
    void pasteOfWhatIsNoText();
    void fill_data();
    void fill();
    void xorWith_data();
    void xorWith();
    void pasteFile_data();
    void pasteFile();
    void saveSelection();
    void replaceAll_data();
    void replaceAll();
    void writeValue();
    void selectAll();

    void changes();
    void changesCountFromTheSave();
    void goesToChanges();
    void goesToDifferences();
    void takeOver();
    void takeOverRefused();

    void targets();
    void bookmarks();
    void bookmarksInTurn_data();
    void bookmarksInTurn();
    void marks();
    void preparedFileIsNotCopiedByAnEdit();
    void editWhilePreparing();
    void destroyedWhileWorking();
    void withoutFile_data();
    void withoutFile();

private:
    void type(const QString &text);
    void compareWith(const QByteArray &bytes);
    QByteArray bytes() const { return m_state->hexModel()->bytes(); }
    static QString clipboardText() { return QGuiApplication::clipboard()->text(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<AppState> m_state;
    HexModel *m_model = nullptr;
    HexEditing *m_editing = nullptr;
};

void TestHexEditing::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_state = std::make_unique<AppState>();
    m_model = m_state->hexModel();
    m_editing = m_state->hexEditing();
    QGuiApplication::clipboard()->clear();
}

void TestHexEditing::type(const QString &text)
{
    for (const QChar character : text)
        QVERIFY(m_editing->type(character));
}

void TestHexEditing::compareWith(const QByteArray &bytes)
{
    QFile file(m_folder->filePath(u"other.bin"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    QSignalSpy finished(m_editing->compare(), &HexCompare::finished);
    m_editing->compare()->start(file.fileName());
    QVERIFY2(finished.wait(), "the comparison did not end");
    QCOMPARE(m_state->status(), u"Compared with other.bin."_s);
}

void TestHexEditing::typing_data()
{
    QTest::addColumn<bool>("typesText");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("cursor");

    QTest::newRow("byte") << false << u"4a"_s << QByteArray("aJcdef") << 2;
    QTest::newRow("two-bytes") << false << u"4A4b"_s << QByteArray("aJKdef") << 3;
    QTest::newRow("zero") << false << u"00"_s << QByteArray("a\0cdef", 6) << 2;
    QTest::newRow("high") << false << u"fF"_s
                          << QByteArray("a\xFF"
                                        "cdef")
                          << 2;
    QTest::newRow("half") << false << u"4"_s << QByteArray("abcdef") << 1;
    QTest::newRow("text") << true << u"X Y"_s << QByteArray("aX Yef") << 4;
    QTest::newRow("text-of-digits") << true << u"4a"_s << QByteArray("a4adef") << 3;
    QTest::newRow("to-the-end") << true << u"VWXYZ"_s << QByteArray("aVWXYZ") << 5;
}

void TestHexEditing::typing()
{
    QFETCH(bool, typesText);
    QFETCH(QString, keys);
    m_model->setBytes("abcdef");
    m_model->setCursor(1);
    m_editing->setTypesText(typesText);
    type(keys);
    QTEST(bytes(), "bytes");
    QTEST(m_model->cursor(), "cursor");
}

void TestHexEditing::typingRefused_data()
{
    QTest::addColumn<bool>("typesText");
    QTest::addColumn<QString>("key");

    const QStringList neither{u""_s, u"\u00E9"_s, u"\t"_s, u"\x7F"_s, u"ab"_s, u"\u0664"_s, u"\u20AC"_s};
    for (const QString &key : neither + QStringList{u"g"_s, u" "_s, u"-"_s, u"+1"_s, u"0x"_s})
        QTest::addRow("hex %s", qPrintable(key)) << false << key;
    for (const QString &key : neither)
        QTest::addRow("text %s", qPrintable(key)) << true << key;
}

void TestHexEditing::typingRefused()
{
    QFETCH(bool, typesText);
    QFETCH(QString, key);
    m_model->setBytes("abcdef");
    m_editing->setTypesText(typesText);
    QVERIFY(!m_editing->type(key));
    QCOMPARE(bytes(), QByteArray("abcdef"));
    QCOMPARE(m_model->cursor(), 0);
    QCOMPARE(m_state->status(),
             typesText ? u"Only printable ASCII characters can be typed."_s
                       : u"Type hex digits here, or press Tab to type text."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QVERIFY(!m_editing->canUndo());
}

void TestHexEditing::firstDigitWaits()
{
    m_model->setBytes("abcdef");
    QSignalSpy typing(m_editing, &HexEditing::typingChanged);
    type(u"a"_s);
    QCOMPARE(m_editing->pendingDigit(), u"A"_s);
    QCOMPARE(typing.count(), 1);
    QVERIFY(!m_editing->type(u"x"_s));
    QCOMPARE(m_editing->pendingDigit(), u"A"_s);
    QVERIFY(m_editing->takeBackDigit());
    QVERIFY(!m_editing->takeBackDigit());
    QCOMPARE(m_editing->pendingDigit(), QString());
    type(u"42"_s);
    QCOMPARE(bytes(), QByteArray("Bbcdef"));
}

void TestHexEditing::firstDigitIsDropped_data()
{
    QTest::addColumn<std::function<void(AppState &)>>("action");
    const auto row = [](const char *name, const std::function<void(AppState &)> &action) {
        QTest::newRow(name) << action;
    };
    row("move", [](AppState &state) { state.hexModel()->moveCursor(HexModel::Right, 1); });
    row("click", [](AppState &state) { state.hexModel()->clickRow(1); });
    row("select", [](AppState &state) { state.hexEditing()->selectAll(); });
    row("column", [](AppState &state) { state.hexEditing()->setTypesText(true); });
    row("copy", [](AppState &state) { state.hexEditing()->copy(HexEditing::AsHex); });
    row("undo", [](AppState &state) { state.hexEditing()->undo(); });
    row("find", [](AppState &state) { state.hexFind(u"y"_s); });
    row("go-to", [](AppState &state) { state.hexGoTo(u"5"_s); });
    row("patch", [](AppState &state) { state.hexPatch(u"'"_s); });
    row("open", [](AppState &state) { state.hexModel()->setBytes("other"); });
}

void TestHexEditing::firstDigitIsDropped()
{
    QFETCH(std::function<void(AppState &)>, action);
    m_model->setBytes("xxxxxxxxxxxxxxxxxxxxy");
    type(u"4"_s);
    action(*m_state);
    QCOMPARE(m_editing->pendingDigit(), QString());
}

void TestHexEditing::typingStopsAtTheEnd()
{
    m_model->setBytes("abc");
    m_model->setCursor(2);
    type(u"4A"_s);
    QVERIFY(!m_editing->type(u"4"_s));
    QCOMPARE(m_state->status(), u"The end of the file is reached."_s);
    QCOMPARE(bytes(), QByteArray("abJ"));
    // Whoever goes there again means it.
    m_editing->endTyping();
    type(u"4B"_s);
    QCOMPARE(bytes(), QByteArray("abK"));
}

void TestHexEditing::typingBeginsAtTheSelection()
{
    m_model->setBytes("abcdef");
    m_model->setCursor(2);
    m_model->selectTo(4);
    m_editing->setTypesText(true);
    type(u"XY"_s);
    QCOMPARE(bytes(), QByteArray("abXYef"));
    QCOMPARE(m_model->selectionLength(), 0);
}

void TestHexEditing::runIsOneStep()
{
    m_model->setBytes("abcdef");
    m_editing->setTypesText(true);
    QSignalSpy undoChanged(m_editing, &HexEditing::undoChanged);
    type(u"VWX"_s);
    QVERIFY(m_editing->canUndo());
    QVERIFY(undoChanged.count() > 0);
    m_editing->undo();
    QCOMPARE(m_state->status(), u"Undid 3 bytes at 0x0."_s);
    QCOMPARE(bytes(), QByteArray("abcdef"));
    QCOMPARE(m_model->cursor(), 0);
    QVERIFY(!m_editing->canUndo());
    m_editing->redo();
    QCOMPARE(m_state->status(), u"Redid 3 bytes at 0x0."_s);
    QCOMPARE(bytes(), QByteArray("VWXdef"));
}

void TestHexEditing::movingEndsTheRun()
{
    m_model->setBytes("abcdef");
    m_editing->setTypesText(true);
    type(u"V"_s);
    m_model->moveCursor(HexModel::Right, 1);
    m_model->moveCursor(HexModel::Left, 1);
    type(u"W"_s);
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("Vbcdef"));
}

void TestHexEditing::everyChangeIsAStep()
{
    m_model->setBytes("abcdef");
    m_state->hexPatch(u"x!"_s);
    m_state->hexPatch(u"y"_s);
    m_model->select(3, 2);
    m_editing->fill(u"z"_s);
    QGuiApplication::clipboard()->setText(u"last"_s);
    m_model->setCursor(2);
    m_editing->paste();
    QCOMPARE(bytes(), QByteArray("y!last"));
    for (const QByteArray &before : {QByteArray("y!czzf"), QByteArray("y!cdef"), QByteArray("x!cdef")}) {
        m_editing->undo();
        QCOMPARE(bytes(), before);
    }
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("abcdef"));
    QVERIFY(!m_editing->canUndo());
}

void TestHexEditing::bytesTypedAsTheyAreStayInTheRun()
{
    m_model->setBytes("abcdef");
    m_editing->setTypesText(true);
    type(u"XbZ"_s);
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("abcdef"));
    m_editing->redo();
    QCOMPARE(bytes(), QByteArray("XbZdef"));
    m_model->setCursor(0);
    type(u"X"_s);
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("abcdef"));
}

void TestHexEditing::undoAndRedo()
{
    m_model->setBytes("abcdef");
    for (int i = 0; i < 3; ++i) {
        m_model->setCursor(i);
        m_state->hexPatch(u"!"_s);
    }
    m_editing->undo();
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("!bcdef"));
    QCOMPARE(m_model->cursor(), 1);
    m_editing->redo();
    QCOMPARE(bytes(), QByteArray("!!cdef"));
    QVERIFY(m_editing->canUndo());
    QVERIFY(m_editing->canRedo());
}

void TestHexEditing::nothingToUndo()
{
    m_model->setBytes("abcdef");
    m_editing->undo();
    QCOMPARE(m_state->status(), u"Nothing to undo."_s);
    m_editing->redo();
    QCOMPARE(m_state->status(), u"Nothing to redo."_s);
    QCOMPARE(m_state->statusOK(), 0);
}

void TestHexEditing::undoGoesBeyondWriteBackAndSave()
{
    const QString path = m_folder->filePath(u"truck.kvt"_s);
    m_model->setBytes("abcdef");
    m_state->hexPatch(u"!"_s);
    m_state->hexWriteBack();
    m_state->saveKvt(path);
    QCOMPARE(m_state->status(), u"Saved."_s);
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("abcdef"));
    QCOMPARE(m_editing->changesText(), u"1 byte changed in 1 place"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("!bcdef"));
}

void TestHexEditing::openingAFileForgetsTheSteps()
{
    m_model->setBytes("abcdef");
    m_state->hexPatch(u"!"_s);
    m_model->setBytes("abcdef");
    QVERIFY(!m_editing->canUndo());
    QCOMPARE(m_editing->changedBytes(), 0);
}

void TestHexEditing::changeAfterUndoForgetsWhatWasUndone()
{
    m_model->setBytes("abcdef");
    m_state->hexPatch(u"!"_s);
    m_editing->undo();
    m_state->hexPatch(u"?"_s);
    QVERIFY(!m_editing->canRedo());
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray("abcdef"));
}

void TestHexEditing::randomEditsUndone()
{
    QRandomGenerator random(1);
    const QByteArray original(100, 'a');
    m_model->setBytes(original);
    for (int i = 0; i < 500; ++i) {
        m_model->setCursor(random.bounded(100));
        m_editing->setTypesText(random.bounded(2) == 0);
        switch (random.bounded(4)) {
        case 0:
            m_editing->type(QString(QChar('a' + random.bounded(6))));
            break;
        case 1:
            m_state->hexPatch(u"xy"_s);
            break;
        case 2:
            m_model->selectTo(random.bounded(100));
            m_editing->fill(u"01 02 03"_s);
            break;
        default:
            m_editing->undo();
            break;
        }
    }
    const QByteArray edited = bytes();
    while (m_editing->canUndo())
        m_editing->undo();
    QCOMPARE(bytes(), original);
    QCOMPARE(m_editing->changedBytes(), 0);
    while (m_editing->canRedo())
        m_editing->redo();
    QCOMPARE(bytes().size(), edited.size());
}

void TestHexEditing::copy_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<HexEditing::Format>("format");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("status");

    const QString three = u"3 bytes copied."_s;
    QTest::newRow("hex") << 3 << HexEditing::AsHex << u"62 00 64"_s << three;
    QTest::newRow("text") << 3 << HexEditing::AsText << u"b.d"_s << three;
    QTest::newRow("array") << 3 << HexEditing::AsCArray
                           << u"const unsigned char bytes[3] = {\n    0x62, 0x00, 0x64,\n};\n"_s << three;
    QTest::newRow("offset") << 3 << HexEditing::AsOffset << u"0x1:0x3"_s << u"Offset copied."_s;
    QTest::newRow("no-selection") << 0 << HexEditing::AsHex << u"62"_s << u"1 byte copied."_s;
    QTest::newRow("offset-of-the-cursor") << 0 << HexEditing::AsOffset << u"0x1"_s << u"Offset copied."_s;
}

void TestHexEditing::copy()
{
    QFETCH(int, length);
    QFETCH(HexEditing::Format, format);
    m_model->setBytes(QByteArray("ab\0def", 6));
    m_model->setCursor(1);
    if (length > 0)
        QVERIFY(m_model->select(1, length));
    m_editing->copy(format);
    QTEST(clipboardText(), "text");
    QTEST(m_state->status(), "status");
}

void TestHexEditing::copyTooMuch()
{
    QGuiApplication::clipboard()->setText(u"before"_s);
    m_model->setBytes(QByteArray((16 << 20) + 1, 'x'));
    m_editing->selectAll();
    for (const auto format : {HexEditing::AsHex, HexEditing::AsText, HexEditing::AsCArray}) {
        m_editing->copy(format);
        QCOMPARE(m_state->status(), u"Too much to copy: at most 16 MiB at once."_s);
        QCOMPARE(clipboardText(), u"before"_s);
    }
    m_editing->copy(HexEditing::AsOffset);
    QCOMPARE(clipboardText(), u"0x0:0x1000001"_s);
}

void TestHexEditing::paste_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("status");

    const QByteArray same("abcdef");
    QTest::newRow("hex") << u"41 42"_s << 0 << QByteArray("abABef") << u"Pasted 2 bytes."_s;
    QTest::newRow("text") << u"X!"_s << 0 << QByteArray("abX!ef") << u"Pasted 2 bytes."_s;
    QTest::newRow("at-the-selection") << u"X!"_s << 3 << QByteArray("abX!ef") << u"Pasted 2 bytes."_s;
    QTest::newRow("beyond-the-selection") << u"WXYZ"_s << 2 << QByteArray("abWXYZ") << u"Pasted 4 bytes."_s;
    QTest::newRow("to-the-end") << u"WXYZ"_s << 0 << QByteArray("abWXYZ") << u"Pasted 4 bytes."_s;
    QTest::newRow("past-the-end") << u"VWXYZ"_s << 0 << same
                                  << u"Does not fit: 5 bytes at 0x2, where only 4 bytes are left."_s;
    QTest::newRow("far-past-the-end")
        << QString(1'000'000, 'x'_L1) << 0 << same
        << u"Does not fit: 1000000 bytes at 0x2, where only 4 bytes are left."_s;
    QTest::newRow("empty") << u""_s << 0 << same << u"The clipboard holds no text to paste."_s;
    QTest::newRow("null") << QString(QChar(0)) << 0 << QByteArray("ab\0def", 6) << u"Pasted 1 byte."_s;
    QTest::newRow("half-a-pair") << QString(QChar(0xDC00)) << 0 << same
                                 << u"The clipboard holds no text to paste."_s;
}

void TestHexEditing::paste()
{
    QFETCH(QString, text);
    QFETCH(int, selected);
    m_model->setBytes("abcdef");
    m_model->setCursor(2);
    if (selected > 0)
        m_model->selectTo(1 + selected);
    QGuiApplication::clipboard()->setText(text);
    m_editing->paste();
    QTEST(bytes(), "bytes");
    QTEST(m_state->status(), "status");
    QCOMPARE(m_state->statusOK(), bytes() == "abcdef" ? 0 : 1);
    QCOMPARE(m_editing->canUndo(), bytes() != "abcdef");
}

void TestHexEditing::pasteOfWhatIsNoText()
{
    m_model->setBytes("abcdef");
    auto *const data = new QMimeData;
    data->setData(u"application/octet-stream"_s, QByteArray(100, '\0'));
    QGuiApplication::clipboard()->setMimeData(data);
    m_editing->paste();
    QCOMPARE(m_state->status(), u"The clipboard holds no text to paste."_s);
    QCOMPARE(bytes(), QByteArray("abcdef"));
}

void TestHexEditing::fill_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("status");

    const QByteArray same("abcdef");
    QTest::newRow("byte") << 3 << u"58"_s << QByteArray("aXXXef") << u"Filled 3 bytes."_s;
    QTest::newRow("pattern") << 3 << u"XY"_s << QByteArray("aXYXef") << u"Filled 3 bytes."_s;
    QTest::newRow("longer-pattern") << 2 << u"WXYZ"_s << QByteArray("aWXdef") << u"Filled 2 bytes."_s;
    QTest::newRow("to-the-end") << 5 << u"X"_s << QByteArray("aXXXXX") << u"Filled 5 bytes."_s;
    QTest::newRow("no-selection") << 0 << u"X"_s << same << u"Select the bytes to fill first."_s;
    QTest::newRow("no-pattern") << 3 << u" "_s << same << u"Enter the byte or pattern to fill with."_s;
}

void TestHexEditing::fill()
{
    QFETCH(int, length);
    QFETCH(QString, query);
    m_model->setBytes("abcdef");
    m_model->setCursor(1);
    if (length > 0)
        QVERIFY(m_model->select(1, length));
    m_editing->fill(query);
    QTEST(bytes(), "bytes");
    QTEST(m_state->status(), "status");
    QCOMPARE(m_model->selectionLength(), length);
}

void TestHexEditing::xorWith_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("status");

    const QByteArray same("00 0F F0 FF 80");
    QTest::newRow("byte") << 3 << u"FF"_s << QByteArray("00 F0 0F 00 80") << u"Changed 3 bytes by XOR."_s;
    QTest::newRow("pattern") << 4 << u"01 80"_s << QByteArray("00 0E 70 FE 00")
                             << u"Changed 4 bytes by XOR."_s;
    QTest::newRow("no-selection") << 0 << u"FF"_s << same << u"Select the bytes to fill first."_s;
    QTest::newRow("no-pattern") << 2 << QString() << same << u"Enter the byte or pattern to fill with."_s;
}

void TestHexEditing::xorWith()
{
    QFETCH(int, length);
    QFETCH(QString, query);
    QFETCH(QByteArray, hex);
    const QByteArray before = QByteArray::fromHex("00 0F F0 FF 80");
    m_model->setBytes(before);
    if (length > 0)
        QVERIFY(m_model->select(1, length));
    m_editing->xorWith(query);
    QCOMPARE(bytes(), QByteArray::fromHex(hex));
    QTEST(m_state->status(), "status");
    // Twice is not at all, and so is undone.
    m_editing->xorWith(query);
    QCOMPARE(bytes(), before);
    while (m_editing->canUndo())
        m_editing->undo();
    QCOMPARE(bytes(), before);
}

void TestHexEditing::pasteFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("status");

    QTest::newRow("fits") << QByteArray("0A") << QByteArray("ab0Aef") << u"Pasted 2 bytes."_s;
    QTest::newRow("to-the-end") << QByteArray("WXYZ") << QByteArray("abWXYZ") << u"Pasted 4 bytes."_s;
    QTest::newRow("too-long") << QByteArray("VWXYZ") << QByteArray("abcdef")
                              << u"Does not fit: 5 bytes at 0x2, where only 4 bytes are left."_s;
    QTest::newRow("empty") << QByteArray() << QByteArray("abcdef") << u"Could not read file."_s;
}

void TestHexEditing::pasteFile()
{
    QFETCH(QByteArray, content);
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"part.bin"_s));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    m_model->setBytes("abcdef");
    m_model->setCursor(2);
    m_editing->pasteFile(file.fileName());
    QTEST(bytes(), "bytes");
    QTEST(m_state->status(), "status");
    m_editing->pasteFile(folder.filePath(u"none"_s));
    QCOMPARE(m_state->status(), u"No such file or directory"_s);
}

void TestHexEditing::saveSelection()
{
    const QTemporaryDir folder;
    const QString open = folder.filePath(u"open.kvt"_s);
    const QString part = folder.filePath(u"part.bin"_s);
    QFile file(open);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("abcdef") == 6);
    file.close();
    m_state->openKvt(open);
    m_state->hexSaveSelection(part);
    QCOMPARE(m_state->status(), u"Select the bytes to save first."_s);
    QVERIFY(!QFile::exists(part));
    QVERIFY(m_model->select(1, 3));
    m_state->hexSaveSelection(part);
    QCOMPARE(m_state->status(), u"Saved 3 bytes as part.bin."_s);
    QCOMPARE(FileTools::readFile(part), QByteArray("bcd"));
    // The open file keeps its length, also by another name.
    QVERIFY(QFile::link(open, folder.filePath(u"link.kvt"_s)));
    for (const QString &path : {open, folder.filePath(u"link.kvt"_s)}) {
        m_state->hexSaveSelection(path);
        QCOMPARE(m_state->status(), u"That is the open file: choose another one."_s);
        QCOMPARE(m_state->statusOK(), 0);
    }
    QCOMPARE(FileTools::readFile(open), QByteArray("abcdef"));
    m_state->hexSaveSelection(folder.path());
    QCOMPARE(m_state->status(), u"Is a directory"_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(m_state->fileName(), u"open.kvt"_s);
}

void TestHexEditing::replaceAll_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("status");

    const QByteArray same("xyzxyzxy");
    QTest::newRow("all") << u"xy"_s << u"UV"_s << 0 << QByteArray("UVzUVzUV") << u"Replaced 3 matches."_s;
    QTest::newRow("hex") << u"79 7A"_s << u"00 FF"_s << 0 << QByteArray::fromHex("7800FF7800FF7879")
                         << u"Replaced 2 matches."_s;
    QTest::newRow("selection") << u"xy"_s << u"UV"_s << 5 << QByteArray("xyzUVzxy") << u"Replaced 1 match."_s;
    QTest::newRow("by-itself") << u"xy"_s << u"xy"_s << 0 << same << u"Replaced 3 matches."_s;
    QTest::newRow("absent") << u"w"_s << u"y"_s << 0 << same << u"Not found."_s;
    QTest::newRow("no-query") << u" "_s << u"UV"_s << 0 << same << u"Enter hex or ASCII to search."_s;
    QTest::newRow("no-patch") << u"y"_s << u""_s << 0 << same
                              << u"Enter a patch of 1 byte, as long as what it replaces."_s;
    QTest::newRow("longer") << u"xy"_s << u"UVW"_s << 0 << same
                            << u"Enter a patch of 2 bytes, as long as what it replaces."_s;
}

void TestHexEditing::replaceAll()
{
    QFETCH(QString, query);
    QFETCH(QString, replacement);
    QFETCH(int, selected);
    m_model->setBytes("xyzxyzxy");
    if (selected > 0)
        QVERIFY(m_model->select(1, selected));
    m_editing->replaceAll(query, replacement);
    QTEST(bytes(), "bytes");
    QTEST(m_state->status(), "status");
    QCOMPARE(m_state->statusOK(), m_state->status().startsWith(u"Replaced"_s) ? 1 : 0);
    // All of it is one step.
    if (m_editing->canUndo())
        m_editing->undo();
    QCOMPARE(bytes(), QByteArray("xyzxyzxy"));
    QVERIFY(!m_editing->canUndo());
}

void TestHexEditing::writeValue()
{
    const QByteArray before = QByteArray::fromHex("00 11 22 33");
    m_model->setBytes(before);
    // Where the cursor is, not where a selection begins.
    m_model->selectTo(1);
    QVERIFY(m_editing->writeValue(2, u"258"_s, true));
    QCOMPARE(bytes(), QByteArray::fromHex("00 01 02 33"));
    QCOMPARE(m_state->status(), u"UInt16 set at 0x1."_s);
    QCOMPARE(m_state->statusOK(), 1);
    m_editing->undo();
    QCOMPARE(bytes(), before);
    m_model->setCursor(2);
    QVERIFY(!m_editing->writeValue(2, u"65536"_s, false));
    QCOMPARE(m_state->status(), u"Not a value of type UInt16: 65536"_s);
    QCOMPARE(m_state->statusOK(), 0);
    // No row, and none that fits.
    for (const int row : {-1, 4, 99})
        QVERIFY(!m_editing->writeValue(row, u"1"_s, false));
    // A dot that stands for another byte is not written as one.
    m_model->setCursor(0);
    QVERIFY(m_editing->writeValue(11, u"."_s, false));
    QCOMPARE(bytes(), before);
}

void TestHexEditing::selectAll()
{
    m_model->setBytes("abcdef");
    m_editing->selectAll();
    QCOMPARE(m_model->selectionStart(), 0);
    QCOMPARE(m_model->selectionLength(), 6);
    QCOMPARE(m_editing->selectionText(), u"Selected 0x0\u20130x5, 6 bytes"_s);
    m_model->setCursor(0);
    QCOMPARE(m_editing->selectionText(), QString());
}

void TestHexEditing::changes()
{
    m_model->setBytes(QByteArray(100, 'a'));
    QCOMPARE(m_editing->changesText(), QString());
    QSignalSpy changed(m_editing, &HexEditing::changesChanged);
    QVERIFY(m_model->applyPatch(10, "bb"));
    QVERIFY(m_model->applyPatch(50, "b"));
    QCOMPARE(changed.count(), 2);
    QCOMPARE(m_editing->changesText(), u"3 bytes changed in 2 places"_s);
    QVERIFY(m_model->applyPatch(50, "a"));
    QCOMPARE(m_editing->changesText(), u"2 bytes changed in 1 place"_s);
}

void TestHexEditing::changesCountFromTheSave()
{
    m_model->setBytes("abcdef");
    m_state->hexPatch(u"!"_s);
    m_state->saveKvt(m_folder->path());
    QCOMPARE(m_editing->changedBytes(), 1);
    m_state->hexWriteBack();
    QCOMPARE(m_editing->changedBytes(), 1);
    m_state->saveKvt(m_folder->filePath(u"truck.kvt"_s));
    QCOMPARE(m_editing->changedBytes(), 0);
}

void TestHexEditing::goesToChanges()
{
    m_model->setBytes(QByteArray(100, 'a'));
    m_editing->nextChange();
    QCOMPARE(m_state->status(), u"No byte has changed."_s);
    QVERIFY(m_model->applyPatch(10, "bb"));
    QVERIFY(m_model->applyPatch(50, "b"));
    m_editing->nextChange();
    QCOMPARE(m_state->status(), u"Change 1 of 2: 2 bytes at 0xA."_s);
    QCOMPARE(m_model->cursor(), 10);
    QCOMPARE(m_model->selectionLength(), 2);
    m_editing->nextChange();
    QCOMPARE(m_state->status(), u"Change 2 of 2: 1 byte at 0x32."_s);
    m_editing->nextChange();
    QCOMPARE(m_model->selectionStart(), 10);
    m_editing->previousChange();
    QCOMPARE(m_model->selectionStart(), 50);
    m_editing->previousChange();
    QCOMPARE(m_model->selectionStart(), 10);
}

void TestHexEditing::goesToDifferences()
{
    m_model->setBytes(QByteArray(100, 'a'));
    m_editing->nextDifference();
    QCOMPARE(m_state->status(), u"Compare with a file first."_s);
    QByteArray other(100, 'a');
    other[10] = other[11] = other[50] = 'b';
    compareWith(other);
    m_editing->nextDifference();
    QCOMPARE(m_state->status(), u"Difference 1 of 2: 2 bytes at 0xA."_s);
    m_editing->nextDifference();
    QCOMPARE(m_state->status(), u"Difference 2 of 2: 1 byte at 0x32."_s);
    m_editing->previousDifference();
    QCOMPARE(m_model->selectionStart(), 10);
    QCOMPARE(m_model->selectionLength(), 2);
    m_editing->showDifference(1);
    QCOMPARE(m_model->selectionStart(), 50);
    for (const int index : {-1, 2}) {
        m_editing->showDifference(index);
        QCOMPARE(m_model->selectionStart(), 50);
    }
    // A place at the cursor comes first.
    m_model->setCursor(10);
    m_editing->nextDifference();
    QCOMPARE(m_model->selectionStart(), 10);
    m_model->setCursor(11);
    m_editing->nextDifference();
    QCOMPARE(m_model->selectionStart(), 50);
}

void TestHexEditing::takeOver()
{
    m_model->setBytes(QByteArray(20, 'a'));
    compareWith("aabbaaaaaabbbbbbbbbbbbbb");
    m_model->setCursor(3);
    m_editing->takeOver();
    QCOMPARE(m_state->status(), u"Took over 2 bytes at 0x2."_s);
    QCOMPARE(bytes(), QByteArray("aabb") + QByteArray(16, 'a'));
    QCOMPARE(m_editing->compare()->places(), 1);
    QVERIFY(m_model->select(8, 4));
    m_editing->takeOver();
    QCOMPARE(bytes(), QByteArray("aabbaaaaaabbaaaaaaaa"));
    m_editing->undo();
    m_editing->undo();
    QCOMPARE(bytes(), QByteArray(20, 'a'));
}

void TestHexEditing::takeOverRefused()
{
    m_model->setBytes(QByteArray(20, 'a'));
    m_editing->takeOver();
    QCOMPARE(m_state->status(), u"Compare with a file first."_s);
    compareWith("aabb");
    m_editing->takeOver();
    QCOMPARE(m_state->status(), u"Select bytes, or move the cursor to a difference."_s);
    QVERIFY(m_model->select(3, 2));
    m_editing->takeOver();
    QCOMPARE(m_state->status(), u"The other file ends before that."_s);
    QCOMPARE(bytes(), QByteArray(20, 'a'));
    // Beyond the shorter one's end.
    m_model->setCursor(19);
    m_editing->takeOver();
    QCOMPARE(m_state->status(), u"Select bytes, or move the cursor to a difference."_s);
}

void TestHexEditing::targets()
{
    m_model->setBytes(QByteArray(100, 'a'));
    for (int i = 1; i <= 12; ++i)
        QVERIFY(m_state->hexGoTo(QString::number(i, 16)));
    QVERIFY(m_state->hexGoTo(u" 8 "_s));
    QVERIFY(!m_state->hexGoTo(u"100"_s));
    QCOMPARE(m_editing->targets(),
             QStringList({u"8"_s, u"c"_s, u"b"_s, u"a"_s, u"9"_s, u"7"_s, u"6"_s, u"5"_s, u"4"_s, u"3"_s}));
}

void TestHexEditing::bookmarks()
{
    QSignalSpy changed(m_editing, &HexEditing::bookmarksChanged);
    m_model->setBytes(QByteArray(100, 'a'));
    m_editing->nextBookmark();
    QCOMPARE(m_state->status(), u"No bookmark is set."_s);
    QCOMPARE(m_state->statusOK(), 0);
    m_model->setCursor(0x1D);
    m_editing->toggleBookmark();
    QCOMPARE(m_state->status(), u"Bookmark set at 0x1D."_s);
    QVERIFY(m_model->select(5, 3));
    m_editing->toggleBookmark();
    QCOMPARE(m_editing->bookmarks(), QStringList({u"0x5"_s, u"0x1D"_s}));
    // Each can be gone to as it is listed.
    QVERIFY(m_state->hexGoTo(m_editing->bookmarks().constLast()));
    QCOMPARE(m_model->cursor(), 0x1D);
    m_editing->toggleBookmark();
    QCOMPARE(m_state->status(), u"Bookmark removed at 0x1D."_s);
    QCOMPARE(m_editing->bookmarks(), QStringList(u"0x5"_s));
    QCOMPARE(changed.count(), 3);
    QVERIFY(m_model->applyPatch(5, "b"));
    QCOMPARE(m_editing->bookmarks().size(), 1);
    m_model->setBytes(QByteArray(100, 'b'));
    QCOMPARE(m_editing->bookmarks(), QStringList());
    QCOMPARE(changed.count(), 4);
}

void TestHexEditing::bookmarksInTurn_data()
{
    QTest::addColumn<int>("cursor");
    QTest::addColumn<int>("next");
    QTest::addColumn<int>("previous");

    QTest::newRow("before-the-first") << 0 << 10 << 30;
    QTest::newRow("at-the-first") << 10 << 20 << 30;
    QTest::newRow("between") << 15 << 20 << 10;
    QTest::newRow("at-one") << 20 << 30 << 10;
    QTest::newRow("at-the-last") << 30 << 10 << 20;
    QTest::newRow("behind-the-last") << 99 << 10 << 30;
}

void TestHexEditing::bookmarksInTurn()
{
    QFETCH(int, cursor);
    QFETCH(int, next);
    QFETCH(int, previous);

    m_model->setBytes(QByteArray(100, 'a'));
    for (const int offset : {20, 10, 30}) {
        m_model->setCursor(offset);
        m_editing->toggleBookmark();
    }
    QSignalSpy shown(m_editing, &HexEditing::shown);
    m_model->setCursor(cursor);
    m_editing->nextBookmark();
    QCOMPARE(m_model->cursor(), next);
    QCOMPARE(
        m_state->status(),
        u"Bookmark %1 of 3 at 0x%2."_s.arg(QString::number(next / 10), QString::number(next, 16).toUpper()));
    m_model->setCursor(cursor);
    m_editing->previousBookmark();
    QCOMPARE(m_model->cursor(), previous);
    QCOMPARE(m_state->statusOK(), 1);
    QCOMPARE(shown.count(), 2);
}

void TestHexEditing::marks()
{
    m_model->setBytes(QByteArray(40, 'a'));
    compareWith(QByteArray(18, 'a') + "b");
    QVERIFY(m_model->applyPatch(15, "xy"));
    m_state->hexFind(u"xy"_s);
    QVERIFY(m_model->select(14, 20));
    const QList<HexRowMarks> marks = m_editing->marks(0, 4);
    QCOMPARE(marks.size(), 4);
    QCOMPARE(marks[0], (HexRowMarks{0xC000, 0x8000, 0x8000, 0x8000, 0}));
    QCOMPARE(marks[1], (HexRowMarks{0xFFFF, 0x0001, 0x0001, 0x0005, 0}));
    QCOMPARE(marks[2], (HexRowMarks{0x0003, 0, 0, 0, 0}));
    QCOMPARE(marks[3], HexRowMarks());
    for (const int offset : {0, 15, 16}) {
        m_model->setCursor(offset);
        m_editing->toggleBookmark();
    }
    QCOMPARE(m_editing->marks(0, 1).constFirst().bookmarked, 0x8001);
    QCOMPARE(m_editing->marks(1, 2).constFirst().bookmarked, 0x0001);
    QCOMPARE(m_editing->marks(2, 1).constFirst().bookmarked, 0);

    QSignalSpy changed(m_editing, &HexEditing::marksChanged);
    m_model->selectTo(12);
    QVERIFY(changed.count() > 0);
}

void TestHexEditing::preparedFileIsNotCopiedByAnEdit()
{
    const QByteArray opened(20'000'000, 'a');
    m_model->setBytes(opened);
    m_state->setShowHex(true);
    const auto data = [this] { return static_cast<const void *>(m_model->bytes().constData()); };
    WAIT_VERIFY(data() != opened.constData());
    const void *const own = data();
    m_state->hexPatch(u"b"_s);
    QCOMPARE(data(), own);
    QCOMPARE(m_editing->changesText(), u"1 byte changed in 1 place"_s);
    QCOMPARE(bytes(), 'b' + QByteArray(19'999'999, 'a'));
    QCOMPARE(opened.front(), 'a');
}

void TestHexEditing::editWhilePreparing()
{
    m_model->setBytes(QByteArray(20'000'000, 'a'));
    m_state->setShowHex(true);
    m_state->hexPatch(u"b"_s);
    m_state->setShowHex(false);
    m_state->setShowHex(true);
    m_model->setBytes("other");
    m_state->setShowHex(false);
    QCoreApplication::processEvents();
    QCOMPARE(bytes(), QByteArray("other"));
}

// Counting, comparing and copying, when the window closes.
void TestHexEditing::destroyedWhileWorking()
{
    m_model->setBytes(QByteArray(50'000'000, '\0'));
    compareWith(QByteArray(50'000'000, '\1'));
    m_state->hexFind(u"00 00"_s);
    m_model->setBytes(QByteArray(50'000'000, '\0'));
    m_state->hexFind(u"00 00 00"_s);
    QCoreApplication::sendPostedEvents(m_editing->matches());
    QCoreApplication::sendPostedEvents(m_editing->compare());
    m_state->setShowHex(true);
    QVERIFY(m_editing->compare()->isBusy());
    m_state.reset();
}

void TestHexEditing::withoutFile_data()
{
    QTest::addColumn<std::function<void(HexEditing &)>>("action");
    const auto row = [](const char *name, const std::function<void(HexEditing &)> &action) {
        QTest::newRow(name) << action;
    };
    row("type", [](HexEditing &editing) { editing.type(u"a"_s); });
    row("copy", [](HexEditing &editing) { editing.copy(HexEditing::AsHex); });
    row("copy-offset", [](HexEditing &editing) { editing.copy(HexEditing::AsOffset); });
    row("paste", [](HexEditing &editing) { editing.paste(); });
    row("fill", [](HexEditing &editing) { editing.fill(u"00"_s); });
    row("write-value", [](HexEditing &editing) { editing.writeValue(0, u"1"_s, false); });
    row("xor", [](HexEditing &editing) { editing.xorWith(u"00"_s); });
    row("paste-file", [](HexEditing &editing) { editing.pasteFile(u"/dev/null"_s); });
    row("select-all", [](HexEditing &editing) { editing.selectAll(); });
    row("toggle-bookmark", [](HexEditing &editing) { editing.toggleBookmark(); });
    row("next-bookmark", [](HexEditing &editing) { editing.nextBookmark(); });
    row("previous-bookmark", [](HexEditing &editing) { editing.previousBookmark(); });
    row("next-change", [](HexEditing &editing) { editing.nextChange(); });
    row("previous-change", [](HexEditing &editing) { editing.previousChange(); });
    row("next-difference", [](HexEditing &editing) { editing.nextDifference(); });
    row("previous-difference", [](HexEditing &editing) { editing.previousDifference(); });
    row("show-difference", [](HexEditing &editing) { editing.showDifference(0); });
    row("take-over", [](HexEditing &editing) { editing.takeOver(); });
}

void TestHexEditing::withoutFile()
{
    QFETCH(std::function<void(HexEditing &)>, action);
    QGuiApplication::clipboard()->setText(u"00"_s);
    action(*m_editing);
    QCOMPARE(m_state->status(), u"No file is open."_s);
    QCOMPARE(m_state->statusOK(), 0);
    QCOMPARE(bytes(), QByteArray());
    QCOMPARE(clipboardText(), u"00"_s);
}

KVTEDITOR_TEST_MAIN(TestHexEditing)
#include "tst_HexEditing.moc"
