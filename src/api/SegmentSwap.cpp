#include "api/SegmentSwap.h"

#include "api/JsonReading.h"

#include <QJsonObject>
#include <QStringList>
#include <QVariantMap>

namespace {

const QString labelKey = QStringLiteral("label");
const QString indexKey = QStringLiteral("index");
const QString selectedKey = QStringLiteral("selected");

QString builtLabel(const QJsonObject &candidate)
{
    return QStringLiteral("T%1 \u2190 D%2")
        .arg(QString::number(jsonInt(candidate, QStringLiteral("targetIndex"))),
             QString::number(jsonInt(candidate, QStringLiteral("donorIndex"))));
}

} // namespace

QVariantList decodeSwapCandidates(const QString &json)
{
    const QJsonObject answer = jsonObjectFromBody(json.toUtf8()).value_or(QJsonObject());
    QVariantList candidates;
    for (const QJsonValue &element : firstArray(answer, {QStringLiteral("candidates")})) {
        const QJsonObject object = element.toObject();
        QVariantMap candidate = object.toVariantMap();
        candidate.insert(indexKey, static_cast<int>(candidates.size()));
        candidate.insert(selectedKey, true);
        if (!candidate.contains(labelKey))
            candidate.insert(labelKey, builtLabel(object));
        candidates.append(candidate);
    }
    return candidates;
}

QString selectedCandidateIndices(const QVariantList &candidates)
{
    QStringList indices;
    for (const QVariant &entry : candidates) {
        const QVariantMap candidate = entry.toMap();
        if (candidate.value(selectedKey).toBool())
            indices.append(candidate.value(indexKey).toString());
    }
    return indices.join(QLatin1Char(','));
}
