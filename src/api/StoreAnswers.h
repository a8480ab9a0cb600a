#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

// What the store's, the patches' and the stock library's answers mean. Pure; an answer of any shape is read.

/// A sign-in; refused when `token` is empty, and then `error` is the text to show.
struct XdfLogin
{
    QString token;
    /// The balance, "0" when the answer has none.
    QString credits;
    QString error;
};
XdfLogin decodeXdfLogin(const QJsonObject &answer);

struct XdfCatalog
{
    /// Maps of "id", "title", "os" (texts) and "credits" (a number).
    QVariantList items;
    /// The start of the answer, to be read as it came.
    QString text;
};
XdfCatalog decodeXdfCatalog(const QJsonObject &answer);

struct PatchList
{
    /// Maps of "id" (a number), "variant", "description" (texts) and "credits" (a number).
    QVariantList items;
    /// Empty when the answer names no balance.
    QString credits;
};
PatchList decodePatchList(const QJsonObject &answer);

/// The patched BIN, or nothing; the text and level for the status line hold for either.
struct PatchOutcome
{
    QByteArray file;
    QString status;
    int level = 0;
};
PatchOutcome decodePatchOutcome(const QJsonObject &answer);
/// What the patched copy of the file at `path` is called.
QString patchedName(const QString &path);

/// Why a download failed: the answer's reason, or the transport's `error` if there are no bytes. Empty on
/// success, which bytes are even beside a transport error: whole files are known to arrive with one.
QString downloadError(const QByteArray &bytes, const QJsonObject &answer, const QString &error);

/// Maps of "id", "filename", "os", "module", "year", "make" and "model", all texts, in the service's order.
QVariantList decodeStockList(const QJsonObject &answer);
/// The nine filters of a stock search as the service names them, empty ones too.
QVariantMap stockFilters(const QString &make, const QString &fileType, const QString &folder,
                         const QString &module, const QString &model, const QString &os,
                         const QString &keyword, const QString &sort, const QString &sortDir);
/// The last component of a name that the service sent, for `/` and `\` alike, so that it names a file in the
/// folder it is joined to and nowhere else; empty when that is not a file name.
QString bareFileName(const QString &name);
/// What a stock file is saved as: its bare name, made neither hidden nor one that the desktop starts by
/// itself; "stock.bin" when it has none.
QString stockFileName(const QString &name);
