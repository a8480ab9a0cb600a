#include "api/StoreAnswers.h"

#include "api/JsonReading.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype catalogTextLength = 4000;

const QString idKey = u"id"_s;
const QString osKey = u"os"_s;
const QString creditsKey = u"credits"_s;
const QString errorKey = u"error"_s;

/// The first member of these two that reads as a text.
QString eitherText(const QJsonObject &object, const QString &key, const QString &otherKey)
{
    const QString text = jsonString(object, key);
    return text.isEmpty() ? jsonString(object, otherKey) : text;
}

QVariantMap catalogItem(const QJsonObject &item)
{
    return {{idKey, jsonString(item, idKey)},
            {u"title"_s, eitherText(item, u"title"_s, u"name"_s)},
            {osKey, eitherText(item, u"os_id"_s, osKey)},
            {creditsKey, jsonInt(item, creditsKey)}};
}

QVariantMap patchItem(const QJsonObject &patch)
{
    const QString variant = u"variant"_s;
    const QString description = u"description"_s;
    return {{idKey, jsonInt(patch, idKey)},
            {variant, jsonString(patch, variant)},
            {description, jsonString(patch, description)},
            {creditsKey, jsonInt(patch, u"credits_cost"_s)}};
}

QVariantMap stockRow(const QJsonObject &file)
{
    const QString filename = u"filename"_s;
    const QString module = u"module"_s;
    const QString year = u"year"_s;
    const QString make = u"make"_s;
    const QString model = u"model"_s;
    return {{idKey, eitherText(file, idKey, u"path"_s)},
            {filename, eitherText(file, filename, u"name"_s)},
            {osKey, jsonString(file, osKey)},
            {module, eitherText(file, module, u"module_type"_s)},
            {year, jsonString(file, year)},
            {make, jsonString(file, make)},
            {model, jsonString(file, model)}};
}

/// One map for each element, in order; anything but an object counts as an empty one.
QVariantList mapsOf(const QJsonArray &elements, QVariantMap (*map)(const QJsonObject &))
{
    QVariantList maps;
    maps.reserve(elements.size());
    for (const QJsonValue &element : elements)
        maps.append(map(element.toObject()));
    return maps;
}

} // namespace

XdfLogin decodeXdfLogin(const QJsonObject &answer)
{
    XdfLogin login;
    login.token = eitherText(answer, u"session_token"_s, u"token"_s);
    if (login.token.isEmpty()) {
        const QString reason = jsonString(answer, errorKey);
        login.error = reason.isEmpty() ? u"XDF login failed."_s : reason;
        return login;
    }
    login.credits = jsonString(answer, creditsKey);
    if (login.credits.isEmpty())
        login.credits = QString::number(jsonInt(answer, creditsKey));
    return login;
}

XdfCatalog decodeXdfCatalog(const QJsonObject &answer)
{
    return {mapsOf(firstArray(answer, {u"items"_s, u"catalog"_s}), catalogItem),
            QString::fromUtf8(QJsonDocument(answer).toJson(QJsonDocument::Indented)).left(catalogTextLength)};
}

PatchList decodePatchList(const QJsonObject &answer)
{
    return {mapsOf(answer.value(u"patches"_s).toArray(), patchItem), jsonString(answer, creditsKey)};
}

PatchOutcome decodePatchOutcome(const QJsonObject &answer)
{
    PatchOutcome outcome;
    outcome.file = QByteArray::fromBase64(jsonString(answer, u"file_data"_s).toLatin1());
    if (!outcome.file.isEmpty()) {
        outcome.status = u"Patch applied."_s;
        outcome.level = 1;
        return outcome;
    }
    if (jsonString(answer, u"status"_s) == "ok"_L1) {
        outcome.status = u"Patch processed: %1"_s.arg(jsonString(answer, u"message"_s));
        outcome.level = 1;
        return outcome;
    }
    outcome.status = jsonString(answer, errorKey);
    if (outcome.status.isEmpty())
        outcome.status = u"Patch failed."_s;
    return outcome;
}

QString patchedName(const QString &path)
{
    return QFileInfo(path).completeBaseName() + u"_patched.bin"_s;
}

QString downloadError(const QByteArray &bytes, const QJsonObject &answer, const QString &error)
{
    const QString reason = jsonString(answer, errorKey);
    return reason.isEmpty() && bytes.isEmpty() ? error : reason;
}

QVariantList decodeStockList(const QJsonObject &answer)
{
    return mapsOf(firstArray(answer, {u"files"_s, u"items"_s, u"results"_s}), stockRow);
}

QVariantMap stockFilters(const QString &make, const QString &fileType, const QString &folder,
                         const QString &module, const QString &model, const QString &os,
                         const QString &keyword, const QString &sort, const QString &sortDir)
{
    return {{u"make"_s, make},          {u"file_type"_s, fileType}, {u"folder"_s, folder},
            {u"module_type"_s, module}, {u"model"_s, model},        {osKey, os},
            {u"keyword"_s, keyword},    {u"sort"_s, sort},          {u"sort_dir"_s, sortDir}};
}

QString bareFileName(const QString &name)
{
    const qsizetype separator = std::max(name.lastIndexOf('/'_L1), name.lastIndexOf('\\'_L1));
    QString bare = name.sliced(separator + 1);
    // The file system would cut the name at the NUL.
    bare.replace(QChar::Null, '_'_L1);
    return bare == "."_L1 || bare == ".."_L1 ? QString() : bare;
}

QString stockFileName(const QString &name)
{
    QString bare = bareFileName(name);
    if (bare.isEmpty())
        return u"stock.bin"_s;
    // Where the documents folder is the home folder, shells and desktops run hidden files at their start.
    if (bare.startsWith('.'_L1))
        bare[0] = '_'_L1;
    if (bare.endsWith(".desktop"_L1, Qt::CaseInsensitive))
        bare += ".bin"_L1;
    return bare;
}
