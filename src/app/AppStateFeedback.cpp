#include "app/AppState.h"

#include "api/JsonReading.h"
#include "api/ServiceConfig.h"
#include "api/Tickets.h"
#include "api/UpdateCheck.h"
#include "core/Version.h"

#include <QDesktopServices>
#include <QJsonObject>
#include <QUrl>

using namespace Qt::StringLiterals;

void AppState::sendToDev(const QString &email, const QString &notes)
{
    const QString description = notes.isEmpty() ? u"Send to Dev from %1"_s.arg(m_file.name) : notes;
    const QJsonObject ticket = supportTicket(u"dev"_s, u"Windows editor user"_s, email, description,
                                             serviceConfig().placeholderEmail);
    m_client->feedbackToDev(ticket, [this](const QJsonObject &answer, const QString &error) {
        if (failed(error))
            return;
        if (ticketAccepted(answer)) {
            setStatus(u"Ticket created: %1"_s.arg(jsonString(answer, u"ticket_id"_s)), 1);
            return;
        }
        const QString reason = jsonString(answer, u"error"_s);
        setStatus(reason.isEmpty() ? u"Send failed"_s : reason, 0);
    });
}

void AppState::submitTicket(const QString &type, const QString &name, const QString &email,
                            const QString &desc)
{
    const QString sender = name.isEmpty() ? u"Windows user"_s : name;
    m_client->feedbackSubmit(supportTicket(type, sender, email, desc, serviceConfig().placeholderEmail),
                             [this](const QJsonObject &answer, const QString &error) {
                                 if (failed(error))
                                     return;
                                 if (ticketAccepted(answer))
                                     setStatus(u"Ticket: %1"_s.arg(jsonString(answer, u"ticket_id"_s)), 1);
                                 else
                                     setStatus(jsonString(answer, u"error"_s), 0);
                             });
}

void AppState::loadTicket(const QString &ticket)
{
    m_client->feedbackHistory(ticket, [this](const QJsonObject &answer, const QString &error) {
        if (failed(error))
            return;
        m_threadText = threadTextOf(answer);
        emit feedbackChanged();
        setStatus(u"Loaded ticket."_s, 1);
    });
}

void AppState::replyTicket(const QString &ticket, const QString &message)
{
    m_client->feedbackReply(ticket, message, [this, ticket](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty() || !replyAccepted(answer)) {
            setStatus(error.isEmpty() ? jsonString(answer, u"error"_s) : error, 0);
            return;
        }
        setStatus(u"Reply sent."_s, 1);
        loadTicket(ticket);
    });
}

void AppState::checkUpdate()
{
    setStatus(u"Checking for updates..."_s, 1);
    m_client->checkUpdate([this](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty()) {
            setStatus(u"Update check failed: %1"_s.arg(error), 0);
            return;
        }
        const UpdateOutcome outcome = decodeUpdateAnswer(answer, applicationVersion());
        setStatus(outcome.status, outcome.level);
        if (!outcome.link.isEmpty())
            QDesktopServices::openUrl(QUrl(outcome.link, QUrl::TolerantMode));
    });
}
