#include "app/AppState.h"

#include "core/FileTools.h"

void AppState::setShowHex(bool show)
{
    if (m_showHex == show)
        return;
    m_showHex = show;
    emit showHexChanged();
}

void AppState::hexFind(const QString &query)
{
    const QByteArray needle = FileTools::parseHexQuery(query);
    if (needle.isEmpty()) {
        m_hexModel->clearMatch();
        setStatus(QStringLiteral("Enter hex or ASCII to search."), 0);
        return;
    }
    const QByteArray bytes = m_hexModel->bytes();
    int position = FileTools::findBytes(bytes, needle, m_hexModel->cursor() + 1);
    if (position < 0)
        position = FileTools::findBytes(bytes, needle, 0);
    if (position < 0) {
        m_hexModel->clearMatch();
        setStatus(QStringLiteral("Not found."), 0);
        return;
    }
    m_hexModel->setMatch(position, static_cast<int>(needle.size()));
    m_hexModel->setCursor(position);
    setStatus(QStringLiteral("Found at 0x%1").arg(position, 0, 16).toUpper(), 1);
}

void AppState::hexPatch(const QString &query)
{
    const QByteArray patch = FileTools::parseHexQuery(query);
    if (!m_hexModel->applyPatch(m_hexModel->cursor(), patch)) {
        setStatus(QStringLiteral("Patch past EOF or empty."), 0);
        return;
    }
    setStatus(QStringLiteral("Patched %1 byte(s).").arg(patch.size()), 1);
}

void AppState::hexWriteBack()
{
    m_file.bytes = m_hexModel->bytes();
    setStatus(QStringLiteral("Hex written back into the open file buffer."), 1);
    setShowHex(false);
}
