#pragma once

#include <QJsonObject>
#include <QString>

// Support tickets: what is sent and what the answers mean. Pure.

/// The members of a new ticket; an empty address becomes the placeholder, every other text goes as it is.
QJsonObject supportTicket(const QString &type, const QString &name, const QString &email,
                          const QString &description, const QString &placeholderEmail);
/// Whether the service took a new ticket.
bool ticketAccepted(const QJsonObject &answer);
/// Whether the service took a reply: it says so in either of two ways.
bool replyAccepted(const QJsonObject &answer);
/// The whole answer, indented for reading.
QString threadTextOf(const QJsonObject &answer);
