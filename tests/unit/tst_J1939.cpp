#include "app/AppState.h"
#include "core/FileTools.h"
#include "support/TestMain.h"

#include <QHash>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// A fault as text, with every field of it.
QString described(const J1939Fault &fault)
{
    return u"%1/%2/%3/%4/%5/%6"_s.arg(QString::number(fault.spn), QString::number(fault.fmi),
                                      QString::number(fault.oc), QString::number(fault.lamp), fault.raw,
                                      fault.fmiText);
}

QStringList described(const QList<J1939Fault> &faults)
{
    QStringList texts;
    for (const J1939Fault &fault : faults) {
        texts.append(described(fault));
    }
    return texts;
}

QString wording(quint32 fmi)
{
    switch (fmi) {
    case 0:
        return u"above normal (most severe)"_s;
    case 1:
        return u"below normal (most severe)"_s;
    case 2:
        return u"data erratic"_s;
    case 3:
        return u"voltage high"_s;
    case 4:
        return u"voltage low"_s;
    case 5:
        return u"current low"_s;
    case 6:
        return u"current high"_s;
    case 15:
        return u"data valid but above normal"_s;
    case 16:
        return u"data valid but below normal"_s;
    case 31:
        return u"condition exists"_s;
    default:
        return u"FMI "_s + QString::number(fmi);
    }
}

/// Reads each code as one 32-bit word in the order of transmission and picks its fields from there.
QStringList decodedByWords(const QByteArray &message)
{
    QStringList texts;
    for (qsizetype at = 2; message.size() >= 6 && at + 4 <= message.size(); at += 4) {
        quint32 word = 0;
        for (qsizetype byte = 0; byte < 4; ++byte) {
            word = word << 8 | static_cast<quint8>(message.at(at + byte));
        }
        const quint32 low = (word >> 24) | (word >> 8 & 0xff00);
        const quint32 spn = low | (word >> 13 & 7) << 16;
        const quint32 fmi = word >> 8 & 31;
        texts.append(u"%1/%2/%3/%4/%5/%6"_s.arg(
            QString::number(spn), QString::number(fmi), QString::number(word & 127),
            QString::number(static_cast<quint8>(message.at(0))),
            QString::number(word, 16).rightJustified(8, u'0').toUpper(), wording(fmi)));
    }
    return texts;
}

QString hexOf(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

QStringList rowTexts(const QVariantList &rows)
{
    QStringList texts;
    for (const QVariant &row : rows) {
        texts.append(row.toMap().value(u"text"_s).toString());
    }
    return texts;
}

} // namespace

class TestJ1939 : public QObject
{
    Q_OBJECT

private slots:
    void decodes_data();
    void decodes();
    void everyFmi_data();
    void everyFmi();
    void countsBytes_data();
    void countsBytes();
    void spnHasNineteenBits_data();
    void spnHasNineteenBits();
    void lampIsThatOfTheMessage();
    void oneMegabyte_data();
    void oneMegabyte();
    void oneMegabyteOfOtherText();
    void randomMessages();

    void rowsAndStatus_data();
    void rowsAndStatus();
    void rowHoldsItsTextOnly();
    void everyCallAnnouncesOnce();
    void rowsAreReadyWhenAnnounced();
};

void TestJ1939::decodes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("faults");

    const QStringList none;
    const QStringList coolant{u"91/3/1/4/5B000301/voltage high"_s};
    QTest::newRow("zeros") << u"FF 00 00 00 00 00"_s
                           << QStringList{u"0/0/0/255/00000000/above normal (most severe)"_s};
    QTest::newRow("blanks") << u"04 FF 5B 00 03 01"_s << coolant;
    QTest::newRow("plain") << u"04FF5B000301"_s << coolant;
    QTest::newRow("lower-case") << u"04ff5b000301"_s << coolant;
    QTest::newRow("mixed-separators") << u"04,FF;5B-00 03 01"_s << coolant;
    QTest::newRow("lines") << u"04\r\nFF\n5B\t00\v03 01\n"_s << coolant;
    QTest::newRow("separators-inside-pairs") << u"0.4.F.F.5.B.0.0.0.3.0.1"_s << coolant;
    QTest::newRow("letters-past-f") << u"g04zFF:5Bh00ghijk03xyz01"_s << coolant;
    QTest::newRow("nul") << u"04FF"_s + QChar(0) + u"5B000301"_s << coolant;
    QTest::newRow("full-width-digits-are-ignored") << u"\uff10\uff1104FF5B000301\uff21"_s << coolant;
    QTest::newRow("arabic-digits-are-ignored") << u"\u0660\u066104FF5B000301"_s << coolant;
    QTest::newRow("astral-letters-are-ignored") << u"\U0001D7D804FF5B000301\U0001F600"_s << coolant;
    // Only the "x" goes, and every pair after a first "0" is formed anew.
    QTest::newRow("0x-keeps-its-zero")
        << u"0x04 0xFF 5B 00 03 01"_s << QStringList{u"23551/0/3/0/FF5B0003/above normal (most severe)"_s};
    QTest::newRow("0x-throughout") << u"0x04 0xFF 0x5B 0x00 0x03 0x01"_s
                                   << QStringList{u"329215/16/0/0/FF05B000/data valid but below normal"_s};
    QTest::newRow("all-ones") << u"0000FFFFFFFF"_s
                              << QStringList{u"524287/31/127/0/FFFFFFFF/condition exists"_s};
    QTest::newRow("conversion-flag-is-ignored")
        << u"0000010000 80"_s << QStringList{u"1/0/0/0/01000080/above normal (most severe)"_s};
    QTest::newRow("odd-first-digit-alone") << u"4FF5B000301"_s << coolant;
    QTest::newRow("odd-eleven-digits-are-six-bytes")
        << u"1 00 00 00 1F 02"_s << QStringList{u"0/31/2/1/00001F02/condition exists"_s};
    QTest::newRow("odd-nine-digits-are-five-bytes") << u"1 00 00 00 1F"_s << none;
    QTest::newRow("empty") << QString() << none;
    QTest::newRow("blank") << u" \n\t"_s << none;
    QTest::newRow("no-hex-digit") << u"xyz, -;: !"_s << none;
    QTest::newRow("one-digit") << u"F"_s << none;
    QTest::newRow("words-contain-hex-digits")
        << u"dead beef cafe"_s << QStringList{u"454590/10/126/222/BEEFCAFE/FMI 10"_s};
}

void TestJ1939::decodes()
{
    QFETCH(QString, text);
    QTEST(described(FileTools::decodeJ1939(text)), "faults");
}

void TestJ1939::everyFmi_data()
{
    QTest::addColumn<int>("fmi");
    QTest::addColumn<QString>("fmiText");

    const QHash<int, QString> named{
        {0, u"above normal (most severe)"_s},
        {1, u"below normal (most severe)"_s},
        {2, u"data erratic"_s},
        {3, u"voltage high"_s},
        {4, u"voltage low"_s},
        {5, u"current low"_s},
        {6, u"current high"_s},
        {15, u"data valid but above normal"_s},
        {16, u"data valid but below normal"_s},
        {31, u"condition exists"_s},
    };
    for (int fmi = 0; fmi < 32; ++fmi) {
        QTest::addRow("%d", fmi) << fmi << named.value(fmi, u"FMI "_s + QString::number(fmi));
    }
}

void TestJ1939::everyFmi()
{
    QFETCH(int, fmi);
    QFETCH(QString, fmiText);
    for (int spnTop = 0; spnTop < 8; ++spnTop) {
        QByteArray message(6, '\0');
        message[4] = static_cast<char>(spnTop << 5 | fmi);
        const QList<J1939Fault> faults = FileTools::decodeJ1939(hexOf(message));
        QCOMPARE(faults.size(), 1);
        QCOMPARE(faults.first().fmi, fmi);
        QCOMPARE(faults.first().spn, spnTop * 65536);
        QCOMPARE(faults.first().fmiText, fmiText);
    }
}

void TestJ1939::countsBytes_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("faults");

    QTest::newRow("0") << 0 << 0;
    QTest::newRow("1") << 1 << 0;
    QTest::newRow("2") << 2 << 0;
    QTest::newRow("5") << 5 << 0;
    QTest::newRow("6") << 6 << 1;
    QTest::newRow("7") << 7 << 1;
    QTest::newRow("8") << 8 << 1;
    QTest::newRow("9") << 9 << 1;
    QTest::newRow("10") << 10 << 2;
    QTest::newRow("13") << 13 << 2;
    QTest::newRow("14") << 14 << 3;
}

void TestJ1939::countsBytes()
{
    QFETCH(int, bytes);
    QFETCH(int, faults);
    for (const char byte : {'\0', '\x5a', '\xff'}) {
        const QList<J1939Fault> decoded = FileTools::decodeJ1939(hexOf(QByteArray(bytes, byte)));
        QCOMPARE(decoded.size(), faults);
        for (const J1939Fault &fault : decoded) {
            QCOMPARE(fault.raw, QString::fromLatin1(QByteArray(4, byte).toHex().toUpper()));
        }
    }
}

void TestJ1939::spnHasNineteenBits_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("spn");

    QTest::newRow("bit-0") << u"01000000"_s << 1;
    QTest::newRow("bit-7") << u"80000000"_s << 128;
    QTest::newRow("bit-8") << u"00010000"_s << 256;
    QTest::newRow("bit-15") << u"00800000"_s << 32768;
    QTest::newRow("bit-16") << u"00002000"_s << 65536;
    QTest::newRow("bit-17") << u"00004000"_s << 131072;
    QTest::newRow("bit-18") << u"00008000"_s << 262144;
    QTest::newRow("fmi-is-not-included") << u"00001FFF"_s << 0;
}

void TestJ1939::spnHasNineteenBits()
{
    QFETCH(QString, code);
    const QList<J1939Fault> faults = FileTools::decodeJ1939(u"0000"_s + code);
    QCOMPARE(faults.size(), 1);
    QTEST(faults.first().spn, "spn");
    QCOMPARE(faults.first().raw, code);
}

void TestJ1939::lampIsThatOfTheMessage()
{
    const QList<J1939Fault> faults = FileTools::decodeJ1939(u"40FF 01020304 81828384 FFFFFFFF"_s);
    QCOMPARE(described(faults),
             QStringList({u"513/3/4/64/01020304/voltage high"_s, u"295553/3/4/64/81828384/voltage high"_s,
                          u"524287/31/127/64/FFFFFFFF/condition exists"_s}));
}

void TestJ1939::oneMegabyte_data()
{
    QTest::addColumn<char>("byte");
    QTest::addColumn<QString>("fault");

    QTest::newRow("all-ff") << '\xff' << u"524287/31/127/255/FFFFFFFF/condition exists"_s;
    QTest::newRow("all-00") << '\0' << u"0/0/0/0/00000000/above normal (most severe)"_s;
}

void TestJ1939::oneMegabyte()
{
    QFETCH(char, byte);
    const QList<J1939Fault> faults = FileTools::decodeJ1939(hexOf(QByteArray(512 * 1024, byte)));
    QCOMPARE(faults.size(), 131071);
    QTEST(described(faults.first()), "fault");
    QTEST(described(faults.last()), "fault");
}

void TestJ1939::oneMegabyteOfOtherText()
{
    QVERIFY(FileTools::decodeJ1939(QString(1024 * 1024, u'x')).isEmpty());
    const QString scattered = QString(500'000, u'-') + u"04FF5B0003"_s + QString(500'000, u' ') + u"01"_s;
    QCOMPARE(described(FileTools::decodeJ1939(scattered)), QStringList{u"91/3/1/4/5B000301/voltage high"_s});
}

void TestJ1939::randomMessages()
{
    QRandomGenerator random(1939);
    for (int round = 0; round < 10'000; ++round) {
        QByteArray message(random.bounded(40), '\0');
        for (char &byte : message) {
            byte = static_cast<char>(random.bounded(256));
        }
        const QString hex = hexOf(message);
        QCOMPARE(described(FileTools::decodeJ1939(hex)), decodedByWords(message));
    }
}

void TestJ1939::rowsAndStatus_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("status");

    QTest::newRow("zeros")
        << u"FF 00 00 00 00 00"_s
        << QStringList{u"SPN 0  FMI 0 (above normal (most severe))  OC 0  lamp 255  [00000000]"_s}
        << u"1 DTC(s)."_s;
    QTest::newRow("coolant") << u"04 FF 5B 00 03 01"_s
                             << QStringList{u"SPN 91  FMI 3 (voltage high)  OC 1  lamp 4  [5B000301]"_s}
                             << u"1 DTC(s)."_s;
    QTest::newRow("fmi-9") << u"00 00 64 00 09 05"_s
                           << QStringList{u"SPN 100  FMI 9 (FMI 9)  OC 5  lamp 0  [64000905]"_s}
                           << u"1 DTC(s)."_s;
    QTest::newRow("two-in-order")
        << u"00 00 FF FF FF FF 01 00 02 03"_s
        << QStringList{u"SPN 524287  FMI 31 (condition exists)  OC 127  lamp 0  [FFFFFFFF]"_s,
                       u"SPN 1  FMI 2 (data erratic)  OC 3  lamp 0  [01000203]"_s}
        << u"2 DTC(s)."_s;
    QTest::newRow("five-bytes") << u"04 FF 5B 00 03"_s << QStringList() << u"0 DTC(s)."_s;
    QTest::newRow("no-hex") << u"% <i>xyz</i>"_s << QStringList() << u"0 DTC(s)."_s;
    QTest::newRow("empty") << QString() << QStringList() << u"0 DTC(s)."_s;
}

void TestJ1939::rowsAndStatus()
{
    QFETCH(QString, text);
    AppState state;
    state.decodeJ1939(text);
    QTEST(rowTexts(state.j1939Rows()), "lines");
    QTEST(state.status(), "status");
    QCOMPARE(state.statusOK(), 1);
}

void TestJ1939::rowHoldsItsTextOnly()
{
    AppState state;
    QCOMPARE(state.j1939Rows(), QVariantList());
    state.decodeJ1939(u"04 FF 5B 00 03 01"_s);
    const QVariantMap row = state.j1939Rows().value(0).toMap();
    QCOMPARE(row.keys(), QStringList{u"text"_s});
    QCOMPARE(row.value(u"text"_s).typeId(), int(QMetaType::QString));
}

void TestJ1939::everyCallAnnouncesOnce()
{
    AppState state;
    QSignalSpy tools(&state, &AppState::toolsChanged);
    QSignalSpy statuses(&state, &AppState::statusChanged);
    state.decodeJ1939(u"04 FF 5B 00 03 01"_s);
    state.decodeJ1939(u"04 FF 5B 00 03 01"_s);
    QCOMPARE(state.j1939Rows().size(), 1);
    state.decodeJ1939({});
    QCOMPARE(state.j1939Rows(), QVariantList());
    QCOMPARE(tools.count(), 3);
    QCOMPARE(statuses.count(), 3);
}

void TestJ1939::rowsAreReadyWhenAnnounced()
{
    AppState state;
    QList<qsizetype> counts;
    QStringList statuses;
    connect(&state, &AppState::toolsChanged, this, [&] {
        counts.append(state.j1939Rows().size());
        statuses.append(state.status());
    });
    state.decodeJ1939(u"04 FF 5B 00 03 01"_s);
    state.decodeJ1939({});
    QCOMPARE(counts, QList<qsizetype>({1, 0}));
    QCOMPARE(statuses, QStringList({QString(), u"1 DTC(s)."_s}));
}

KVTEDITOR_TEST_MAIN(TestJ1939)
#include "tst_J1939.moc"
