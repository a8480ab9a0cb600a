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

struct FixedLine
{
    const char *key;
    const char *title;
    bool isOptional;
};

// Between the heading and the rows.
constexpr FixedLine fixedLines[] = {
    {"vin", "VIN", true},
    {"serial", "Serial Number", true},
    {"mainOs", "Main OS", false},
};

bool isShown(const FixedLine &line, const QVariantMap &module)
{
    return !line.isOptional || !text(module, QLatin1String(line.key)).isEmpty();
}

QVariantList rowsOf(const QVariantMap &module)
{
    return module.value(u"rows"_s).toList();
}

int lineCount(const QVariantMap &module)
{
    const auto fixed = std::count_if(std::begin(fixedLines), std::end(fixedLines),
                                     [&module](const FixedLine &line) { return isShown(line, module); });
    return static_cast<int>(1 + fixed + rowsOf(module).size());
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
    qsizetype place = number - *start - 1;
    if (place < 0)
        return {{u"heading"_s, true}, {u"title"_s, text(module, u"title"_s)}};
    for (const FixedLine &line : fixedLines) {
        if (isShown(line, module) && place-- == 0)
            return field(QLatin1String(line.title), text(module, QLatin1String(line.key)));
    }
    const QVariantMap row = rowsOf(module).at(place).toMap();
    return field(text(row, u"label"_s), text(row, u"value"_s));
}
