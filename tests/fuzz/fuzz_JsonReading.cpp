// The reading of a body's members: the whole input is the body.

#include "FuzzSupport.h"
#include "api/JsonReading.h"

#include <QJsonDocument>
#include <QJsonValue>

#include <cmath>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

bool isWhole32(double number)
{
    return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max()
        && std::trunc(number) == number;
}

void number(const QJsonObject &object, const QString &key, double value)
{
    const int expected = isWhole32(value) ? static_cast<int>(value) : 0;
    FUZZ_EXPECT(jsonInt(object, key) == expected);
    FUZZ_EXPECT(jsonString(object, key) == QString::number(expected));
}

void text(const QJsonObject &object, const QString &key, const QString &value)
{
    bool isNumber = false;
    const qlonglong parsed = value.toLongLong(&isNumber);
    const bool fits = isNumber && isWhole32(static_cast<double>(parsed));
    FUZZ_EXPECT(jsonString(object, key) == value);
    FUZZ_EXPECT(jsonInt(object, key) == (fits ? parsed : 0));
}

void member(const QJsonObject &object, const QString &key, const QJsonValue &value)
{
    if (value.isDouble()) {
        number(object, key, value.toDouble());
    } else if (value.isString()) {
        text(object, key, value.toString());
    } else {
        FUZZ_EXPECT(jsonString(object, key).isEmpty());
        FUZZ_EXPECT(jsonInt(object, key) == 0);
    }
    const QJsonArray array = firstArray(object, {u"no such member"_s, key});
    FUZZ_EXPECT(array == (value.isArray() ? value.toArray() : QJsonArray()));
    FUZZ_EXPECT(firstArray(object, {key, key}) == array);
}

// The given object and every one inside it.
void members(const QJsonObject &outermost)
{
    std::vector<QJsonValue> open{outermost};
    while (!open.empty()) {
        const QJsonValue value = open.back();
        open.pop_back();
        const QJsonArray array = value.toArray();
        open.insert(open.end(), array.begin(), array.end());
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            member(object, it.key(), it.value());
            open.push_back(it.value());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body = FuzzInput(data, size).takeRest();
    const std::optional<QJsonObject> object = jsonObjectFromBody(body);
    FUZZ_EXPECT(object.has_value() == QJsonDocument::fromJson(body).isObject());
    // Text around an object makes it none; white space does not.
    FUZZ_EXPECT(!jsonObjectFromBody(body + "x"));
    FUZZ_EXPECT(!jsonObjectFromBody("[" + body + "]"));
    if (!object)
        return 0;
    FUZZ_EXPECT(jsonObjectFromBody(body + " \r\n") == object);
    FUZZ_EXPECT(!jsonObjectFromBody(body + body));
    if (!keepsItsTexts(body))
        return 0;
    for (const auto format : {QJsonDocument::Compact, QJsonDocument::Indented})
        FUZZ_EXPECT(jsonObjectFromBody(QJsonDocument(*object).toJson(format)) == object);
    members(*object);
    return 0;
}
