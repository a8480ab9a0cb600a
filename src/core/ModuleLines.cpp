#include "core/ModuleLines.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

QString text(const QVariantMap &entry, const QString &key)
{
    return entry.value(key).toString();
}

QVariantMap field(const QString &title, const QString &value)
{
    return {{u"title"_s, title}, {u"value"_s, value}};
}

/// What stands above the rows.
QList<QVariantMap> fixedLines(const QVariantMap &module)
{
    QList<QVariantMap> lines{{{u"heading"_s, true}, {u"title"_s, text(module, u"title"_s)}}};
    const QString vin = text(module, u"vin"_s);
    if (!vin.isEmpty())
        lines.append(field(u"VIN"_s, vin));
    const QString serial = text(module, u"serial"_s);
    if (!serial.isEmpty())
        lines.append(field(u"Serial Number"_s, serial));
    lines.append(field(u"Main OS"_s, text(module, u"mainOs"_s)));
    return lines;
}

QVariantList rowsOf(const QVariantMap &module)
{
    return module.value(u"rows"_s).toList();
}

int lineCount(const QVariantMap &module)
{
    const bool hasVin = !text(module, u"vin"_s).isEmpty();
    const bool hasSerial = !text(module, u"serial"_s).isEmpty();
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
    return field(text(row, u"label"_s), text(row, u"value"_s));
}
