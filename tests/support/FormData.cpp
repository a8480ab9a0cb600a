#include "support/FormData.h"

#include <algorithm>
#include <optional>

namespace {

QByteArray boundaryOf(const RecordedRequest &request)
{
    const QByteArray type = request.header("content-type");
    const QByteArray mark = "boundary=";
    const qsizetype start = type.indexOf(mark);
    if (!type.startsWith("multipart/form-data;") || start < 0) {
        return {};
    }
    QByteArray boundary = type.mid(start + mark.size());
    if (boundary.startsWith('"') && boundary.endsWith('"')) {
        boundary = boundary.mid(1, boundary.size() - 2);
    }
    return boundary;
}

std::optional<FormPart> partFromBytes(const QByteArray &bytes)
{
    const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
    if (headEnd < 0) {
        return std::nullopt;
    }
    FormPart part;
    part.body = bytes.mid(headEnd + 4);
    const QByteArray head = bytes.left(headEnd);
    qsizetype from = 0;
    while (from <= head.size()) {
        qsizetype end = head.indexOf("\r\n", from);
        end = end < 0 ? head.size() : end;
        const QByteArray line = head.mid(from, end - from);
        const qsizetype colon = line.indexOf(": ");
        if (colon <= 0) {
            return std::nullopt;
        }
        part.headers.append({line.left(colon), line.mid(colon + 2)});
        from = end + 2;
    }
    return part;
}

} // namespace

QByteArray FormPart::header(const QByteArray &name) const
{
    const auto found = std::find_if(headers.begin(), headers.end(), [&name](const auto &pair) {
        return pair.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == headers.end() ? QByteArray() : found->second;
}

QList<FormPart> formParts(const RecordedRequest &request)
{
    const QByteArray boundary = boundaryOf(request);
    const QByteArray opening = "--" + boundary + "\r\n";
    const QByteArray divider = "\r\n--" + boundary;
    if (boundary.isEmpty() || !request.body.startsWith(opening)) {
        return {};
    }
    QList<FormPart> parts;
    qsizetype from = opening.size();
    while (true) {
        const qsizetype end = request.body.indexOf(divider, from);
        const auto part = end < 0 ? std::nullopt : partFromBytes(request.body.mid(from, end - from));
        if (!part) {
            return {};
        }
        parts.append(*part);
        const QByteArray rest = request.body.mid(end + divider.size(), 4);
        if (rest.startsWith("--")) {
            return parts;
        }
        if (!rest.startsWith("\r\n")) {
            return {};
        }
        from = end + divider.size() + 2;
    }
}

QByteArray formField(const RecordedRequest &request, const QByteArray &name)
{
    const QByteArray start = "form-data; name=\"" + name + '"';
    const QList<FormPart> parts = formParts(request);
    const auto found = std::find_if(parts.begin(), parts.end(), [&start](const FormPart &part) {
        return part.header("Content-Disposition").startsWith(start);
    });
    return found == parts.end() ? QByteArray() : found->body;
}
