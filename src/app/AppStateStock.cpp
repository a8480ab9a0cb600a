#include "app/AppState.h"

#include "api/StoreAnswers.h"
#include "core/FileTools.h"

using namespace Qt::StringLiterals;

void AppState::stockSearch(const QVariantMap &filters)
{
    m_client->stockList(filters, [this](const QJsonObject &answer, const QString &error) {
        if (failed(error))
            return;
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
                                if (!failed(downloadError(bytes, answer, error)))
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
    if (!open || !FileTools::isKvtFile(bareFileName(filename))) {
        if (!saveToDocuments(bytes, name).isEmpty())
            setStatus(u"Downloaded %1"_s.arg(name), 1);
        return;
    }
    QString error;
    const QString path = FileTools::exportToTemporary(bytes, name, &error);
    if (!failed(error))
        openKvt(path);
    setTab(u"main"_s);
}
