#include "core/ModuleLines.h"

#include <algorithm>
#include <iterator>

namespace {

QString text(const QVariantMap &entry, const QString &key)
{
    return entry.value(key).toString();
}

QVariantMap field(const QString &title, const QString &value)
{
    return {{QStringLiteral("title"), title}, {QStringLiteral("value"), value}};
}

/// What stands above the rows.
QList<QVariantMap> fixedLines(const QVariantMap &module)
{
    QList<QVariantMap> lines{{{QStringLiteral("heading"), true},
                              {QStringLiteral("title"), text(module, QStringLiteral("title"))}}};
    const QString vin = text(module, QStringLiteral("vin"));
    if (!vin.isEmpty())
        lines.append(field(QStringLiteral("VIN"), vin));
    const QString serial = text(module, QStringLiteral("serial"));
    if (!serial.isEmpty())
        lines.append(field(QStringLiteral("Serial Number"), serial));
    lines.append(field(QStringLiteral("Main OS"), text(module, QStringLiteral("mainOs"))));
    return lines;
}

QVariantList rowsOf(const QVariantMap &module)
{
    return module.value(QStringLiteral("rows")).toList();
}

int lineCount(const QVariantMap &module)
{
    const bool hasVin = !text(module, QStringLiteral("vin")).isEmpty();
    const bool hasSerial = !text(module, QStringLiteral("serial")).isEmpty();
    return 2 + (hasVin ? 1 : 0) + (hasSerial ? 1 : 0) + static_cast<int>(rowsOf(module).size());
}

} // namespace

void ModuleLines::setModules(const QVariantList &modules)
{
    if (m_modules == modules)
        return;
    m_modules = modules;
    m_starts.clear();
    m_starts.reserve(static_cast<std::size_t>(modules.size()));
    m_count = 0;
    for (const QVariant &module : modules) {
        m_starts.push_back(m_count);
        m_count += lineCount(module.toMap());
    }
    emit modulesChanged();
}

QVariantMap ModuleLines::line(int number) const
{
    if (number < 0 || number >= m_count)
        return {};
    const auto start = std::prev(std::upper_bound(m_starts.cbegin(), m_starts.cend(), number));
    const QVariantMap module = m_modules.at(std::distance(m_starts.cbegin(), start)).toMap();
    const int place = number - *start;
    const QList<QVariantMap> fixed = fixedLines(module);
    if (place < fixed.size())
        return fixed.at(place);
    const QVariantMap row = rowsOf(module).at(place - fixed.size()).toMap();
    return field(text(row, QStringLiteral("label")), text(row, QStringLiteral("value")));
}
