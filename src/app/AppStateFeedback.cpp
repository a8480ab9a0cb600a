#include "app/AppState.h"

#include "api/JsonReading.h"
#include "api/ServiceConfig.h"
#include "api/UpdateCheck.h"
#include "core/Version.h"

#include <QDesktopServices>
#include <QJsonObject>
#include <QUrl>

void AppState::sendToDev(const QString &email, const QString &notes)
{
    QJsonObject ticket = QJsonObject::fromVariantMap(serviceConfig().authFields);
    ticket.insert(QStringLiteral("type"), QStringLiteral("dev"));
    // The service knows its senders by these two texts, on every platform.
    ticket.insert(QStringLiteral("name"), QStringLiteral("Windows editor user"));
    ticket.insert(QStringLiteral("os"), QStringLiteral("Windows"));
    ticket.insert(QStringLiteral("email"), email.isEmpty() ? serviceConfig().placeholderEmail : email);
    ticket.insert(QStringLiteral("description"),
                  notes.isEmpty() ? QStringLiteral("Send to Dev from %1").arg(m_file.name) : notes);
    ticket.insert(QStringLiteral("version"), applicationVersion());

    m_client->feedbackSubmit(ticket, [this](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty()) {
            setStatus(error, 0);
            return;
        }
        if (jsonString(answer, QStringLiteral("status")) == QLatin1String("ok")) {
            setStatus(
                QStringLiteral("Ticket created: %1").arg(jsonString(answer, QStringLiteral("ticket_id"))), 1);
            return;
        }
        const QString reason = jsonString(answer, QStringLiteral("error"));
        setStatus(reason.isEmpty() ? QStringLiteral("Send failed") : reason, 0);
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
