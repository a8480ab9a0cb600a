#include "app/AppState.h"

#include "core/FileTools.h"
#include "core/Version.h"

namespace {

constexpr qsizetype shownAnswerLength = 240;

}

void AppState::workerConvert(const QString &operation, const QByteArray &input, const QString &inputName,
                             const FieldList &fields, const QList<std::pair<QString, QByteArray>> &extraFiles,
                             const QString &outName)
{
    if (input.isEmpty()) {
        setStatus(QStringLiteral("No input file."), 0);
        return;
    }
    const QString fileName = inputName.isEmpty() ? QStringLiteral("input.bin") : inputName;
    QList<WorkerFile> files{{QStringLiteral("file"), fileName, input}};
    for (const auto &[name, bytes] : extraFiles)
        files.append({name, name + QStringLiteral(".bin"), bytes});

    setBusy(true);
    m_client->kvtWorker(applicationVersion(), operation, fields, files,
                        [this, outName](const WorkerResult &result) { finishConversion(result, outName); });
}

void AppState::finishConversion(const WorkerResult &result, const QString &outName)
{
    setBusy(false);
    if (!result.ok) {
        setStatus(result.error, 0);
        return;
    }
    if (result.isJson) {
        setStatus(result.text.left(shownAnswerLength), 1);
        return;
    }
    QString error;
    const QString path = FileTools::exportToDocuments(result.data, outName, &error);
    if (path.isEmpty()) {
        setStatus(error, 0);
        return;
    }
    FileTools::revealInExplorer(path);
    if (outName.endsWith(QLatin1String(".kvt"), Qt::CaseInsensitive))
        openKvt(path);
    setStatus(QStringLiteral("Saved %1").arg(outName), 1);
}
