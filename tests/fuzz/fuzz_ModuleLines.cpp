// The lines of a module list: the whole input is a JSON array of module entries of any shape.

#include "FuzzSupport.h"
#include "core/ModuleLines.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

QVariantMap field(const QString &title, const QString &value)
{
    return {{u"title"_s, title}, {u"value"_s, value}};
}

QList<QVariantMap> linesOf(const QVariantMap &module)
{
    const auto text = [](const QVariantMap &map, const char *key) {
        return map.value(QLatin1String(key)).toString();
    };
    QList<QVariantMap> lines;
    lines << QVariantMap{{u"heading"_s, true}, {u"title"_s, text(module, "title")}};
    if (!text(module, "vin").isEmpty())
        lines << field(u"VIN"_s, text(module, "vin"));
    if (!text(module, "serial").isEmpty())
        lines << field(u"Serial Number"_s, text(module, "serial"));
    lines << field(u"Main OS"_s, text(module, "mainOs"));
    const QVariantList rows = module.value(u"rows"_s).toList();
    for (const QVariant &row : rows)
        lines << field(text(row.toMap(), "label"), text(row.toMap(), "value"));
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json = FuzzInput(data, size).takeRest();
    const QVariantList modules = QJsonDocument::fromJson(json).array().toVariantList();
    QList<QVariantMap> expected;
    for (const QVariant &module : modules)
        expected << linesOf(module.toMap());

    ModuleLines lines;
    lines.setModules(modules);
    FUZZ_EXPECT(lines.modules() == modules && lines.moduleCount() == modules.size());
    FUZZ_EXPECT(lines.count() == expected.size());
    for (int number = 0; number < lines.count(); ++number)
        FUZZ_EXPECT(lines.line(number) == expected.at(number));
    for (const int number : {-1, lines.count(), std::numeric_limits<int>::min()})
        FUZZ_EXPECT(lines.line(number).isEmpty());

    lines.setModules({});
    FUZZ_EXPECT(lines.count() == 0 && lines.moduleCount() == 0);
    return 0;
}
