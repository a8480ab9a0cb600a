#include "app/AppState.h"

#include "core/FileTools.h"

#include <algorithm>

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
    const int cursor = m_hexModel->cursor();
    int position = FileTools::findBytes(bytes, needle, cursor + 1);
    if (position < 0) {
        // All that begins after the cursor was looked at already.
        const qsizetype rest = std::min(bytes.size(), cursor + needle.size());
        position = FileTools::findBytes(QByteArray::fromRawData(bytes.constData(), rest), needle, 0);
    }
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
