#pragma once

#include "support/RawHttpServer.h"

#include <QByteArray>
#include <QList>

#include <utility>

struct FormPart
{
    /// In wire order.
    QList<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;

    QByteArray header(const QByteArray &name) const;
};

/// The parts of a multipart/form-data request in wire order; empty when its framing is invalid.
QList<FormPart> formParts(const RecordedRequest &request);

/// The body of the first part whose disposition names that field, or an empty array.
QByteArray formField(const RecordedRequest &request, const QByteArray &name);
