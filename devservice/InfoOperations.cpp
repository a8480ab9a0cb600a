#include "Endpoints.h"
#include "WorkerOperations.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

QJsonObject moduleObject(const SampleModule &module)
{
    QJsonArray rows;
    for (const SampleRow &row : module.rows)
        rows.append(QJsonObject{{u"label"_s, row.label}, {u"value"_s, row.value}});
    return {{u"title"_s, module.title},
            {u"vin"_s, module.vin},
            {u"serial"_s, module.serial},
            {u"mainOs"_s, module.mainOs},
            {u"rows"_s, rows}};
}

ServiceAnswer kvtInfo(const ServiceRequest &, const ReceivedPart &file)
{
    QString error;
    const std::optional<SampleTune> tune = SampleContainer::read(file.data, &error);
    return tune ? jsonAnswer(infoObject(*tune)) : errorAnswer(error);
}

constexpr WorkerOperation operations[] = {
    {"kvt_info"_L1, kvtInfo},
};

} // namespace

std::span<const WorkerOperation> infoOperations()
{
    return operations;
}

QJsonObject infoObject(const SampleTune &tune)
{
    QJsonArray modules;
    for (const SampleModule &module : tune.modules)
        modules.append(moduleObject(module));
    const SampleModule first = tune.modules.value(0);
    const SampleModule second = tune.modules.value(1);
    return {{u"status"_s, u"ok"_s},
            {u"created"_s, tune.created},
            {u"softwareVersion"_s, tune.softwareVersion},
            {u"interfaceCalId"_s, tune.interfaceCalId},
            {u"vin1"_s, first.vin},
            {u"vin2"_s, second.vin},
            {u"serial1"_s, first.serial},
            {u"serial2"_s, second.serial},
            {u"mainOs"_s, first.mainOs},
            {u"gmSystem"_s, first.rowValue(u"System"_s)},
            {u"gmFuel"_s, first.rowValue(u"Fuel System"_s)},
            {u"gmSpeedometer"_s, first.rowValue(u"Speedometer"_s)},
            {u"gmEngineDiag"_s, first.rowValue(u"Engine Diag"_s)},
            {u"gmEngineOp"_s, first.rowValue(u"Engine Op"_s)},
            {u"modules"_s, modules}};
}
