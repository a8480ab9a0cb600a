#include "app/AppState.h"

#include "api/JsonReading.h"
#include "api/ServiceConfig.h"
#include "api/Tickets.h"
#include "api/UpdateCheck.h"
#include "core/Version.h"

#include <QDesktopServices>
#include <QJsonObject>
#include <QUrl>

void AppState::sendToDev(const QString &email, const QString &notes)
{
    QJsonObject ticket = QJsonObject::fromVariantMap(serviceConfig().authFields);
    const QJsonObject members =
        supportTicket(QStringLiteral("dev"), QStringLiteral("Windows editor user"), email,
                      notes.isEmpty() ? QStringLiteral("Send to Dev from %1").arg(m_file.name) : notes,
                      serviceConfig().placeholderEmail);
    for (auto member = members.begin(); member != members.end(); ++member)
        ticket.insert(member.key(), member.value());

    m_client->feedbackSubmit(ticket, [this](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty()) {
            setStatus(error, 0);
            return;
        }
        if (ticketAccepted(answer)) {
            setStatus(
                QStringLiteral("Ticket created: %1").arg(jsonString(answer, QStringLiteral("ticket_id"))), 1);
            return;
        }
        const QString reason = jsonString(answer, QStringLiteral("error"));
        setStatus(reason.isEmpty() ? QStringLiteral("Send failed") : reason, 0);
    });
}

void AppState::submitTicket(const QString &type, const QString &name, const QString &email,
                            const QString &desc)
{
    const QString sender = name.isEmpty() ? QStringLiteral("Windows user") : name;
    m_client->feedbackSubmit(
        supportTicket(type, sender, email, desc, serviceConfig().placeholderEmail),
        [this](const QJsonObject &answer, const QString &error) {
            if (!error.isEmpty())
                setStatus(error, 0);
            else if (ticketAccepted(answer))
                setStatus(QStringLiteral("Ticket: %1").arg(jsonString(answer, QStringLiteral("ticket_id"))),
                          1);
            else
                setStatus(jsonString(answer, QStringLiteral("error")), 0);
        });
}

void AppState::loadTicket(const QString &ticket)
{
    m_client->feedbackHistory(ticket, [this](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty()) {
            setStatus(error, 0);
            return;
        }
        m_threadText = threadTextOf(answer);
        emit feedbackChanged();
        setStatus(QStringLiteral("Loaded ticket."), 1);
    });
}

void AppState::replyTicket(const QString &ticket, const QString &message)
{
    m_client->feedbackReply(ticket, message, [this, ticket](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty() || !replyAccepted(answer)) {
            setStatus(error.isEmpty() ? jsonString(answer, QStringLiteral("error")) : error, 0);
            return;
        }
        setStatus(QStringLiteral("Reply sent."), 1);
        loadTicket(ticket);
    });
}

void AppState::checkUpdate()
{
    setStatus(QStringLiteral("Checking for updates..."), 1);
    m_client->checkUpdate([this](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty()) {
            setStatus(QStringLiteral("Update check failed: %1").arg(error), 0);
            return;
        }
        const UpdateOutcome outcome = decodeUpdateAnswer(answer, applicationVersion());
        setStatus(outcome.status, outcome.level);
        if (!outcome.link.isEmpty())
            QDesktopServices::openUrl(QUrl(outcome.link, QUrl::TolerantMode));
    });
}
