#include "api/SegmentSwap.h"

#include "api/JsonReading.h"

#include <QStringList>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace {

const QString labelKey = u"label"_s;
const QString indexKey = u"index"_s;
const QString selectedKey = u"selected"_s;

QString builtLabel(const QJsonObject &candidate)
{
    return u"T%1 \u2190 D%2"_s.arg(QString::number(jsonInt(candidate, u"targetIndex"_s)),
                                   QString::number(jsonInt(candidate, u"donorIndex"_s)));
}

} // namespace

QVariantList decodeSwapCandidates(const QJsonObject &answer)
{
    const QJsonArray elements = firstArray(answer, {u"candidates"_s});
    QVariantList candidates;
    for (const QJsonValue &element : elements) {
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
    return indices.join(','_L1);
}
