#include "SampleData.h"

#include <QDir>
#include <QFile>

#include <random>

using namespace Qt::StringLiterals;

namespace {

constexpr int libraryFiles = 200;
constexpr int flashSize = 65536;

struct ModuleKind
{
    QLatin1StringView title;
    QLatin1StringView system;
    /// With "%1" for the part that differs from file to file: six digits.
    QLatin1StringView mainOs;
};
constexpr ModuleKind moduleKinds[] = {
    {"Engine control module"_L1, "E38 sample"_L1, "12%1"_L1},
    {"Transmission control module"_L1, "T42 sample"_L1, "24%1"_L1},
    {"Diesel control module"_L1, "CM sample"_L1, "50%1AB"_L1},
    {"Fuel pump module"_L1, "FP sample"_L1, "130%1"_L1},
    {"Aftertreatment module"_L1, "AT sample"_L1, "51%1CD"_L1},
};

struct SegmentKind
{
    QLatin1StringView name;
    int size;
};
constexpr SegmentKind segmentKinds[] = {
    {"System"_L1, 512},      {"Fuel"_L1, 1024},       {"Spark"_L1, 768},
    {"Speedometer"_L1, 256}, {"Diagnostics"_L1, 640},
};

struct TuneFile
{
    QLatin1StringView name;
    int modules;
    int seed;
};
constexpr TuneFile tuneFiles[] = {
    {"one-module.kvt"_L1, 1, 1}, {"two-modules.kvt"_L1, 2, 2}, {"five-modules.kvt"_L1, 5, 3},
    {"donor.kvt"_L1, 1, 4},      {"one-module.ctz"_L1, 1, 5},
};
constexpr int flashSeed = 6;

struct Vehicle
{
    QLatin1StringView make;
    QLatin1StringView model;
};
constexpr Vehicle vehicles[] = {
    {"CHEVROLET"_L1, "SILVERADO"_L1}, {"GMC"_L1, "SIERRA"_L1},   {"RAM"_L1, "2500"_L1},
    {"FORD"_L1, "F150"_L1},           {"CADILLAC"_L1, "CTS"_L1},
};

QString digits(int number, int count)
{
    return u"%1"_s.arg(number, count, 10, QChar(u'0'));
}

SampleModule module(int index, int seed)
{
    const ModuleKind &kind = moduleKinds[size_t(index) % std::size(moduleKinds)];
    SampleModule result;
    result.title = kind.title;
    result.vin = SampleData::vin(seed);
    result.serial = u"SN%1%2"_s.arg(digits(seed, 6), digits(index + 1, 2));
    result.mainOs = QString(kind.mainOs).arg(digits(650000 + seed * 7 + index, 6));
    result.rows = {{u"System"_s, kind.system},
                   {u"Fuel System"_s, digits(13000000 + seed * 11 + index, 8)},
                   {u"Speedometer"_s, digits(14000000 + seed * 13 + index, 8)},
                   {u"Engine Diag"_s, digits(15000000 + seed * 17 + index, 8)},
                   {u"Engine Op"_s, digits(16000000 + seed * 19 + index, 8)},
                   {u"Hardware"_s, u"HW-%1"_s.arg(digits(index + 1, 3))}};
    int segmentSeed = seed * 1000 + index * 10;
    for (const SegmentKind &segment : segmentKinds)
        result.segments.append({segment.name, SampleData::noise(segment.size, segmentSeed++)});
    return result;
}

bool save(const QDir &folder, const QString &path, const QByteArray &bytes, QString *error)
{
    QFile file(folder.filePath(path));
    if (folder.mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(bytes) == bytes.size() && file.flush())
        return true;
    if (error)
        *error = u"Cannot write %1: %2"_s.arg(file.fileName(), file.errorString());
    return false;
}

SampleTune smallTune(int seed, const QString &os)
{
    SampleTune tune = SampleData::tune(1, seed);
    tune.modules.first().mainOs = os;
    tune.modules.first().segments.resize(1);
    return tune;
}

bool saveLibraryFile(const QDir &folder, int index, QString *error)
{
    const Vehicle &vehicle = vehicles[size_t(index) % std::size(vehicles)];
    const QString year = QString::number(2004 + index % 19);
    const QString number = digits(100000 + index * 37, 6);
    const QString os = index % 3 == 0 ? u"50%1AB"_s.arg(number) : u"12%1"_s.arg(number).left(7 + index % 2);
    const QString suffix = index % 7 == 0 ? u"ctz"_s : u"kvt"_s;
    const QString name = u"%1_%2_%3.%4"_s.arg(year, vehicle.model, os, suffix);
    const QString path = u"library/%1/%2/%3"_s.arg(vehicle.make, year, name);
    return save(folder, path, SampleContainer::write(smallTune(1000 + index, os)), error);
}

} // namespace

QString SampleData::vin(int index)
{
    static const QString values = u"0123456789.ABCDEFGH..JKLMN.P.R..STUVWXYZ"_s;
    static constexpr int weights[] = {8, 7, 6, 5, 4, 3, 2, 10, 0, 9, 8, 7, 6, 5, 4, 3, 2};
    QString result = u"1GC"_s + u"RKSE0"_s + u'0' + u'F' + u'Z' + digits(index % 1000000, 6);
    int sum = 0;
    for (qsizetype i = 0; i < result.size(); ++i)
        sum += int(values.indexOf(result.at(i)) % 10) * weights[i];
    result[8] = sum % 11 == 10 ? QChar(u'X') : QChar(u'0' + sum % 11);
    return result;
}

SampleTune SampleData::tune(int modules, int seed)
{
    SampleTune result;
    result.created = u"2015-0%1-%2 09:30:00"_s.arg(1 + seed % 9).arg(digits(1 + seed % 28, 2));
    result.softwareVersion = u"3.9.%1"_s.arg(seed % 10);
    result.interfaceCalId = digits(18000000 + seed, 8);
    for (int i = 0; i < modules; ++i)
        result.modules.append(module(i, seed));
    return result;
}

SampleTune SampleData::imported(const QString &title, const QList<SampleSegment> &segments)
{
    SampleTune result = tune(1, 0);
    result.modules.first().title = title;
    result.modules.first().segments = segments;
    return result;
}

QByteArray SampleData::noise(int size, int seed)
{
    // The engine's output is fixed by the standard, a distribution's is not.
    std::mt19937 engine(static_cast<std::mt19937::result_type>(seed));
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = static_cast<char>(engine() & 0xff);
    return bytes;
}

const QStringList &SampleData::mainOsNumbers()
{
    static const QStringList numbers = [] {
        QStringList made;
        for (const TuneFile &file : tuneFiles)
            made.append(tune(1, file.seed).modules.first().mainOs);
        return made;
    }();
    return numbers;
}

bool SampleData::generate(const QString &folderPath, QString *error)
{
    const QDir folder(folderPath);
    bool done = save(folder, u"flash.bin"_s, noise(flashSize, flashSeed), error);
    for (const TuneFile &file : tuneFiles)
        done = done && save(folder, file.name, SampleContainer::write(tune(file.modules, file.seed)), error);
    for (int i = 0; done && i < libraryFiles; ++i)
        done = saveLibraryFile(folder, i, error);
    return done;
}
