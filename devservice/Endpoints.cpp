#include "Endpoints.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

void EndpointTable::add(const QByteArray &method, const QString &path, Handler handler)
{
    m_handlers[path].insert(method, std::move(handler));
}

ServiceAnswer EndpointTable::answer(const ServiceRequest &request)
{
    const std::lock_guard lock(m_mutex);
    const auto methods = m_handlers.constFind(request.path);
    if (methods == m_handlers.constEnd())
        return errorAnswer(u"No such endpoint: %1"_s.arg(request.path), 404);
    const auto handler = methods->constFind(request.method);
    if (handler == methods->constEnd())
        return errorAnswer(u"Method not allowed"_s, 405);
    if (!request.complete)
        return errorAnswer(u"The request's body could not be read"_s, 400);
    return (*handler)(request);
}

QString apiRoot()
{
    return u"/api/"_s;
}

ServiceAnswer jsonAnswer(const QJsonObject &object, int status)
{
    return {
        status, "application/json; charset=utf-8", QJsonDocument(object).toJson(QJsonDocument::Compact), {}};
}

ServiceAnswer errorAnswer(const QString &message, int status)
{
    return jsonAnswer({{u"status"_s, u"error"_s}, {u"message"_s, message}, {u"error"_s, message}}, status);
}

ServiceAnswer bytesAnswer(const QByteArray &bytes)
{
    return {200, "application/octet-stream", bytes, {}};
}

std::optional<QJsonObject> jsonBody(const ServiceRequest &request)
{
    const QJsonDocument document = QJsonDocument::fromJson(request.body);
    if (!document.isObject())
        return std::nullopt;
    return document.object();
}

std::optional<QJsonObject> textBody(const ServiceRequest &request,
                                    std::initializer_list<QLatin1StringView> members, QString *error)
{
    const std::optional<QJsonObject> body = jsonBody(request);
    if (!body) {
        *error = u"Not a JSON object"_s;
        return std::nullopt;
    }
    for (const QLatin1StringView member : members) {
        if (!body->value(member).isString()) {
            *error = u"No %1"_s.arg(member);
            return std::nullopt;
        }
    }
    return body;
}

const ReceivedPart *ServiceRequest::part(const QString &name) const
{
    for (const ReceivedPart &part : parts) {
        if (part.name == name)
            return &part;
    }
    return nullptr;
}

QString ServiceRequest::field(const QString &name) const
{
    const ReceivedPart *found = part(name);
    return found ? QString::fromUtf8(found->data) : QString();
}
