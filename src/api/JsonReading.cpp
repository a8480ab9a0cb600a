#include "api/JsonReading.h"

#include <QJsonDocument>
#include <QJsonValue>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// QJsonValue's own integer rule: the value when it is whole and fits 32 bits, else 0.
int wholeNumber(const QJsonValue &value)
{
    return value.toInt(0);
}

} // namespace

QString jsonString(const QJsonObject &object, const QString &key)
{
    const QJsonValue value = object.value(key);
    if (value.isString())
        return value.toString();
    if (value.isDouble())
        return QString::number(wholeNumber(value));
    return {};
}

int jsonInt(const QJsonObject &object, const QString &key)
{
    const QJsonValue value = object.value(key);
    return value.isDouble() ? wholeNumber(value) : value.toString().toInt();
}

QJsonArray firstArray(const QJsonObject &object, const QStringList &keys)
{
    const auto found = std::find_if(keys.begin(), keys.end(),
                                    [&object](const QString &key) { return object.value(key).isArray(); });
    return found == keys.end() ? QJsonArray() : object.value(*found).toArray();
}

std::optional<QJsonObject> jsonObjectFromBody(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

QJsonObject jsonObjectInText(const QString &text)
{
    return jsonObjectFromBody(text.sliced(std::max<qsizetype>(text.indexOf('{'_L1), 0)).toUtf8())
        .value_or(QJsonObject());
}
