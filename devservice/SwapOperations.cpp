#include "Endpoints.h"
#include "SwapRules.h"
#include "WorkerOperations.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

struct SwapFiles
{
    SampleTune base;
    SampleTune donor;
    QByteArray donorBytes;
};

/// Nothing, with the reason in `error`, when a file cannot be used.
std::optional<SwapFiles> readFiles(const ServiceRequest &request, const ReceivedPart &file, QString *error)
{
    const ReceivedPart *part = request.part(u"donor"_s);
    if (!part || part->data.isEmpty()) {
        *error = u"No donor"_s;
        return std::nullopt;
    }
    const std::optional<SampleTune> base = SampleContainer::read(file.data, error);
    if (!base) {
        error->prepend(u"Base: "_s);
        return std::nullopt;
    }
    const std::optional<SampleTune> donor = SampleContainer::read(part->data, error);
    if (!donor) {
        error->prepend(u"Donor: "_s);
        return std::nullopt;
    }
    return SwapFiles{*base, *donor, part->data};
}

QJsonArray candidateArray(const QList<SwapCandidate> &candidates)
{
    QJsonArray result;
    for (const SwapCandidate &candidate : candidates) {
        result.append(QJsonObject{{u"targetIndex"_s, candidate.targetIndex},
                                  {u"donorIndex"_s, candidate.donorIndex},
                                  {u"label"_s, candidate.label},
                                  {u"name"_s, candidate.name},
                                  {u"size"_s, candidate.size}});
    }
    // A client has to name a candidate that comes without a label; let it meet one.
    if (!result.isEmpty()) {
        QJsonObject last = result.last().toObject();
        last.remove("label"_L1);
        result.replace(result.size() - 1, last);
    }
    return result;
}

ServiceAnswer preview(const ServiceRequest &request, const ReceivedPart &file)
{
    QString error;
    const std::optional<SwapFiles> files = readFiles(request, file, &error);
    if (!files)
        return errorAnswer(error);
    QJsonObject answer = infoObject(files->base);
    answer.insert(u"candidates"_s, candidateArray(SwapRules::candidates(files->base, files->donor)));
    return jsonAnswer(answer);
}

ServiceAnswer swap(const ServiceRequest &request, const ReceivedPart &file)
{
    QString error;
    const std::optional<SwapFiles> files = readFiles(request, file, &error);
    if (!files)
        return errorAnswer(error);
    const QString field = u"swap_candidate_indices"_s;
    if (!request.part(field))
        return errorAnswer(u"No swap_candidate_indices"_s);
    const std::optional<QList<SwapCandidate>> chosen =
        SwapRules::chosen(SwapRules::candidates(files->base, files->donor), request.field(field));
    if (!chosen)
        return errorAnswer(u"No such swap candidate: %1"_s.arg(request.field(field)));
    return bytesAnswer(SwapRules::swapped(file.data, files->donorBytes, *chosen));
}

constexpr WorkerOperation operations[] = {
    {"segment_swap_preview"_L1, preview},
    {"segment_swap"_L1, swap},
};

} // namespace

std::span<const WorkerOperation> swapOperations()
{
    return operations;
}
