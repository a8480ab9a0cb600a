#include "StockCatalogue.h"

#include "SampleData.h"

#include <algorithm>
#include <iterator>

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
    QLatin1StringView ending;
    bool isContainer;
};
constexpr Kind kinds[] = {
    {"kvt"_L1, "kvt"_L1, true}, {"bin"_L1, "bin"_L1, false},  {"ctz"_L1, "ctz"_L1, true},
    {"kvt"_L1, "kvt"_L1, true}, {"ford"_L1, "vbf"_L1, false},
};

QByteArray contentOf(const StockFile &file, bool isContainer, int seed)
{
    if (!isContainer)
        return SampleData::noise(1024 * (1 + seed % 8), seed);
    SampleTune tune = SampleData::tune(1 + seed % 2, seed);
    tune.modules.first().mainOs = file.os;
    tune.modules.first().title = file.module;
    return SampleContainer::write(tune);
}

StockFile makeFile(int index)
{
    const QStringList &known = SampleData::mainOsNumbers();
    const Vehicle &vehicle = vehicles[size_t(index) % std::size(vehicles)];
    const bool isKnown = index < known.size();
    const Kind &kind = kinds[isKnown ? 0 : size_t(index) % std::size(kinds)];
    StockFile file;
    file.id = u"stock-%1"_s.arg(index + 1, 3, 10, QChar(u'0'));
    file.os = isKnown ? known[index] : u"12%1"_s.arg(300000 + index * 7919);
    file.module = modules[isKnown ? 0 : size_t(index) % std::size(modules)];
    file.make = vehicle.make;
    file.model = vehicle.model;
    file.year = firstYear + index * 7 % years;
    file.fileType = kind.type;
    file.folder = u"stock/%1/%2"_s.arg(file.make.isEmpty() ? u"OTHER"_s : file.make).arg(file.year);
    file.fileName = u"%1_%2_%3.%4"_s.arg(QString::number(file.year), file.model, file.os, kind.ending)
                        .replace(u' ', u'-');
    file.bytes = contentOf(file, kind.isContainer, 2000 + index);
    return file;
}

struct TextFilter
{
    QLatin1StringView name;
    QString StockFile::*text;
};
constexpr TextFilter textFilters[] = {
    {"make"_L1, &StockFile::make},
    {"folder"_L1, &StockFile::folder},
    {"module_type"_L1, &StockFile::module},
    {"model"_L1, &StockFile::model},
    {"os"_L1, &StockFile::os},
};

bool holds(const QString &text, const QString &part)
{
    return text.contains(part, Qt::CaseInsensitive);
}

bool passesType(const StockFile &file, const QString &type)
{
    return type.isEmpty() || file.fileType.compare(type, Qt::CaseInsensitive) == 0;
}

bool passesTexts(const StockFile &file, const QJsonObject &query)
{
    return std::all_of(std::begin(textFilters), std::end(textFilters), [&](const TextFilter &filter) {
        return holds(file.*filter.text, query.value(filter.name).toString());
    });
}

bool passesKeyword(const StockFile &file, const QString &keyword)
{
    return holds(file.fileName, keyword)
        || std::any_of(std::begin(textFilters), std::end(textFilters),
                       [&](const TextFilter &filter) { return holds(file.*filter.text, keyword); });
}

bool passes(const StockFile &file, const QJsonObject &query)
{
    return passesType(file, query.value("file_type"_L1).toString()) && passesTexts(file, query)
        && passesKeyword(file, query.value("keyword"_L1).toString());
}

using Less = bool (*)(const StockFile &, const StockFile &);

template <QString StockFile::*Text> bool lessText(const StockFile &a, const StockFile &b)
{
    return a.*Text < b.*Text;
}

struct Order
{
    QLatin1StringView name;
    Less less;
};
constexpr Order orders[] = {
    {""_L1, lessText<&StockFile::id>},
    {"make"_L1, lessText<&StockFile::make>},
    {"os"_L1, lessText<&StockFile::os>},
    {"module_type"_L1, lessText<&StockFile::module>},
    {"filename"_L1, lessText<&StockFile::fileName>},
    {"size"_L1, [](const StockFile &a, const StockFile &b) { return a.bytes.size() < b.bytes.size(); }},
    {"year"_L1, [](const StockFile &a, const StockFile &b) { return a.year < b.year; }},
};

/// Files that are equal in what they are sorted by keep their order in both directions.
bool sortFiles(QList<StockFile> &files, const QString &name, const QString &direction)
{
    const auto *order = std::find_if(std::begin(orders), std::end(orders),
                                     [&name](const Order &entry) { return entry.name == name; });
    const bool falls = direction == "desc"_L1;
    if (order == std::end(orders) || (!falls && !direction.isEmpty() && direction != "asc"_L1))
        return false;
    std::stable_sort(files.begin(), files.end(),
                     [less = order->less, falls](const StockFile &a, const StockFile &b) {
                         return falls ? less(b, a) : less(a, b);
                     });
    return true;
}

/// The first member that the search reads and that is no text; empty when there is none.
QString wrongMember(const QJsonObject &query)
{
    for (const QLatin1StringView name : {"make"_L1, "file_type"_L1, "folder"_L1, "module_type"_L1, "model"_L1,
                                         "os"_L1, "keyword"_L1, "sort"_L1, "sort_dir"_L1}) {
        const QJsonValue value = query.value(name);
        if (!value.isString() && !value.isUndefined())
            return name;
    }
    return {};
}

} // namespace

const QList<StockFile> &StockCatalogue::all()
{
    static const QList<StockFile> files = [] {
        QList<StockFile> made;
        for (int i = 0; i < fileCount; ++i)
            made.append(makeFile(i));
        return made;
    }();
    return files;
}

const StockFile *StockCatalogue::find(const QString &id)
{
    const QList<StockFile> &files = all();
    const auto found =
        std::find_if(files.begin(), files.end(), [&id](const StockFile &file) { return file.id == id; });
    return found == files.end() ? nullptr : &*found;
}

std::optional<QList<StockFile>> StockCatalogue::search(const QJsonObject &query, QString *error)
{
    const QString wrong = wrongMember(query);
    if (!wrong.isEmpty()) {
        *error = u"Not a text: %1"_s.arg(wrong);
        return std::nullopt;
    }
    QList<StockFile> found;
    std::copy_if(all().begin(), all().end(), std::back_inserter(found),
                 [&query](const StockFile &file) { return passes(file, query); });
    const QString sort = query.value("sort"_L1).toString();
    const QString direction = query.value("sort_dir"_L1).toString();
    if (!sortFiles(found, sort, direction)) {
        *error = u"Unknown order: %1 %2"_s.arg(sort, direction);
        return std::nullopt;
    }
    return found;
}
