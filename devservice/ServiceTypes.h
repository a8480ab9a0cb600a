#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

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

using HeaderList = QList<std::pair<QByteArray, QByteArray>>;

/// A request as it came over the wire.
struct ServiceRequest
{
    QByteArray method;
    /// Decoded, without the query, beginning with "/".
    QString path;
    HeaderList headers;
    /// Bytes of the body as sent, the framing of a form included.
    qint64 bodySize = 0;
    /// Empty for a form: `parts` holds its content.
    QByteArray body;
    QList<ReceivedPart> parts;
    /// Whether the whole body arrived.
    bool complete = false;

    /// Empty when there is none; the name is compared without regard to case.
    QByteArray header(const QByteArray &name) const;
    /// Null when the form has no such part.
    const ReceivedPart *part(const QString &name) const;
    /// A form field's text, or empty.
    QString field(const QString &name) const;
    QStringList partNames() const;
};

struct ServiceAnswer
{
    int status = 200;
    QByteArray contentType;
    QByteArray body;
    HeaderList headers;
};
