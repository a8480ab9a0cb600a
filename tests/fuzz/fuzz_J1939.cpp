// Dumps of fault messages: the whole input is the pasted text.

#include "FuzzSupport.h"
#include "core/FileTools.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::pair<int, const char *> namedModes[] = {
    {0, "above normal (most severe)"},
    {1, "below normal (most severe)"},
    {2, "data erratic"},
    {3, "voltage high"},
    {4, "voltage low"},
    {5, "current low"},
    {6, "current high"},
    {15, "data valid but above normal"},
    {16, "data valid but below normal"},
    {31, "condition exists"},
};

QString modeText(int fmi)
{
    for (const auto &[number, text] : namedModes) {
        if (number == fmi)
            return QLatin1String(text);
    }
    return u"FMI "_s + QString::number(fmi);
}

QString hexDigitsOf(const QString &text)
{
    static const QString digits = u"0123456789abcdefABCDEF"_s;
    QString kept;
    for (const QChar c : text) {
        if (digits.contains(c))
            kept.append(c);
    }
    return kept;
}

bool isSame(const J1939Fault &a, const J1939Fault &b)
{
    return a.spn == b.spn && a.fmi == b.fmi && a.oc == b.oc && a.lamp == b.lamp && a.raw == b.raw
        && a.fmiText == b.fmiText;
}

bool areSame(const QList<J1939Fault> &a, const QList<J1939Fault> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
}

// A fault says the same as its four bytes.
void expectRawHolds(const J1939Fault &fault)
{
    FUZZ_EXPECT(fault.raw.size() == 8 && fault.raw == hexDigitsOf(fault.raw).toUpper());
    const quint32 raw = fault.raw.toUInt(nullptr, 16);
    const quint32 third = raw >> 8 & 0xFF;
    FUZZ_EXPECT(quint32(fault.spn) == ((raw >> 24) | (raw >> 16 & 0xFF) << 8 | third >> 5 << 16));
    FUZZ_EXPECT(quint32(fault.fmi) == third % 32);
    FUZZ_EXPECT(quint32(fault.oc) == raw % 128);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = FuzzInput(data, size).takeRestAsText();
    const QString digits = hexDigitsOf(text);
    const qsizetype byteCount = (digits.size() + 1) / 2;
    const QList<J1939Fault> faults = FileTools::decodeJ1939(text);

    FUZZ_EXPECT(faults.size() == (byteCount < 6 ? 0 : (byteCount - 2) / 4));
    // An odd digit stands alone at the front.
    const int lamp = digits.left(digits.size() % 2 == 0 ? 2 : 1).toInt(nullptr, 16);
    QString dump = QString::number(lamp, 16).rightJustified(2, '0'_L1) + u"-00"_s;
    for (const J1939Fault &fault : faults) {
        FUZZ_EXPECT(fault.spn >= 0 && fault.spn <= 524287);
        FUZZ_EXPECT(fault.fmi >= 0 && fault.fmi <= 31);
        FUZZ_EXPECT(fault.oc >= 0 && fault.oc <= 127);
        FUZZ_EXPECT(fault.lamp == lamp);
        FUZZ_EXPECT(fault.fmiText == modeText(fault.fmi));
        expectRawHolds(fault);
        dump += '\n'_L1 + fault.raw;
    }
    FUZZ_EXPECT(areSame(FileTools::decodeJ1939(dump), faults));
    FUZZ_EXPECT(areSame(FileTools::decodeJ1939(digits), faults));
    return 0;
}
