#include "Endpoints.h"
#include "SampleData.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int fileCount = 60;
constexpr int firstYear = 2003;
constexpr int years = 20;

struct Vehicle
{
    /// Empty for a module that is sold without a vehicle.
    QLatin1StringView make;
    QLatin1StringView model;
};
constexpr Vehicle vehicles[] = {
    {"CHEVROLET"_L1, "SILVERADO"_L1}, {"GMC"_L1, "SIERRA"_L1},         {"RAM"_L1, "2500"_L1},
    {"FORD"_L1, "F150"_L1},           {"CADILLAC"_L1, "CTS"_L1},       {"BUICK"_L1, "REGAL"_L1},
    {"DODGE"_L1, "CHARGER"_L1},       {"PONTIAC"_L1, "SOLSTICE"_L1},   {""_L1, "MARINE 8.1"_L1},
    {"HUMMER"_L1, "H2"_L1},           {"CHEVROLET"_L1, "CORVETTE"_L1},
};

constexpr QLatin1StringView modules[] = {"ECM"_L1, "TCM"_L1, "FPCM"_L1, "ACM"_L1};

struct Kind
{
    QLatin1StringView type;
    QLatin1StringView suffix;
    bool isContainer;
};
constexpr Kind kinds[] = {
    {"kvt"_L1, "kvt"_L1, true}, {"bin"_L1, "bin"_L1, false},  {"ctz"_L1, "ctz"_L1, true},
    {"kvt"_L1, "kvt"_L1, true}, {"ford"_L1, "vbf"_L1, false},
};

struct StockFile
{
    /// As the list shows it.
    QJsonObject row;
    QByteArray bytes;
};

/// The same one every time. The first ones have the OS numbers of the sample files.
StockFile makeFile(int index)
{
    const QStringList &known = SampleData::mainOsNumbers();
    const bool isKnown = index < known.size();
    const auto &[make, model] = vehicles[size_t(index) % std::size(vehicles)];
    const Kind &kind = kinds[isKnown ? 0 : size_t(index) % std::size(kinds)];
    const QString os = isKnown ? known[index] : u"12%1"_s.arg(300000 + index * 7919);
    const QString module = modules[isKnown ? 0 : size_t(index) % std::size(modules)];
    const int year = firstYear + index * 7 % years;
    const int seed = 2000 + index;

    SampleTune tune = SampleData::tune(1 + seed % 2, seed);
    tune.modules.first().mainOs = os;
    tune.modules.first().title = module;
    const QByteArray bytes =
        kind.isContainer ? SampleContainer::write(tune) : SampleData::noise(1024 * (1 + seed % 8), seed);
    const QString name = u"%1_%2_%3.%4"_s.arg(QString::number(year), model, os, kind.suffix);
    return {{{u"id"_s, u"stock-%1"_s.arg(index + 1, 3, 10, QChar(u'0'))},
             {u"filename"_s, QString(name).replace(u' ', u'-')},
             {u"os"_s, os},
             {u"module"_s, module},
             {u"year"_s, year},
             {u"make"_s, QString(make)},
             {u"model"_s, QString(model)},
             {u"folder"_s, u"stock/%1/%2"_s.arg(make.isEmpty() ? "OTHER"_L1 : make).arg(year)},
             {u"file_type"_s, QString(kind.type)},
             {u"size"_s, bytes.size()}},
            bytes};
}

const QList<StockFile> &stockFiles()
{
    static const QList<StockFile> files = [] {
        QList<StockFile> made;
        for (int i = 0; i < fileCount; ++i)
            made.append(makeFile(i));
        return made;
    }();
    return files;
}

/// What a search names, and the row's member that it means.
struct Column
{
    QLatin1StringView name;
    QLatin1StringView member;
    bool filters;
};
constexpr Column columns[] = {
    {"make"_L1, "make"_L1, true},   {"folder"_L1, "folder"_L1, true}, {"module_type"_L1, "module"_L1, true},
    {"model"_L1, "model"_L1, true}, {"os"_L1, "os"_L1, true},         {"filename"_L1, "filename"_L1, false},
    {"size"_L1, "size"_L1, false},  {"year"_L1, "year"_L1, false},
};

bool holds(const QJsonObject &row, QLatin1StringView member, const QString &part)
{
    return row.value(member).toString().contains(part, Qt::CaseInsensitive);
}

bool passes(const QJsonObject &row, const QJsonObject &query)
{
    const QString type = query.value("file_type"_L1).toString();
    const QString keyword = query.value("keyword"_L1).toString();
    bool hasKeyword = holds(row, "filename"_L1, keyword);
    for (const auto &[name, member, filters] : columns) {
        if (filters && !holds(row, member, query.value(name).toString()))
            return false;
        hasKeyword = hasKeyword || (filters && holds(row, member, keyword));
    }
    const QString rowType = row.value("file_type"_L1).toString();
    return hasKeyword && (type.isEmpty() || rowType.compare(type, Qt::CaseInsensitive) == 0);
}

/// Rows that are equal in what they are sorted by keep their order in both directions.
bool sortRows(QList<QJsonObject> &rows, const QString &name, const QString &direction)
{
    if (name.isEmpty())
        return true;
    const auto *column = std::ranges::find(columns, name, &Column::name);
    const bool falls = direction == "desc"_L1;
    if (column == std::end(columns) || (!falls && !direction.isEmpty() && direction != "asc"_L1))
        return false;
    std::ranges::stable_sort(rows, [falls, column](const QJsonObject &a, const QJsonObject &b) {
        const QJsonValue left = (falls ? b : a).value(column->member);
        const QJsonValue right = (falls ? a : b).value(column->member);
        return left.isDouble() ? left.toInt() < right.toInt() : left.toString() < right.toString();
    });
    return true;
}

/// The editor takes any JSON of status 200 for a list, so refusals have a status of their own.
ServiceAnswer list(const ServiceRequest &request)
{
    const std::optional<QJsonObject> query = jsonBody(request);
    if (!query)
        return errorAnswer(u"Not a JSON object"_s, 400);
    for (auto member = query->begin(); member != query->end(); ++member) {
        if (!member->isString())
            return errorAnswer(u"Not a text: %1"_s.arg(member.key()), 400);
    }
    QList<QJsonObject> rows;
    for (const StockFile &file : stockFiles()) {
        if (passes(file.row, *query))
            rows.append(file.row);
    }
    const QString sort = query->value("sort"_L1).toString();
    const QString direction = query->value("sort_dir"_L1).toString();
    if (!sortRows(rows, sort, direction))
        return errorAnswer(u"Unknown order: %1 %2"_s.arg(sort, direction), 400);
    QJsonArray files;
    for (const QJsonObject &row : std::as_const(rows))
        files.append(row);
    return jsonAnswer({{u"status"_s, u"ok"_s}, {u"files"_s, files}});
}

ServiceAnswer download(const ServiceRequest &request)
{
    if (!request.part(u"id"_s))
        return errorAnswer(u"No id"_s);
    const QString id = request.field(u"id"_s);
    for (const StockFile &file : stockFiles()) {
        if (file.row.value("id"_L1) == id)
            return bytesAnswer(file.bytes);
    }
    return errorAnswer(u"No such stock file: %1"_s.arg(id));
}

} // namespace

void addStockEndpoints(EndpointTable &table)
{
    table.add("POST", apiRoot() + "stock/list.aspx"_L1, list);
    table.add("POST", apiRoot() + "stock/download.aspx"_L1, download);
}
