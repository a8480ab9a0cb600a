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
    hexFindBy(query, [this](const QByteArray &needle) {
        return FileTools::findNext(m_hexModel->bytes(), needle, m_hexModel->cursor() + 1);
    });
}

void AppState::hexFindPrevious(const QString &query)
{
    hexFindBy(query, [this](const QByteArray &needle) {
        return FileTools::findPrevious(m_hexModel->bytes(), needle, m_hexModel->cursor());
    });
}

void AppState::hexFindBy(const QString &query, const std::function<int(const QByteArray &)> &find)
{
    const QByteArray needle = FileTools::parseHexQuery(query);
    if (needle.isEmpty()) {
        m_hexModel->clearMatch();
        setStatus(u"Enter hex or ASCII to search."_s, 0);
        return;
    }
    const int position = find(needle);
    if (position < 0) {
        m_hexModel->clearMatch();
        setStatus(u"Not found."_s, 0);
        return;
    }
    m_hexModel->setMatch(position, static_cast<int>(needle.size()));
    m_hexModel->setCursor(position);
    setStatus(u"Found at 0x%1"_s.arg(position, 0, 16).toUpper(), 1);
}

bool AppState::hexGoTo(const QString &offset)
{
    if (m_hexModel->byteCount() == 0) {
        setStatus(u"No file is open."_s, 0);
        return false;
    }
    const std::optional<qint64> target =
        FileTools::parseOffset(offset, m_hexModel->cursor(), m_hexModel->byteCount());
    const int last = m_hexModel->byteCount() - 1;
    if (!target) {
        setStatus(u"Enter an offset such as 1F3A7, 127911d, +40 or end."_s, 0);
        return false;
    }
    if (*target < 0 || *target > last) {
        setStatus(u"Outside the file: its last byte is at 0x%1."_s.arg(QString::number(last, 16).toUpper()),
                  0);
        return false;
    }
    m_hexModel->setCursor(static_cast<int>(*target));
    setStatus(u"At 0x%1."_s.arg(QString::number(*target, 16).toUpper()), 1);
    return true;
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
