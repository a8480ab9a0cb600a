#include "api/KvtInfo.h"

#include "api/JsonReading.h"
#include "core/FileTools.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QVariantList>

#include <algorithm>
#include <array>
#include <span>

using namespace Qt::StringLiterals;

namespace {

const QString vinKey = u"vin"_s;
const QString serialKey = u"serial"_s;
const QString mainOsKey = u"mainOS"_s;
const QString modulesKey = u"modules"_s;
const QString serial1Key = u"serial1"_s;

struct Alias
{
    const char *target;
    std::array<const char *, 4> keys;
};

constexpr Alias aliases[] = {
    {"system", {"gmSystem", "system", "module"}},
    {"fuel", {"gmFuel", "fuel"}},
    {"speedometer", {"gmSpeedometer", "speedometer"}},
    {"engineDiag", {"gmEngineDiag", "engine_diag", "engineDiag"}},
    {"engineOp", {"gmEngineOp", "engine_op", "engineOp"}},
    {"interfaceID", {"interfaceCalId", "interfaceId", "interface_id", "interfaceID"}},
    {"created", {"created"}},
    // The answer's own "editorVersion" means something else and is not read.
    {"editorVersion", {"softwareVersion", "editor_version"}},
};

constexpr const char *vinKeys[] = {"vin1", "vin"};
constexpr const char *serialKeys[] = {"serial1", "serial"};
constexpr const char *mainOsKeys[] = {"mainOs", "main_os", "os1", "baseOs", "os"};
constexpr const char *positionalRows[] = {"system", "fuel", "speedometer", "engineDiag", "engineOp"};

// The first non-empty string or number among these members. A key may be null where a list is shorter.
QString firstText(const QJsonObject &object, std::span<const char *const> keys)
{
    for (const char *key : keys) {
        QString text = key ? jsonString(object, QLatin1String(key)) : QString();
        if (!text.isEmpty())
            return text;
    }
    return {};
}

void setUnlessEmpty(QVariantMap &map, const QString &key, const QString &value)
{
    if (!value.isEmpty())
        map.insert(key, value);
}

QJsonObject innermost(QJsonObject object)
{
    for (const auto &nested : {u"kvt"_s, u"identifiers"_s}) {
        const QJsonValue inner = object.value(nested);
        if (inner.isObject())
            object = inner.toObject();
    }
    return object;
}

struct Numbers
{
    QString serial1;
    QString serial2;
    QString mainOs;
};

QStringList osCandidates(const Numbers &numbers)
{
    QStringList candidates;
    for (const QString &serial : {numbers.serial1, numbers.serial2}) {
        const QString upper = serial.toUpper();
        if (FileTools::isCumminsStyleOs(serial) && !candidates.contains(upper))
            candidates.append(upper);
    }
    const QString upperOs = numbers.mainOs.toUpper();
    if (FileTools::isCumminsStyleOs(numbers.mainOs) && !candidates.contains(upperOs))
        candidates.prepend(upperOs);
    return candidates;
}

void clearIfOs(QString &serial)
{
    if (FileTools::isCumminsStyleOs(serial))
        serial.clear();
}

// Some files carry OS numbers where the serial belongs. They move to the main OS, and a plain number that the
// service took for the OS becomes the serial.
void reconcile(Numbers &numbers)
{
    const QStringList candidates = osCandidates(numbers);
    if (candidates.isEmpty())
        return;
    if (!FileTools::isWeakNumericOs(numbers.mainOs) && FileTools::isCumminsStyleOs(numbers.mainOs)) {
        clearIfOs(numbers.serial1);
        clearIfOs(numbers.serial2);
        return;
    }
    const QString asRead = numbers.mainOs;
    numbers.mainOs = candidates.first(2 <= candidates.size() ? 2 : 1).join(u" / "_s);
    clearIfOs(numbers.serial1);
    clearIfOs(numbers.serial2);
    if (numbers.serial1.isEmpty() && FileTools::isWeakNumericOs(asRead))
        numbers.serial1 = asRead;
}

void mergeNumbers(QVariantMap &identifiers, const QJsonObject &answer)
{
    Numbers numbers{firstText(answer, serialKeys), jsonString(answer, u"serial2"_s),
                    firstText(answer, mainOsKeys)};
    reconcile(numbers);
    const QString os1 = jsonString(answer, u"os1"_s);
    if (!os1.isEmpty())
        numbers.mainOs = os1;

    setUnlessEmpty(identifiers, vinKey, firstText(answer, vinKeys));
    if (!numbers.serial1.isEmpty() || FileTools::isCumminsStyleOs(jsonString(answer, serial1Key)))
        identifiers.insert(serialKey, numbers.serial1);
    setUnlessEmpty(identifiers, mainOsKey, numbers.mainOs);
}

QVariantMap moduleEntry(const QJsonObject &module)
{
    QStringList labels;
    QStringList values;
    const QJsonArray rows = module.value(u"rows"_s).toArray();
    for (const QJsonValue &value : rows) {
        const QJsonObject row = value.toObject();
        labels.append(jsonString(row, u"label"_s));
        values.append(jsonString(row, u"value"_s));
    }
    return FileTools::makeModuleEntry(jsonString(module, u"title"_s), jsonString(module, vinKey),
                                      jsonString(module, serialKey), jsonString(module, u"mainOs"_s), labels,
                                      values);
}

void mergeModules(QVariantMap &identifiers, const QJsonArray &answered)
{
    QVariantList modules;
    modules.reserve(answered.size());
    for (const QJsonValue &module : answered)
        modules.append(moduleEntry(module.toObject()));
    identifiers.insert(modulesKey, modules);

    const QVariantMap first = modules.constFirst().toMap();
    setUnlessEmpty(identifiers, vinKey, first.value(vinKey).toString());
    setUnlessEmpty(identifiers, serialKey, first.value(serialKey).toString());
    setUnlessEmpty(identifiers, mainOsKey, first.value(u"mainOs"_s).toString());

    // The service sends these five in a fixed order under labels of its own.
    const QVariantList rows = first.value(u"rows"_s).toList();
    const qsizetype filled = std::min<qsizetype>(rows.size(), std::ssize(positionalRows));
    for (qsizetype i = 0; i < filled; ++i) {
        identifiers.insert(QLatin1String(positionalRows[i]), rows.at(i).toMap().value(u"value"_s).toString());
    }
}

} // namespace

QVariantMap mergeKvtInfo(const QVariantMap &identifiers, const QJsonObject &answer)
{
    const QJsonObject object = innermost(answer);
    QVariantMap merged = identifiers;
    mergeNumbers(merged, object);
    for (const Alias &alias : aliases)
        setUnlessEmpty(merged, QLatin1String(alias.target), firstText(object, alias.keys));
    const QJsonArray modules = object.value(modulesKey).toArray();
    if (!modules.isEmpty())
        mergeModules(merged, modules);
    return merged;
}
