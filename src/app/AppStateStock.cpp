#include "app/AppState.h"

#include "api/JsonReading.h"
#include "api/StoreAnswers.h"
#include "core/FileTools.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

const QString unreadable = u"Could not read file."_s;

/// Where a download goes that is to be opened; empty, and `error` says why, when the temporary folder is
/// gone.
QString temporaryPath(const QString &name, QString *error)
{
    const QString folder = QDir::tempPath();
    if (!folder.isEmpty())
        return folder + '/'_L1 + name;
    // Qt only returns an empty path, which would lead to the root. The system says why.
    const QString gone = qEnvironmentVariable("TMPDIR", u"/tmp"_s);
    FileTools::readFile(gone + '/'_L1 + name, error);
    if (error->isEmpty())
        *error = unreadable;
    return {};
}

/// Why a download that could not be written whole at `path` cannot be opened there; empty when it lies there
/// all the same. Part of it, or somebody's file of that name, must not pass for what was downloaded.
QString whyNotOpened(const QString &path, const QByteArray &bytes, const QString &writeError)
{
    QString error;
    const QByteArray found = FileTools::readFile(path, &error);
    if (found.isEmpty())
        return error.isEmpty() ? unreadable : error;
    return found == bytes ? QString() : writeError;
}

} // namespace

void AppState::stockSearch(const QVariantMap &filters)
{
    m_client->stockList(filters, [this](const QJsonObject &answer, const QString &error) {
        if (!error.isEmpty()) {
            setStatus(error, 0);
            return;
        }
        m_stockRows = decodeStockList(answer);
        emit stockChanged();
        setStatus(u"%1 stock file(s)."_s.arg(m_stockRows.size()), 1);
    });
}

void AppState::stockSearchFields(const QString &make, const QString &fileType, const QString &folder,
                                 const QString &module, const QString &model, const QString &os,
                                 const QString &keyword, const QString &sort, const QString &sortDir)
{
    stockSearch(stockFilters(make, fileType, folder, module, model, os, keyword, sort, sortDir));
}

void AppState::clearStock()
{
    m_stockRows.clear();
    emit stockChanged();
}

void AppState::stockDownload(int index, bool openKvt)
{
    if (index < 0 || index >= m_stockRows.size())
        return;
    const QVariantMap row = m_stockRows.at(index).toMap();
    m_client->stockDownload(row.value(u"id"_s).toString(),
                            [this, openKvt, filename = row.value(u"filename"_s).toString()](
                                const QByteArray &bytes, const QJsonObject &answer, const QString &error) {
                                const QString refusal = jsonString(answer, u"error"_s);
                                if (!refusal.isEmpty() || (!error.isEmpty() && bytes.isEmpty())) {
                                    setStatus(refusal.isEmpty() ? error : refusal, 0);
                                    return;
                                }
                                finishStockDownload(bytes, filename, openKvt);
                            });
}

QString AppState::stockFileName(const QString &filename) const
{
    return ::stockFileName(filename);
}

void AppState::finishStockDownload(const QByteArray &bytes, const QString &filename, bool open)
{
    const QString name = stockFileName(filename);
    // The service's own name tells a tune file, whatever a leading dot became.
    if (!open || !bareFileName(filename).endsWith(".kvt"_L1, Qt::CaseInsensitive)) {
        if (!saveToDocuments(bytes, name).isEmpty())
            setStatus(u"Downloaded %1"_s.arg(name), 1);
        return;
    }
    QString error;
    const QString path = temporaryPath(name, &error);
    // Does not read a file that was refused.
    if (!path.isEmpty() && !FileTools::writePrivateFile(path, bytes, &error) && FileTools::isOwnFile(path))
        error = whyNotOpened(path, bytes, error);
    if (error.isEmpty() && FileTools::isOwnFile(path, &error))
        openKvt(path);
    else
        setStatus(error, 0);
    setTab(u"main"_s);
}
