#include "DevService.h"
#include "Endpoints.h"

using namespace Qt::StringLiterals;

namespace {

ServiceAnswer setFault(DevService &service, const ServiceRequest &request)
{
    const std::optional<QJsonObject> order = jsonBody(request);
    if (!order)
        return errorAnswer(u"Not a JSON object"_s, 400);
    const QString endpoint = order->value("endpoint"_L1).toString();
    const QString fault = order->value("fault"_L1).toString();
    if (endpoint.isEmpty() || !service.setFault(endpoint, fault, order->value("times"_L1).toInt(-1)))
        return errorAnswer(u"No endpoint, or an unknown fault"_s, 400);
    return jsonAnswer({{u"status"_s, u"ok"_s}});
}

ServiceAnswer showRequests(const DevService &service)
{
    QJsonObject counts;
    const QMap<QString, int> received = service.requestCounts();
    for (auto count = received.begin(); count != received.end(); ++count)
        counts.insert(count.key(), count.value());
    return jsonAnswer({{u"total"_s, service.requestCount()},
                       {u"connections"_s, service.connectionCount()},
                       {u"held"_s, service.heldCount()},
                       {u"counts"_s, counts}});
}

} // namespace

void addDevEndpoints(EndpointTable &table, DevService &service)
{
    table.add("POST", u"/_dev/faults"_s,
              [&service](const ServiceRequest &request) { return setFault(service, request); });
    table.add("POST", u"/_dev/clear"_s, [&service](const ServiceRequest &) {
        service.clearFaults();
        return jsonAnswer({{u"status"_s, u"ok"_s}});
    });
    table.add("POST", u"/_dev/release"_s, [&service](const ServiceRequest &) {
        service.release();
        return jsonAnswer({{u"status"_s, u"ok"_s}});
    });
    table.add("GET", u"/_dev/requests"_s,
              [&service](const ServiceRequest &) { return showRequests(service); });
}
