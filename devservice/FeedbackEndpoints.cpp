#include "Endpoints.h"

#include <QJsonArray>
#include <QMap>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int firstTicket = 1001;
constexpr QLatin1StringView ticketTypes[] = {"general"_L1, "bug"_L1, "feature"_L1, "dev"_L1};

struct Message
{
    QString from;
    QString text;
};

struct Ticket
{
    QString type;
    QString name;
    QList<Message> messages;
};

using TicketBook = QMap<QString, Ticket>;

ServiceAnswer open(TicketBook &book, const ServiceRequest &request)
{
    QString error;
    const std::optional<QJsonObject> body = textBody(
        request, {"type"_L1, "name"_L1, "email"_L1, "description"_L1, "version"_L1, "os"_L1}, &error);
    if (!body)
        return errorAnswer(error);
    const QString type = body->value("type"_L1).toString();
    if (std::ranges::find(ticketTypes, type) == std::end(ticketTypes))
        return errorAnswer(u"Unknown ticket type: %1"_s.arg(type));
    const QString name = body->value("name"_L1).toString();
    const QString id = u"T-%1"_s.arg(firstTicket + book.size());
    book.insert(id, {type, name, {{name, body->value("description"_L1).toString()}}});
    return jsonAnswer({{u"status"_s, u"ok"_s}, {u"ticket_id"_s, id}});
}

ServiceAnswer history(const QString &id, const Ticket &ticket)
{
    QJsonArray messages;
    for (const Message &message : ticket.messages)
        messages.append(QJsonObject{{u"from"_s, message.from}, {u"text"_s, message.text}});
    return jsonAnswer(
        {{u"status"_s, u"ok"_s}, {u"ticket_id"_s, id}, {u"type"_s, ticket.type}, {u"messages"_s, messages}});
}

ServiceAnswer followUp(TicketBook &book, const ServiceRequest &request)
{
    QString error;
    const std::optional<QJsonObject> body = textBody(request, {"action"_L1, "ticket_id"_L1}, &error);
    if (!body)
        return errorAnswer(error);
    const QString id = body->value("ticket_id"_L1).toString();
    const auto ticket = book.find(id);
    if (ticket == book.end())
        return errorAnswer(u"No such ticket: %1"_s.arg(id));
    const QString action = body->value("action"_L1).toString();
    if (action == "history"_L1)
        return history(id, *ticket);
    if (action != "reply"_L1)
        return errorAnswer(u"Unknown action: %1"_s.arg(action));
    const QString text = body->value("message"_L1).toString();
    if (text.isEmpty())
        return errorAnswer(u"No message"_s);
    ticket->messages.append({ticket->name, text});
    return jsonAnswer({{u"status"_s, u"ok"_s}});
}

ServiceAnswer upload(const ServiceRequest &request)
{
    return jsonBody(request) ? jsonAnswer({{u"status"_s, u"ok"_s}}) : errorAnswer(u"Not a JSON object"_s);
}

} // namespace

void addFeedbackEndpoints(EndpointTable &table)
{
    // The tickets opened since the start; gone at the end.
    const auto book = std::make_shared<TicketBook>();
    table.add("POST", apiRoot() + "feedback.aspx"_L1,
              [book](const ServiceRequest &request) { return open(*book, request); });
    table.add("POST", apiRoot() + "feedback_reply.aspx"_L1,
              [book](const ServiceRequest &request) { return followUp(*book, request); });
    table.add("POST", apiRoot() + "upload.aspx"_L1, upload);
}
