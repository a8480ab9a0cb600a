#include "app/AppState.h"

#include "api/SegmentSwap.h"
#include "core/FileTools.h"
#include "core/Version.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

const QString selectedKey = u"selected"_s;

} // namespace

void AppState::pickSegmentFile(const QString &which, const QString &path)
{
    (which == "base"_L1 ? m_swap.basePath : m_swap.donorPath) = path;
    setStatus(u"%1 set: %2"_s.arg(which, QFileInfo(path).fileName()), 1);
    emit segmentsChanged();
}

QString AppState::swapBase()
{
    const QString base = m_swap.basePath.isEmpty() ? m_file.path : m_swap.basePath;
    if (!base.isEmpty() && !m_swap.donorPath.isEmpty())
        return base;
    setStatus(u"Pick a base KVT and a donor KVT."_s, 0);
    return {};
}

void AppState::previewSegments()
{
    const QString base = swapBase();
    if (base.isEmpty())
        return;
    // A file that cannot be read goes out empty: the client refuses an empty base, the service an empty
    // donor.
    const QList<WorkerFile> files{
        {u"file"_s, QFileInfo(base).fileName(), FileTools::readFile(base)},
        {u"donor"_s, QFileInfo(m_swap.donorPath).fileName(), FileTools::readFile(m_swap.donorPath)}};
    m_client->kvtWorker(applicationVersion(), u"segment_swap_preview"_s, {}, files,
                        [this, generation = m_file.generation](const WorkerResult &result) {
                            if (failed(result.error))
                                return;
                            // One truck's numbers must never show on another's file.
                            if (generation == m_file.generation)
                                applyKvtInfo(result.object);
                            m_swap.candidates = decodeSwapCandidates(result.object);
                            emit segmentsChanged();
                            setStatus(u"%1 swap candidate(s)."_s.arg(m_swap.candidates.size()), 1);
                        });
}

void AppState::applySegments()
{
    const QString base = swapBase();
    if (base.isEmpty())
        return;
    workerConvert(u"segment_swap"_s, FileTools::readFile(base), QFileInfo(base).fileName(),
                  {{u"swap_candidate_indices"_s, selectedCandidateIndices(m_swap.candidates)}},
                  {{u"donor"_s, FileTools::readFile(m_swap.donorPath)}}, u"swapped.kvt"_s);
}

void AppState::setCandidateSelected(int index, bool selected)
{
    if (index < 0 || index >= m_swap.candidates.size())
        return;
    QVariantMap candidate = m_swap.candidates.at(index).toMap();
    candidate.insert(selectedKey, selected);
    m_swap.candidates[index] = candidate;
    emit segmentsChanged();
}

void AppState::selectAllCandidates(bool selected)
{
    for (int i = 0; i < m_swap.candidates.size(); ++i)
        setCandidateSelected(i, selected);
}
