#include "app/AppState.h"

#include "core/FileTools.h"

using namespace Qt::StringLiterals;

void AppState::setShowHex(bool show)
{
    if (std::exchange(m_showHex, show) != show)
        emit showHexChanged();
}

void AppState::hexFind(const QString &query)
{
    const QByteArray needle = FileTools::parseHexQuery(query);
    if (needle.isEmpty()) {
        m_hexModel->clearMatch();
        setStatus(u"Enter hex or ASCII to search."_s, 0);
        return;
    }
    const int position = FileTools::findNext(m_hexModel->bytes(), needle, m_hexModel->cursor() + 1);
    if (position < 0) {
        m_hexModel->clearMatch();
        setStatus(u"Not found."_s, 0);
        return;
    }
    m_hexModel->setMatch(position, static_cast<int>(needle.size()));
    m_hexModel->setCursor(position);
    setStatus(u"Found at 0x%1"_s.arg(position, 0, 16).toUpper(), 1);
}

void AppState::hexPatch(const QString &query)
{
    const QByteArray patch = FileTools::parseHexQuery(query);
    if (!m_hexModel->applyPatch(m_hexModel->cursor(), patch)) {
        setStatus(u"Patch past EOF or empty."_s, 0);
        return;
    }
    setStatus(u"Patched %1 byte(s)."_s.arg(patch.size()), 1);
}

void AppState::hexWriteBack()
{
    m_file.bytes = m_hexModel->bytes();
    setStatus(u"Hex written back into the open file buffer."_s, 1);
    setShowHex(false);
}
