#include "Endpoints.h"
#include "SampleData.h"
#include "SampleDefinition.h"
#include "StoreAccount.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

struct Definition
{
    QLatin1StringView title;
    int credits;
};
/// Offered for each OS number that the sample files have; the last one costs more than the account holds.
constexpr Definition definitions[] = {
    {"Base tables"_L1, 5},
    {"Fuel and spark"_L1, 10},
    {"Speedometer"_L1, 0},
    {"Everything"_L1, 500},
};

struct Item
{
    QString id;
    QString title;
    QString os;
    int credits;
};

QList<Item> itemsFor(const QString &os)
{
    QList<Item> items;
    if (!SampleData::mainOsNumbers().contains(os))
        return items;
    for (const Definition &definition : definitions) {
        const QString id = u"%1-%2"_s.arg(os).arg(items.size() + 1);
        items.append({id, u"%1 %2"_s.arg(definition.title, os), os, definition.credits});
    }
    return items;
}

std::optional<Item> findItem(const QString &id)
{
    for (const Item &item : itemsFor(id.section(u'-', 0, 0))) {
        if (item.id == id)
            return item;
    }
    return std::nullopt;
}

ServiceAnswer login(StoreAccount &account, const ServiceRequest &request)
{
    QString error;
    const std::optional<QJsonObject> body = textBody(request, {"email"_L1, "password"_L1}, &error);
    if (!body)
        return errorAnswer(error);
    const QString token =
        account.signIn(body->value("email"_L1).toString(), body->value("password"_L1).toString());
    if (token.isEmpty())
        return errorAnswer(u"Wrong e-mail or password"_s);
    return jsonAnswer(
        {{u"status"_s, u"ok"_s}, {u"session_token"_s, token}, {u"credits"_s, account.credits()}});
}

/// The editor takes any JSON of status 200 for a catalogue, so refusals have a status of their own.
ServiceAnswer catalog(const StoreAccount &account, const ServiceRequest &request)
{
    QString error;
    const std::optional<QJsonObject> body = textBody(request, {"session_token"_L1, "os_id"_L1}, &error);
    if (!body)
        return errorAnswer(error, 400);
    if (!account.hasSession(body->value("session_token"_L1).toString()))
        return errorAnswer(u"Not signed in"_s, 403);
    QJsonArray items;
    for (const Item &item : itemsFor(body->value("os_id"_L1).toString()))
        items.append(QJsonObject{{u"id"_s, item.id},
                                 {u"title"_s, item.title},
                                 {u"os_id"_s, item.os},
                                 {u"credits"_s, item.credits}});
    return jsonAnswer({{u"status"_s, u"ok"_s}, {u"items"_s, items}});
}

ServiceAnswer download(StoreAccount &account, const ServiceRequest &request)
{
    for (const QLatin1StringView field : {"session_token"_L1, "id"_L1}) {
        if (!request.part(field))
            return errorAnswer(u"No %1"_s.arg(field), 400);
    }
    if (!account.hasSession(request.field(u"session_token"_s)))
        return errorAnswer(u"Not signed in"_s, 403);
    const std::optional<Item> item = findItem(request.field(u"id"_s));
    if (!item)
        return errorAnswer(u"No such item: %1"_s.arg(request.field(u"id"_s)), 404);
    if (!account.pay(item->credits))
        return errorAnswer(u"Not enough credits"_s, 402);
    const QList<SampleSegment> segments = SampleData::tune(1, 1).modules.first().segments;
    return bytesAnswer(SampleDefinition::write(item->title, item->os, segments));
}

} // namespace

void addXdfEndpoints(EndpointTable &table, std::shared_ptr<StoreAccount> account)
{
    const auto add = [&table, &account](QLatin1StringView path, auto answer) {
        table.add("POST", apiRoot() + path,
                  [account, answer](const ServiceRequest &request) { return answer(*account, request); });
    };
    add("xdf/login.aspx"_L1, login);
    add("xdf/catalog.aspx"_L1, catalog);
    add("xdf/download.aspx"_L1, download);
}
