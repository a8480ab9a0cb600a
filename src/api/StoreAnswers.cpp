#include "api/StoreAnswers.h"

#include "api/JsonReading.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>

namespace {

constexpr qsizetype catalogTextLength = 4000;

const QString idKey = QStringLiteral("id");
const QString osKey = QStringLiteral("os");
const QString creditsKey = QStringLiteral("credits");
const QString errorKey = QStringLiteral("error");

/// The first member of these two that reads as a text.
QString eitherText(const QJsonObject &object, const QString &key, const QString &otherKey)
{
    const QString text = jsonString(object, key);
    return text.isEmpty() ? jsonString(object, otherKey) : text;
}

QVariantMap catalogItem(const QJsonObject &item)
{
    return {{idKey, jsonString(item, idKey)},
            {QStringLiteral("title"), eitherText(item, QStringLiteral("title"), QStringLiteral("name"))},
            {osKey, eitherText(item, QStringLiteral("os_id"), osKey)},
            {creditsKey, jsonInt(item, creditsKey)}};
}

QVariantMap patchItem(const QJsonObject &patch)
{
    const QString variant = QStringLiteral("variant");
    const QString description = QStringLiteral("description");
    return {{idKey, jsonInt(patch, idKey)},
            {variant, jsonString(patch, variant)},
            {description, jsonString(patch, description)},
            {creditsKey, jsonInt(patch, QStringLiteral("credits_cost"))}};
}

QVariantMap stockRow(const QJsonObject &file)
{
    const QString filename = QStringLiteral("filename");
    const QString module = QStringLiteral("module");
    const QString year = QStringLiteral("year");
    const QString make = QStringLiteral("make");
    const QString model = QStringLiteral("model");
    return {{idKey, eitherText(file, idKey, QStringLiteral("path"))},
            {filename, eitherText(file, filename, QStringLiteral("name"))},
            {osKey, jsonString(file, osKey)},
            {module, eitherText(file, module, QStringLiteral("module_type"))},
            {year, jsonString(file, year)},
            {make, jsonString(file, make)},
            {model, jsonString(file, model)}};
}

/// One map for each element, in order; what is no object counts as an empty one.
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
    login.token = eitherText(answer, QStringLiteral("session_token"), QStringLiteral("token"));
    if (login.token.isEmpty()) {
        const QString reason = jsonString(answer, errorKey);
        login.error = reason.isEmpty() ? QStringLiteral("XDF login failed.") : reason;
        return login;
    }
    login.credits = jsonString(answer, creditsKey);
    if (login.credits.isEmpty())
        login.credits = QString::number(jsonInt(answer, creditsKey));
    return login;
}

XdfCatalog decodeXdfCatalog(const QJsonObject &answer)
{
    return {mapsOf(firstArray(answer, {QStringLiteral("items"), QStringLiteral("catalog")}), catalogItem),
            QString::fromUtf8(QJsonDocument(answer).toJson(QJsonDocument::Indented)).left(catalogTextLength)};
}

PatchList decodePatchList(const QJsonObject &answer)
{
    return {mapsOf(answer.value(QStringLiteral("patches")).toArray(), patchItem),
            jsonString(answer, creditsKey)};
}

PatchOutcome decodePatchOutcome(const QJsonObject &answer)
{
    PatchOutcome outcome;
    outcome.file = QByteArray::fromBase64(jsonString(answer, QStringLiteral("file_data")).toLatin1());
    if (!outcome.file.isEmpty()) {
        outcome.status = QStringLiteral("Patch applied.");
        outcome.level = 1;
        return outcome;
    }
    if (jsonString(answer, QStringLiteral("status")) == QLatin1String("ok")) {
        outcome.status =
            QStringLiteral("Patch processed: %1").arg(jsonString(answer, QStringLiteral("message")));
        outcome.level = 1;
        return outcome;
    }
    outcome.status = jsonString(answer, errorKey);
    if (outcome.status.isEmpty())
        outcome.status = QStringLiteral("Patch failed.");
    return outcome;
}

QString patchedName(const QString &path)
{
    return QFileInfo(path).completeBaseName() + QStringLiteral("_patched.bin");
}

QVariantList decodeStockList(const QJsonObject &answer)
{
    return mapsOf(
        firstArray(answer, {QStringLiteral("files"), QStringLiteral("items"), QStringLiteral("results")}),
        stockRow);
}

QVariantMap stockFilters(const QString &make, const QString &fileType, const QString &folder,
                         const QString &module, const QString &model, const QString &os,
                         const QString &keyword, const QString &sort, const QString &sortDir)
{
    return {{QStringLiteral("make"), make},       {QStringLiteral("file_type"), fileType},
            {QStringLiteral("folder"), folder},   {QStringLiteral("module_type"), module},
            {QStringLiteral("model"), model},     {osKey, os},
            {QStringLiteral("keyword"), keyword}, {QStringLiteral("sort"), sort},
            {QStringLiteral("sort_dir"), sortDir}};
}

QString bareFileName(const QString &name)
{
    const qsizetype separator =
        std::max(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\')));
    QString bare = name.sliced(separator + 1);
    // The file system would open what stands before it.
    bare.replace(QChar::Null, QLatin1Char('_'));
    return bare == QLatin1String(".") || bare == QLatin1String("..") ? QString() : bare;
}

QString stockFileName(const QString &name)
{
    QString bare = bareFileName(name);
    if (bare.isEmpty())
        return QStringLiteral("stock.bin");
    // Where the documents folder is the home folder, shells and desktops run hidden files at their start.
    if (bare.startsWith(QLatin1Char('.')))
        bare[0] = QLatin1Char('_');
    if (bare.endsWith(QLatin1String(".desktop"), Qt::CaseInsensitive))
        bare += QLatin1String(".bin");
    return bare;
}
