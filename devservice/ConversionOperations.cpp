#include "Endpoints.h"
#include "SampleData.h"
#include "SampleDefinition.h"
#include "StoredZip.h"
#include "WorkerOperations.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView xcalModes[] = {"kvt"_L1, "efi"_L1, "bench"_L1, "flat"_L1, "allseg"_L1};
constexpr QLatin1StringView skipVerifyValues[] = {"0"_L1, "1"_L1};

/// Of all modules, in their order.
QList<SampleSegment> segmentsOf(const SampleTune &tune)
{
    QList<SampleSegment> result;
    for (const SampleModule &module : tune.modules)
        result.append(module.segments);
    return result;
}

/// What a BIN is to the stand-in: the segments of a container, one after the other.
QByteArray toBin(const SampleTune &tune)
{
    QByteArray bin;
    for (const SampleSegment &segment : segmentsOf(tune))
        bin.append(segment.bytes);
    return bin;
}

/// The tune with the BIN's bytes in its segments. Where the BIN ends early the segments keep their own bytes;
/// what is left of it after the last segment is dropped.
SampleTune withBin(SampleTune tune, const QByteArray &bin)
{
    qsizetype position = 0;
    for (SampleModule &module : tune.modules) {
        for (SampleSegment &segment : module.segments) {
            const QByteArray piece = bin.mid(position, segment.bytes.size());
            segment.bytes.replace(0, piece.size(), piece);
            position += segment.bytes.size();
        }
    }
    return tune;
}

/// An empty file would look like a failed transfer, so it is refused.
ServiceAnswer binAnswer(const SampleTune &tune)
{
    const QByteArray bin = toBin(tune);
    return bin.isEmpty() ? errorAnswer(u"The file has no segments"_s) : bytesAnswer(bin);
}

ServiceAnswer containerToBin(const ServiceRequest &, const ReceivedPart &file)
{
    QString error;
    const std::optional<SampleTune> tune = SampleContainer::read(file.data, &error);
    return tune ? binAnswer(*tune) : errorAnswer(error);
}

/// The formats of other tools, of which nothing is known here: what is not a container is its own BIN.
ServiceAnswer foreignToBin(const ReceivedPart &file)
{
    const std::optional<SampleTune> tune = SampleContainer::read(file.data);
    return tune ? binAnswer(*tune) : bytesAnswer(file.data);
}

/// Empty when the field holds one of the values.
QString wrongOption(const ServiceRequest &request, QLatin1StringView field,
                    std::span<const QLatin1StringView> values)
{
    if (!request.part(field))
        return u"No %1"_s.arg(field);
    const QString value = request.field(field);
    const bool known = std::find(values.begin(), values.end(), value) != values.end();
    return known ? QString() : u"Unknown %1: %2"_s.arg(field, value);
}

ServiceAnswer xcalToBin(const ServiceRequest &request, const ReceivedPart &file)
{
    const QString wrong = wrongOption(request, "xcal_mode"_L1, xcalModes);
    return wrong.isEmpty() ? foreignToBin(file) : errorAnswer(wrong);
}

ServiceAnswer vbfToBin(const ServiceRequest &request, const ReceivedPart &file)
{
    const QString wrong = wrongOption(request, "vbf_skip_verify"_L1, skipVerifyValues);
    return wrong.isEmpty() ? foreignToBin(file) : errorAnswer(wrong);
}

ServiceAnswer containerToContainer(const ServiceRequest &, const ReceivedPart &file)
{
    QString error;
    const std::optional<SampleTune> tune = SampleContainer::read(file.data, &error);
    return tune ? bytesAnswer(SampleContainer::write(*tune)) : errorAnswer(error);
}

SampleTune importedBin(const QByteArray &bin)
{
    return SampleData::imported(u"Imported module"_s, {{u"Flash"_s, bin}});
}

ServiceAnswer importBin(const ServiceRequest &request, const ReceivedPart &file)
{
    const ReceivedPart *base = request.part(u"import"_s);
    if (!base)
        return bytesAnswer(SampleContainer::write(importedBin(file.data)));
    QString error;
    const std::optional<SampleTune> tune = SampleContainer::read(base->data, &error);
    if (!tune)
        return errorAnswer(u"Base: %1"_s.arg(error));
    return bytesAnswer(SampleContainer::write(withBin(*tune, file.data)));
}

ServiceAnswer importHeaderAndExport(const ServiceRequest &request, const ReceivedPart &)
{
    for (const QString &name : {u"header"_s, u"export"_s}) {
        if (!request.part(name) || request.part(name)->data.isEmpty())
            return errorAnswer(u"No %1"_s.arg(name));
    }
    const QList<SampleSegment> segments = {{u"Header"_s, request.part(u"header"_s)->data},
                                           {u"Export"_s, request.part(u"export"_s)->data}};
    return bytesAnswer(SampleContainer::write(SampleData::imported(u"CM2450 module"_s, segments)));
}

/// The way back: the first segment is the header, all that follows the export.
ServiceAnswer containerToZip(const ServiceRequest &, const ReceivedPart &file)
{
    QString error;
    const std::optional<SampleTune> tune = SampleContainer::read(file.data, &error);
    if (!tune)
        return errorAnswer(error);
    const QList<SampleSegment> segments = segmentsOf(*tune);
    if (segments.isEmpty())
        return errorAnswer(u"The file has no segments"_s);
    const QByteArray header = segments.first().bytes;
    const QByteArray rest = toBin(*tune).mid(header.size());
    return bytesAnswer(storedZip({{"header.bin", header}, {"export.bin", rest}}));
}

ServiceAnswer toDefinition(const ServiceRequest &, const ReceivedPart &file)
{
    const SampleTune tune = SampleContainer::read(file.data).value_or(importedBin(file.data));
    const SampleModule first = tune.modules.value(0);
    return bytesAnswer(SampleDefinition::write(first.title, first.mainOs, segmentsOf(tune)));
}

constexpr WorkerOperation operations[] = {
    {"convert_kvt2bin"_L1, containerToBin},
    {"convert_ctz2bin"_L1, containerToBin},
    {"convert_kvt2efi_live_bin"_L1, containerToBin},
    {"convert_ctz2kvt"_L1, containerToContainer},
    {"convert_bin2kvt_import"_L1, importBin},
    {"convert_cm2450_bin2kvt"_L1, importHeaderAndExport},
    {"convert_cm2450_kvt2bin"_L1, containerToZip},
    {"convert_vbf2bin"_L1, vbfToBin},
    {"convert_xcal2bin"_L1, xcalToBin},
    {"convert_ecfg2xdf"_L1, toDefinition},
};

} // namespace

std::span<const WorkerOperation> conversionOperations()
{
    return operations;
}
