#include "api/Tickets.h"

#include "api/JsonReading.h"
#include "core/Version.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

QJsonObject supportTicket(const QString &type, const QString &name, const QString &email,
                          const QString &description, const QString &placeholderEmail)
{
    return {{u"type"_s, type},
            {u"name"_s, name},
            {u"email"_s, email.isEmpty() ? placeholderEmail : email},
            {u"description"_s, description},
            {u"version"_s, applicationVersion()},
            // The service expects this text from every platform.
            {u"os"_s, u"Windows"_s}};
}

bool ticketAccepted(const QJsonObject &answer)
{
    return jsonString(answer, u"status"_s) == "ok"_L1;
}

bool replyAccepted(const QJsonObject &answer)
{
    return ticketAccepted(answer) || answer.value(u"ok"_s).toBool();
}

QString threadTextOf(const QJsonObject &answer)
{
    return QString::fromUtf8(QJsonDocument(answer).toJson(QJsonDocument::Indented));
}
