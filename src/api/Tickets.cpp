#include "api/Tickets.h"

#include "api/JsonReading.h"
#include "core/Version.h"

#include <QJsonDocument>

QJsonObject supportTicket(const QString &type, const QString &name, const QString &email,
                          const QString &description, const QString &placeholderEmail)
{
    return {{QStringLiteral("type"), type},
            {QStringLiteral("name"), name},
            {QStringLiteral("email"), email.isEmpty() ? placeholderEmail : email},
            {QStringLiteral("description"), description},
            {QStringLiteral("version"), applicationVersion()},
            // The service expects this text from every platform.
            {QStringLiteral("os"), QStringLiteral("Windows")}};
}

bool ticketAccepted(const QJsonObject &answer)
{
    return jsonString(answer, QStringLiteral("status")) == QLatin1String("ok");
}

bool replyAccepted(const QJsonObject &answer)
{
    return ticketAccepted(answer) || answer.value(QStringLiteral("ok")).toBool();
}

QString threadTextOf(const QJsonObject &answer)
{
    return QString::fromUtf8(QJsonDocument(answer).toJson(QJsonDocument::Indented));
}
