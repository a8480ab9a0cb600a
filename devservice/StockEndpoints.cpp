#include "Endpoints.h"
#include "StockCatalogue.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

QJsonObject fileObject(const StockFile &file)
{
    return {{u"id"_s, file.id},
            {u"filename"_s, file.fileName},
            {u"os"_s, file.os},
            {u"module"_s, file.module},
            {u"year"_s, file.year},
            {u"make"_s, file.make},
            {u"model"_s, file.model},
            {u"folder"_s, file.folder},
            {u"file_type"_s, file.fileType},
            {u"size"_s, file.bytes.size()}};
}

/// The editor takes any JSON of status 200 for a list, so refusals have a status of their own.
ServiceAnswer list(const ServiceRequest &request)
{
    const std::optional<QJsonObject> query = jsonBody(request);
    if (!query)
        return errorAnswer(u"Not a JSON object"_s, 400);
    QString error;
    const std::optional<QList<StockFile>> found = StockCatalogue::search(*query, &error);
    if (!found)
        return errorAnswer(error, 400);
    QJsonArray files;
    for (const StockFile &file : *found)
        files.append(fileObject(file));
    return jsonAnswer({{u"status"_s, u"ok"_s}, {u"files"_s, files}});
}

ServiceAnswer download(const ServiceRequest &request)
{
    const QString missing = missingField(request, {"id"_L1});
    if (!missing.isEmpty())
        return errorAnswer(missing);
    const QString id = request.field(u"id"_s);
    const StockFile *file = StockCatalogue::find(id);
    return file ? bytesAnswer(file->bytes) : errorAnswer(u"No such stock file: %1"_s.arg(id));
}

} // namespace

void addStockEndpoints(EndpointTable &table)
{
    table.add("POST", apiRoot() + "stock/list.aspx"_L1, list);
    table.add("POST", apiRoot() + "stock/download.aspx"_L1, download);
}
