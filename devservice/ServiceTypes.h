#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <utility>

/// One part of a form, in the order of its arrival.
struct ReceivedPart
{
    QString name;
    /// Empty for a plain field.
    QString fileName;
    QByteArray contentType;
    QByteArray data;
    /// Bytes received; more than `data` holds where a log keeps only the beginning.
    qint64 size = 0;
};

/// A request as it came over the wire.
struct ServiceRequest
{
    QByteArray method;
    /// Decoded, without the query, beginning with "/".
    QString path;
    /// Bytes of the body as announced, the framing of a form included.
    qint64 bodySize = 0;
    /// Empty for a form: `parts` holds its content.
    QByteArray body;
    QList<ReceivedPart> parts;
    /// Whether the whole body arrived.
    bool complete = true;

    /// Null when the form has no such part.
    const ReceivedPart *part(const QString &name) const;
    /// A form field's text, or empty.
    QString field(const QString &name) const;
};

struct ServiceAnswer
{
    enum class Delivery
    {
        Whole,
        Slow, ///< in small pieces with pauses
        Half, ///< breaks off in the middle of the body
        Endless, ///< bytes in place of the body, until the client leaves
    };

    int status = 200;
    QByteArray contentType = "text/plain";
    QByteArray body = {};
    QList<std::pair<QByteArray, QByteArray>> headers = {};
    Delivery delivery = Delivery::Whole;
};
