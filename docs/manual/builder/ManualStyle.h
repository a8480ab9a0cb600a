#pragma once

#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QStringList>

#include <algorithm>

/// The look of the manual on white paper. Sizes are in points, lengths in the 96ths of an inch that a text
/// document counts in.
namespace ManualStyle {

inline const QColor heading(0xC2, 0x4A, 0x00);
inline const QColor accent(0xE8, 0x5D, 0x04);
inline const QColor band(0x0A, 0x0C, 0x10);
inline const QColor text(0x1E, 0x22, 0x2A);
inline const QColor muted(0x5F, 0x66, 0x73);
inline const QColor rule(0xC9, 0xCD, 0xD4);
inline const QColor shade(0xF3, 0xF4, 0xF6);

constexpr double bodySize = 9.5;
constexpr double codeSize = 8.6;
constexpr double smallSize = 8.0;
constexpr double lineHeight = 128;

/// The first of these families that is installed; the same on every system that has it.
inline QString family(const QStringList &wanted)
{
    const QStringList installed = QFontDatabase::families();
    const auto found = std::find_if(wanted.begin(), wanted.end(),
                                    [&installed](const QString &name) { return installed.contains(name); });
    return found == wanted.end() ? QFont().defaultFamily() : *found;
}

inline QString textFamily()
{
    return family({QStringLiteral("DejaVu Sans"), QStringLiteral("Liberation Sans"), QStringLiteral("Arial"),
                   QStringLiteral("Helvetica")});
}

inline QString codeFamily()
{
    return family({QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Liberation Mono"),
                   QStringLiteral("Consolas"), QStringLiteral("Menlo")});
}

inline QFont font(double points, QFont::Weight weight = QFont::Normal)
{
    QFont font(textFamily());
    font.setPointSizeF(points);
    font.setWeight(weight);
    return font;
}

} // namespace ManualStyle
