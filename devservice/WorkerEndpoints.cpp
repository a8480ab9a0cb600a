#include "Endpoints.h"
#include "WorkerOperations.h"

using namespace Qt::StringLiterals;

namespace {

const WorkerOperation *findOperation(const QString &name)
{
    for (const auto &operations : {infoOperations(), conversionOperations(), swapOperations()}) {
        for (const WorkerOperation &operation : operations) {
            if (operation.name == name)
                return &operation;
        }
    }
    return nullptr;
}

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
    const WorkerOperation *operation = findOperation(name);
    return operation ? operation->run(request, *file)
                     : errorAnswer(u"Operation not supported: %1"_s.arg(name));
}

} // namespace

void addWorkerEndpoints(EndpointTable &table)
{
    table.add("POST", apiRoot() + "kvt_worker/process.aspx"_L1, process);
}
