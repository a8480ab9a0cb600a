#include "app/AppState.h"

#include "api/StoreAnswers.h"
#include "core/FileTools.h"

using namespace Qt::StringLiterals;

void AppState::setXdfEmail(const QString &email)
{
    if (std::exchange(m_xdf.email, email) != email)
        emit xdfChanged();
}

void AppState::setXdfPassword(const QString &password)
{
    if (std::exchange(m_xdf.password, password) != password)
        emit xdfChanged();
}

void AppState::xdfLogin()
{
    m_client->xdfLogin(m_xdf.email, m_xdf.password, [this](const QJsonObject &answer, const QString &error) {
        if (failed(error))
            return;
        const XdfLogin login = decodeXdfLogin(answer);
        if (failed(login.error))
            return;
        m_xdf.token = login.token;
        m_xdf.credits = login.credits;
        emit xdfChanged();
        setStatus(u"XDF signed in."_s, 1);
    });
}

void AppState::xdfCatalog()
{
    m_client->xdfCatalog(m_xdf.token, moduleOneOs(), [this](const QJsonObject &answer, const QString &error) {
        if (failed(error))
            return;
        XdfCatalog catalog = decodeXdfCatalog(answer);
        m_xdf.items = std::move(catalog.items);
        m_xdf.catalogText = std::move(catalog.text);
        emit xdfChanged();
        setStatus(u"Catalog: %1 item(s)."_s.arg(m_xdf.items.size()), 1);
    });
}

void AppState::xdfDownload(int index)
{
    if (index < 0 || index >= m_xdf.items.size())
        return;
    const QVariantMap item = m_xdf.items.at(index).toMap();
    const QString name = FileTools::sanitizeName(item.value(u"title"_s).toString()) + u".xdf"_s;
    m_client->xdfDownload(m_xdf.token, item.value(u"id"_s).toString(),
                          [this, name](const QByteArray &bytes, const QJsonObject &, const QString &error) {
                              // A file that happens to be JSON is not a refusal.
                              if (failed(downloadError(bytes, {}, error)))
                                  return;
                              if (!saveToDocuments(bytes, bareFileName(name)).isEmpty())
                                  setStatus(u"Downloaded XDF."_s, 1);
                          });
}
