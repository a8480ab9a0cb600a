#include "core/FileTools.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct FailureMode
{
    int fmi;
    const char *text;
};

constexpr FailureMode failureModes[] = {
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

constexpr qsizetype firstFault = 2;
constexpr qsizetype faultSize = 4;

QString failureModeText(int fmi)
{
    const auto *const known = std::find_if(std::begin(failureModes), std::end(failureModes),
                                           [fmi](const FailureMode &mode) { return mode.fmi == fmi; });
    return known == std::end(failureModes) ? u"FMI %1"_s.arg(fmi) : QLatin1String(known->text);
}

J1939Fault faultAt(const QByteArray &bytes, qsizetype position)
{
    const auto byte = [&bytes, position](qsizetype i) {
        return static_cast<unsigned char>(bytes.at(position + i));
    };
    J1939Fault fault;
    fault.spn = byte(0) + 256 * byte(1) + 65536 * (byte(2) >> 5);
    fault.fmi = byte(2) & 0x1F;
    fault.oc = byte(3) & 0x7F;
    fault.lamp = static_cast<unsigned char>(bytes.at(0));
    fault.raw = QString::fromLatin1(bytes.sliced(position, faultSize).toHex().toUpper());
    fault.fmiText = failureModeText(fault.fmi);
    return fault;
}

} // namespace

QList<J1939Fault> FileTools::decodeJ1939(const QString &text)
{
    // Skips all but hex digits, which pair up from the end: one too many stands alone at the front.
    const QByteArray bytes = QByteArray::fromHex(text.toUtf8());
    QList<J1939Fault> faults;
    for (qsizetype at = firstFault; at + faultSize <= bytes.size(); at += faultSize)
        faults.append(faultAt(bytes, at));
    return faults;
}
