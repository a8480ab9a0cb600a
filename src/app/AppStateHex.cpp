#include "app/AppState.h"

#include "app/HexEditing.h"
#include "core/FileTools.h"
#include "core/HexText.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

void AppState::setShowHex(bool show)
{
    if (std::exchange(m_showHex, show) == show)
        return;
    if (show) {
        m_hexEditing->prepare(m_file.bytes);
    } else {
        m_hexEditing->endTyping();
        if (m_hexEditing->compare()->isBusy())
            m_hexEditing->compare()->stop();
    }
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
    m_hexEditing->endTyping();
    const QByteArray needle = FileTools::parseHexQuery(query);
    if (needle.isEmpty()) {
        m_hexModel->clearMatch();
        m_hexEditing->matches()->setNeedle({});
        setStatus(u"Enter hex or ASCII to search."_s, 0);
        return;
    }
    const int position = find(needle);
    if (position < 0) {
        m_hexModel->clearMatch();
        m_hexEditing->matches()->setNeedle({});
        setStatus(u"Not found."_s, 0);
        return;
    }
    m_hexModel->setMatch(position, static_cast<int>(needle.size()));
    m_hexModel->setCursor(position);
    m_hexEditing->matches()->setNeedle(needle);
    setStatus(u"Found at 0x%1"_s.arg(position, 0, 16).toUpper(), 1);
}

bool AppState::hexGoTo(const QString &offset)
{
    if (m_hexModel->byteCount() == 0) {
        setStatus(u"No file is open."_s, 0);
        return false;
    }
    m_hexEditing->endTyping();
    const int count = m_hexModel->byteCount();
    const auto target = FileTools::parseTarget(offset, m_hexModel->cursor(), count);
    if (!target) {
        setStatus(u"Enter an offset such as 1F3A7, 127911d, +40, end or 1F3A7:20."_s, 0);
        return false;
    }
    if (target->offset < 0 || target->offset >= count || target->length > count - target->offset) {
        setStatus(u"Outside the file: its last byte is at 0x%1."_s.arg(offsetText(count - 1)), 0);
        return false;
    }
    m_hexModel->setCursor(static_cast<int>(target->offset));
    if (target->length > 0)
        m_hexModel->select(static_cast<int>(target->offset), static_cast<int>(target->length));
    m_hexEditing->rememberTarget(offset);
    setStatus(target->length > 0 ? m_hexEditing->selectionText() + '.'_L1
                                 : u"At 0x%1."_s.arg(offsetText(target->offset)),
              1);
    return true;
}

void AppState::hexSaveSelection(const QString &path)
{
    const int length = m_hexModel->selectionLength();
    if (length == 0) {
        setStatus(u"Select the bytes to save first."_s, 0);
        return;
    }
    const QFileInfo file(path);
    if (file.exists() && !replacesOtherFile(path)) {
        setStatus(u"That is the open file: choose another one."_s, 0);
        return;
    }
    QString error;
    const QByteArray bytes = m_hexModel->bytes().sliced(m_hexModel->selectionStart(), length);
    if (!FileTools::writeFile(path, bytes, &error)) {
        setStatus(error, 0);
        return;
    }
    setStatus(u"Saved %1 as %2."_s.arg(countText(length, u"byte"_s), file.fileName()), 1);
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
