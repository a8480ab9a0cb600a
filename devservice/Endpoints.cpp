#include "Endpoints.h"

#include <QJsonDocument>

void EndpointTable::add(const QByteArray &method, const QString &path, Handler handler)
{
    m_handlers[path].insert(method, std::move(handler));
}

ServiceAnswer EndpointTable::answer(const ServiceRequest &request)
{
    const std::lock_guard lock(m_mutex);
    const auto methods = m_handlers.constFind(request.path);
    if (methods == m_handlers.constEnd())
        return errorAnswer(QStringLiteral("No such endpoint: %1").arg(request.path), 404);
    const auto handler = methods->constFind(request.method);
    if (handler == methods->constEnd())
        return errorAnswer(QStringLiteral("Method not allowed"), 405);
    if (!request.complete)
        return errorAnswer(QStringLiteral("The request's body could not be read"), 400);
    return (*handler)(request);
}

QString apiRoot()
{
    return QStringLiteral("/api/");
}

ServiceAnswer jsonAnswer(const QJsonObject &object, int status)
{
    return {
        status, "application/json; charset=utf-8", QJsonDocument(object).toJson(QJsonDocument::Compact), {}};
}

ServiceAnswer errorAnswer(const QString &message, int status)
{
    return jsonAnswer({{QStringLiteral("status"), QStringLiteral("error")},
                       {QStringLiteral("message"), message},
                       {QStringLiteral("error"), message}},
                      status);
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
        *error = QStringLiteral("Not a JSON object");
        return std::nullopt;
    }
    for (const QLatin1StringView member : members) {
        if (!body->value(member).isString()) {
            *error = QStringLiteral("No %1").arg(member);
            return std::nullopt;
        }
    }
    return body;
}

QString missingField(const ServiceRequest &request, std::initializer_list<QLatin1StringView> fields)
{
    for (const QLatin1StringView field : fields) {
        if (!request.part(field))
            return QStringLiteral("No %1").arg(field);
    }
    return {};
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
