#include "app/AppState.h"

#include "api/StoreAnswers.h"
#include "core/FileTools.h"

using namespace Qt::StringLiterals;

void AppState::loadPatches(const QString &calId)
{
    m_patches.calId = calId.isEmpty() ? moduleOneOs() : calId;
    m_client->patches(m_xdf.token, m_patches.calId, [this](const QJsonObject &answer, const QString &error) {
        if (failed(error))
            return;
        PatchList list = decodePatchList(answer);
        if (!list.credits.isEmpty())
            m_xdf.credits = list.credits;
        m_patches.items = std::move(list.items);
        emit xdfChanged();
        emit patcherChanged();
        setStatus(u"%1 patch(es) for %2."_s.arg(QString::number(m_patches.items.size()), m_patches.calId), 1);
    });
}

void AppState::applyPatchToBin(int index, const QString &path)
{
    if (index < 0 || index >= m_patches.items.size())
        return;
    const QByteArray bin = readInput(path);
    if (bin.isEmpty())
        return;
    const int patchId = m_patches.items.at(index).toMap().value(u"id"_s).toInt();
    m_client->applyPatch(m_xdf.token, patchId, bin, m_patches.calId,
                         [this, path](const QJsonObject &answer, const QString &error) {
                             if (failed(error))
                                 return;
                             const PatchOutcome outcome = decodePatchOutcome(answer);
                             if (!outcome.file.isEmpty()) {
                                 const QString saved =
                                     FileTools::exportToDocuments(outcome.file, patchedName(path));
                                 if (!saved.isEmpty())
                                     FileTools::revealInExplorer(saved);
                             }
                             setStatus(outcome.status, outcome.level);
                         });
}
