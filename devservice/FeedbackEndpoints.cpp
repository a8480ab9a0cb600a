#include "Endpoints.h"

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int firstTicket = 1001;

/// The tickets opened since the start; gone at the end.
class TicketBook
{
public:
    ServiceAnswer open(const ServiceRequest &request)
    {
        const std::optional<QJsonObject> ticket = jsonBody(request);
        if (!ticket)
            return errorAnswer(u"Not a ticket"_s);
        if (ticket->value("type"_L1).toString().isEmpty())
            return errorAnswer(u"No ticket type"_s);
        m_tickets.append(*ticket);
        const QString id = u"T-%1"_s.arg(firstTicket + m_tickets.size() - 1);
        return jsonAnswer({{u"status"_s, u"ok"_s}, {u"ticket_id"_s, id}});
    }

private:
    QList<QJsonObject> m_tickets;
};

} // namespace

void addFeedbackEndpoints(EndpointTable &table)
{
    const auto book = std::make_shared<TicketBook>();
    table.add("POST", apiRoot() + "feedback.aspx"_L1,
              [book](const ServiceRequest &request) { return book->open(request); });
}
