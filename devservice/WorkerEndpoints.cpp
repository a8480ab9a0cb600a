#include "Endpoints.h"
#include "SampleContainer.h"

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

ServiceAnswer kvtInfo(const ServiceRequest &, const ReceivedPart &file)
{
    QString error;
    const std::optional<SampleTune> tune = SampleContainer::read(file.data, &error);
    return tune ? jsonAnswer(infoObject(*tune)) : errorAnswer(error);
}

struct Operation
{
    QLatin1StringView name;
    ServiceAnswer (*run)(const ServiceRequest &request, const ReceivedPart &file);
};
constexpr Operation operations[] = {
    {"kvt_info"_L1, kvtInfo},
};

ServiceAnswer process(const ServiceRequest &request)
{
    if (request.field(u"version"_s).isEmpty())
        return errorAnswer(u"No version"_s);
    const QString name = request.field(u"operation"_s);
    if (name.isEmpty())
        return errorAnswer(u"No operation"_s);
    const ReceivedPart *file = request.part(u"file"_s);
    if (!file || file->data.isEmpty())
        return errorAnswer(u"No file"_s);
    for (const Operation &operation : operations) {
        if (operation.name == name)
            return operation.run(request, *file);
    }
    return errorAnswer(u"Operation not supported: %1"_s.arg(name));
}

} // namespace

void addWorkerEndpoints(EndpointTable &table)
{
    table.add("POST", apiRoot() + "kvt_worker/process.aspx"_L1, process);
}
