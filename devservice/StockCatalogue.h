#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

struct StockFile
{
    QString id;
    QString fileName;
    QString os;
    QString module;
    QString make;
    QString model;
    QString folder;
    /// "kvt", "ctz", "bin" or "ford".
    QString fileType;
    int year = 0;
    QByteArray bytes;
};

/// The library of stock files: invented rows, the same ones every time. Pure, for any thread.
namespace StockCatalogue {

/// In the order of their identifiers. The first ones have the OS numbers of the sample files.
const QList<StockFile> &all();

/// Null for an unknown one.
const StockFile *find(const QString &id);

/// The files that pass every filter of `query`, in the order that its "sort" and "sort_dir" name. "make",
/// "folder", "module_type", "model" and "os" name a part of the text, "file_type" the whole of it, and
/// "keyword" a part of any text; case does not matter, and a filter that is empty or missing lets all pass.
/// Nothing, with the reason in `error`, for a filter that is no text or an order that is not known.
std::optional<QList<StockFile>> search(const QJsonObject &query, QString *error);

} // namespace StockCatalogue
