#include "app/HexEditing.h"

#include "core/ByteValues.h"
#include "core/FileTools.h"
#include "core/HexModel.h"
#include "core/HexText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QScopedValueRollback>
#include <QUndoCommand>
#include <QUndoStack>

#include <algorithm>
#include <cstring>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

// Six characters a byte, which the clipboard and whoever reads it have to hold.
constexpr int mostCopied = 16 << 20;
constexpr int mostTargets = 10;
// Copied within a frame.
constexpr qsizetype leastPrepared = 4 << 20;
constexpr qsizetype pieceSize = 1 << 20;

// The bits of the row's sixteen bytes that are in the range; none for a length of 0.
quint16 maskOf(qint64 rowStart, qint64 start, qint64 length)
{
    const qint64 first = std::clamp<qint64>(start - rowStart, 0, HexModel::bytesPerRow);
    const qint64 end = std::clamp<qint64>(start + length - rowStart, 0, HexModel::bytesPerRow);
    return static_cast<quint16>((1U << end) - (1U << first));
}

quint16 maskOfDifferences(QByteArrayView ours, QByteArrayView theirs, qint64 rowStart)
{
    const qint64 end = std::min<qint64>({rowStart + HexModel::bytesPerRow, ours.size(), theirs.size()});
    unsigned mask = 0;
    for (qint64 i = rowStart; i < end; ++i)
        mask |= ours[i] != theirs[i] ? 1U << (i - rowStart) : 0;
    return static_cast<quint16>(mask);
}

// As it can be gone to: without "0x" a final D would make it decimal.
QString targetText(int offset)
{
    return "0x"_L1 + offsetText(offset);
}

QClipboard *clipboard()
{
    const bool isGraphical = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    return isGraphical ? QGuiApplication::clipboard() : nullptr;
}

} // namespace

// A step that can be undone. It was already done when it is recorded.
class HexEditing::Overwrite : public QUndoCommand
{
public:
    Overwrite(HexModel *model, int offset, const QByteArray &before, const QByteArray &after, int run)
        : m_model(model)
        , m_offset(offset)
        , m_run(run)
        , m_before(before)
        , m_after(after)
    {
    }

    void undo() override { put(m_before); }

    void redo() override
    {
        if (m_isDone)
            put(m_after);
        m_isDone = true;
    }

    // Only typed bytes join others.
    int id() const override { return m_run > 0 ? 1 : -1; }

    bool mergeWith(const QUndoCommand *command) override
    {
        const auto *const next = static_cast<const Overwrite *>(command);
        const int end = m_offset + static_cast<int>(m_after.size());
        if (next->m_run != m_run || next->m_offset < end)
            return false;
        // Bytes in between were typed as they had been.
        const QByteArray same = m_model->bytes().sliced(end, next->m_offset - end);
        m_before += same + next->m_before;
        m_after += same + next->m_after;
        return true;
    }

    int offset() const { return m_offset; }
    int length() const { return static_cast<int>(m_after.size()); }

private:
    void put(const QByteArray &bytes)
    {
        m_model->applyPatch(m_offset, bytes);
        m_model->setCursor(m_offset);
    }

    HexModel *m_model;
    int m_offset;
    int m_run;
    bool m_isDone = false;
    QByteArray m_before;
    QByteArray m_after;
};

HexEditing::HexEditing(HexModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_matches(new HexMatches(model, this))
    , m_compare(new HexCompare(model, this))
    , m_steps(std::make_unique<QUndoStack>())
    , m_copying([this](std::optional<QByteArray> &&copy) {
        if (copy)
            m_model->replaceByEqual(std::move(*copy));
    })
{
    connect(m_model, &HexModel::modelReset, this, &HexEditing::startOver);
    connect(m_model, &HexModel::overwritten, this, &HexEditing::record);
    const auto endRun = [this] {
        if (!m_isTyping)
            endTyping();
    };
    connect(m_model, &HexModel::cursorChanged, this, endRun);
    connect(m_model, &HexModel::selectionChanged, this, endRun);
    connect(m_model, &HexModel::selectionChanged, this, &HexEditing::selectionChanged);
    // A selection reaches to the cursor, and moves with it.
    connect(m_model, &HexModel::cursorChanged, this, &HexEditing::marksChanged);
    connect(m_model, &HexModel::selectionChanged, this, &HexEditing::marksChanged);
    connect(m_model, &HexModel::matchChanged, this, &HexEditing::marksChanged);
    connect(m_matches, &HexMatches::changed, this, &HexEditing::marksChanged);
    connect(m_compare, &HexCompare::changed, this, &HexEditing::marksChanged);
    connect(m_compare, &HexCompare::failed, this, [this](const QString &error) { emit said(error, 0); });
    connect(m_compare, &HexCompare::finished, this,
            [this] { emit said(u"Compared with %1."_s.arg(m_compare->name()), 1); });
    connect(m_model, &HexModel::aboutToChange, this, [this] { m_copying.stop(); });
    connect(m_steps.get(), &QUndoStack::indexChanged, this, &HexEditing::undoChanged);
}

HexEditing::~HexEditing() = default;

void HexEditing::prepare(const QByteArray &held)
{
    const QByteArrayView bytes = m_model->bytes();
    const bool isShared = bytes.data() == m_saved.constData() || bytes.data() == held.constData();
    if (bytes.size() < leastPrepared || !isShared)
        return;
    m_copying.start([bytes](const auto &isGivenUp) {
        QByteArray copy(bytes.size(), Qt::Uninitialized);
        for (qsizetype at = 0; at < bytes.size() && !isGivenUp(); at += pieceSize) {
            const qsizetype length = std::min(pieceSize, bytes.size() - at);
            std::memcpy(copy.data() + at, bytes.data() + at, static_cast<size_t>(length));
        }
        return std::optional(std::move(copy));
    });
}

void HexEditing::startOver()
{
    endTyping();
    m_steps->clear();
    setBookmarks(QList<int>());
    markSaved();
}

void HexEditing::markSaved()
{
    m_saved = m_model->bytes();
    m_changes = ByteDifferences(m_saved.size());
    emit changesChanged();
    emit marksChanged();
}

bool HexEditing::hasFile()
{
    const bool has = m_model->byteCount() > 0;
    if (!has)
        emit said(u"No file is open."_s, 0);
    return has;
}

// Where a command that overwrites begins.
int HexEditing::editStart() const
{
    return m_model->selectionLength() > 0 ? m_model->selectionStart() : m_model->cursor();
}

// Where the way to another place begins. A place at the cursor counts, unless it is selected already.
int HexEditing::stepStart(bool forwards) const
{
    return editStart() - (forwards && m_model->selectionLength() == 0 ? 1 : 0);
}

void HexEditing::record(int offset, const QByteArray &before)
{
    m_changes.update(m_model->bytes(), m_saved, offset, before.size());
    emit changesChanged();
    emit marksChanged();
    if (m_isReplaying)
        return;
    if (!m_isTyping)
        endTyping();
    m_steps->push(new Overwrite(m_model, offset, before, m_model->bytes().sliced(offset, before.size()),
                                m_isTyping ? m_run : 0));
}

bool HexEditing::canUndo() const
{
    return m_steps->canUndo();
}

bool HexEditing::canRedo() const
{
    return m_steps->canRedo();
}

void HexEditing::undo()
{
    replay(true);
}

void HexEditing::redo()
{
    replay(false);
}

void HexEditing::replay(bool undoes)
{
    endTyping();
    const int index = undoes ? m_steps->index() - 1 : m_steps->index();
    const auto *const step = static_cast<const Overwrite *>(m_steps->command(index));
    if (!step) {
        emit said(undoes ? u"Nothing to undo."_s : u"Nothing to redo."_s, 0);
        return;
    }
    const QScopedValueRollback replaying(m_isReplaying, true);
    if (undoes)
        m_steps->undo();
    else
        m_steps->redo();
    emit shown();
    emit said(u"%1 %2 at 0x%3."_s.arg(undoes ? u"Undid"_s : u"Redid"_s, countText(step->length(), u"byte"_s),
                                      offsetText(step->offset())),
              1);
}

void HexEditing::setPending(const QString &digit)
{
    if (std::exchange(m_pending, digit) != digit)
        emit typingChanged();
}

void HexEditing::setTypesText(bool typesText)
{
    endTyping();
    if (std::exchange(m_typesText, typesText) != typesText)
        emit typingChanged();
}

void HexEditing::endTyping()
{
    ++m_run;
    m_isPastEnd = false;
    setPending({});
}

bool HexEditing::takeBackDigit()
{
    const bool had = !m_pending.isEmpty();
    setPending({});
    return had;
}

bool HexEditing::type(const QString &text)
{
    if (!hasFile())
        return false;
    const char character = text.size() == 1 ? text.front().toLatin1() : '\0';
    bool isDigit = false;
    text.toUInt(&isDigit, 16);
    if (m_typesText ? character < 32 || character > 126 : !isDigit || text.size() != 1) {
        emit said(m_typesText ? u"Only printable ASCII characters can be typed."_s
                              : u"Type hex digits here, or press Tab to type text."_s,
                  0);
        return false;
    }
    if (m_isPastEnd) {
        emit said(u"The end of the file is reached."_s, 0);
        return false;
    }
    if (m_model->selectionLength() > 0)
        m_model->setCursor(m_model->selectionStart());
    if (!m_typesText && m_pending.isEmpty()) {
        setPending(text.toUpper());
        return true;
    }

    const QScopedValueRollback typing(m_isTyping, true);
    const QByteArray byte =
        m_typesText ? QByteArray(1, character) : QByteArray::fromHex((m_pending + text).toLatin1());
    setPending({});
    const int offset = m_model->cursor();
    m_model->applyPatch(offset, byte);
    m_isPastEnd = offset == m_model->byteCount() - 1;
    m_model->setCursor(offset + 1);
    return true;
}

// Says nothing of success.
bool HexEditing::write(const QByteArray &bytes)
{
    endTyping();
    const int start = editStart();
    const int room = m_model->byteCount() - start;
    if (bytes.size() > room) {
        emit said(u"Does not fit: %1 at 0x%2, where only %3 left."_s.arg(
                      countText(static_cast<int>(bytes.size()), u"byte"_s), offsetText(start),
                      countText(room, u"byte"_s) + (room == 1 ? u" is"_s : u" are"_s)),
                  0);
        return false;
    }
    emit shown();
    return m_model->applyPatch(start, bytes);
}

void HexEditing::copy(Format format)
{
    if (!hasFile())
        return;
    endTyping();
    const int start = editStart();
    const int length = std::max(m_model->selectionLength(), 1);
    if (length > mostCopied && format != AsOffset) {
        emit said(u"Too much to copy: at most 16 MiB at once."_s, 0);
        return;
    }
    const QByteArray held = m_model->bytes();
    const QByteArrayView bytes = QByteArrayView(held).sliced(start, length);
    QString text;
    switch (format) {
    case AsHex:
        text = hexText(bytes);
        break;
    case AsText:
        text = asciiText(bytes);
        break;
    case AsCArray:
        text = cArrayText(bytes);
        break;
    case AsOffset:
        text = targetText(start) + (m_model->selectionLength() > 0 ? ':'_L1 + targetText(length) : QString());
        break;
    }
    if (QClipboard *const board = clipboard())
        board->setText(text);
    emit said(format == AsOffset ? u"Offset copied."_s : countText(length, u"byte"_s) + u" copied."_s, 1);
}

void HexEditing::paste()
{
    if (!hasFile())
        return;
    const QClipboard *const board = clipboard();
    const QByteArray bytes = board ? pastedBytes(board->text()) : QByteArray();
    if (bytes.isEmpty()) {
        emit said(u"The clipboard holds no text to paste."_s, 0);
        return;
    }
    if (write(bytes))
        emit said(u"Pasted %1."_s.arg(countText(static_cast<int>(bytes.size()), u"byte"_s)), 1);
}

// What the query reads, as often as the selection has room for it; empty, with the reason said, if there is
// nothing to do.
QByteArray HexEditing::patternOver(const QString &query)
{
    if (!hasFile())
        return {};
    const int length = m_model->selectionLength();
    const QByteArray pattern = FileTools::parseHexQuery(query);
    if (length == 0) {
        emit said(u"Select the bytes to fill first."_s, 0);
        return {};
    }
    if (pattern.isEmpty()) {
        emit said(u"Enter the byte or pattern to fill with."_s, 0);
        return {};
    }
    return pattern.repeated((length - 1) / pattern.size() + 1).first(length);
}

void HexEditing::fill(const QString &query)
{
    const QByteArray bytes = patternOver(query);
    if (!bytes.isEmpty() && write(bytes))
        emit said(u"Filled %1."_s.arg(countText(static_cast<int>(bytes.size()), u"byte"_s)), 1);
}

void HexEditing::xorWith(const QString &query)
{
    QByteArray bytes = patternOver(query);
    if (bytes.isEmpty())
        return;
    const char *const old = m_model->bytes().constData() + m_model->selectionStart();
    std::transform(bytes.cbegin(), bytes.cend(), old, bytes.begin(), std::bit_xor<char>());
    if (write(bytes))
        emit said(u"Changed %1 by XOR."_s.arg(countText(static_cast<int>(bytes.size()), u"byte"_s)), 1);
}

void HexEditing::pasteFile(const QString &path)
{
    if (!hasFile())
        return;
    QString error;
    const QByteArray bytes = FileTools::readFile(path, &error);
    if (bytes.isEmpty()) {
        emit said(error.isEmpty() ? u"Could not read file."_s : error, 0);
        return;
    }
    if (write(bytes))
        emit said(u"Pasted %1."_s.arg(countText(static_cast<int>(bytes.size()), u"byte"_s)), 1);
}

void HexEditing::replaceAll(const QString &query, const QString &replacement)
{
    if (!hasFile())
        return;
    const QByteArray needle = FileTools::parseHexQuery(query);
    const QByteArray bytes = FileTools::parseHexQuery(replacement);
    if (needle.isEmpty()) {
        emit said(u"Enter hex or ASCII to search."_s, 0);
        return;
    }
    if (bytes.size() != needle.size()) {
        emit said(u"Enter a patch of %1, as long as what it replaces."_s.arg(
                      countText(static_cast<int>(needle.size()), u"byte"_s)),
                  0);
        return;
    }
    const bool isPart = m_model->selectionLength() > 0;
    const int start = isPart ? m_model->selectionStart() : 0;
    const int length = isPart ? m_model->selectionLength() : m_model->byteCount();
    // A view, as another reference would make the write copy the file.
    const QByteArray part = QByteArray::fromRawData(m_model->bytes().constData() + start, length);
    const FileTools::Replaced replaced = FileTools::replaceBytes(part, needle, bytes);
    if (replaced.count == 0) {
        emit said(u"Not found."_s, 0);
        return;
    }
    endTyping();
    m_model->applyPatch(start + replaced.start, replaced.bytes);
    emit said(replaced.count == 1 ? u"Replaced 1 match."_s : u"Replaced %1 matches."_s.arg(replaced.count),
              1);
}

bool HexEditing::writeValue(int row, const QString &text, bool bigEndian)
{
    if (!hasFile())
        return false;
    const int offset = m_model->cursor();
    const QList<ByteValues::Row> values = ByteValues::at(m_model->bytes(), offset);
    if (row < 0 || row >= values.size() || values[row].littleEndian.isEmpty())
        return false;
    // Other bytes may have the same text: a dot stands for all that are not printable.
    if (text == (bigEndian ? values[row].bigEndian : values[row].littleEndian))
        return true;
    const auto bytes = ByteValues::bytesOf(row, text, bigEndian);
    if (!bytes) {
        emit said(u"Not a value of type %1: %2"_s.arg(values[row].name, text), 0);
        return false;
    }
    endTyping();
    m_model->applyPatch(offset, *bytes);
    emit said(u"%1 set at 0x%2."_s.arg(values[row].name, offsetText(offset)), 1);
    return true;
}

void HexEditing::selectAll()
{
    if (hasFile())
        m_model->select(0, m_model->byteCount());
}

QString HexEditing::changesText() const
{
    if (changedBytes() == 0)
        return {};
    return u"%1 changed in %2"_s.arg(countText(changedBytes(), u"byte"_s),
                                     countText(changedPlaces(), u"place"_s));
}

QString HexEditing::selectionText() const
{
    const int start = m_model->selectionStart();
    const int length = m_model->selectionLength();
    if (length == 0)
        return {};
    return u"Selected 0x%1\u20130x%2, %3"_s.arg(offsetText(start), offsetText(start + length - 1),
                                                countText(length, u"byte"_s));
}

void HexEditing::show(const ByteRange &range, const QString &kind, int number, int count)
{
    m_model->select(range.start, range.length);
    emit shown();
    emit said(u"%1 %2 of %3: %4 at 0x%5."_s.arg(kind, QString::number(number), QString::number(count),
                                                countText(range.length, u"byte"_s), offsetText(range.start)),
              1);
}

void HexEditing::nextChange()
{
    goToChange(&ByteDifferences::next);
}

void HexEditing::previousChange()
{
    goToChange(&ByteDifferences::previous);
}

void HexEditing::goToChange(Step step)
{
    if (!hasFile())
        return;
    const QByteArray bytes = m_model->bytes();
    const ByteRange range = (m_changes.*step)(bytes, m_saved, stepStart(step == &ByteDifferences::next));
    if (range.length == 0)
        emit said(u"No byte has changed."_s, 0);
    else
        show(range, u"Change"_s, m_changes.numberAt(bytes, m_saved, range.start), changedPlaces());
}

bool HexEditing::hasOther()
{
    if (!hasFile())
        return false;
    if (m_compare->isBusy() || !m_compare->isActive())
        emit said(m_compare->isBusy() ? m_compare->text() : u"Compare with a file first."_s, 0);
    return m_compare->isActive() && !m_compare->isBusy();
}

void HexEditing::nextDifference()
{
    if (hasOther())
        goToDifference(m_compare->next(stepStart(true)));
}

void HexEditing::previousDifference()
{
    if (hasOther())
        goToDifference(m_compare->previous(stepStart(false)));
}

void HexEditing::showDifference(int index)
{
    if (index >= 0 && hasOther())
        goToDifference(m_compare->place(index));
}

void HexEditing::goToDifference(const ByteRange &range)
{
    if (range.length == 0)
        emit said(u"No difference."_s, 0);
    else
        show(range, u"Difference"_s, m_compare->numberAt(range.start), m_compare->places());
}

void HexEditing::takeOver()
{
    if (!hasOther())
        return;
    const QByteArray other = m_compare->bytes();
    ByteRange range{m_model->selectionStart(), m_model->selectionLength()};
    if (range.length == 0)
        range = m_compare->placeAt(m_model->cursor());
    if (range.length == 0) {
        emit said(u"Select bytes, or move the cursor to a difference."_s, 0);
        return;
    }
    if (range.start + range.length > other.size()) {
        emit said(u"The other file ends before that."_s, 0);
        return;
    }
    endTyping();
    m_model->applyPatch(range.start, other.sliced(range.start, range.length));
    emit shown();
    emit said(u"Took over %1 at 0x%2."_s.arg(countText(range.length, u"byte"_s), offsetText(range.start)), 1);
}

QStringList HexEditing::bookmarks() const
{
    QStringList texts;
    for (const int offset : m_bookmarks)
        texts.append(targetText(offset));
    return texts;
}

void HexEditing::setBookmarks(const QList<int> &bookmarks)
{
    if (std::exchange(m_bookmarks, bookmarks) == bookmarks)
        return;
    emit bookmarksChanged();
    emit marksChanged();
}

void HexEditing::toggleBookmark()
{
    if (!hasFile())
        return;
    const int offset = editStart();
    QList<int> bookmarks = m_bookmarks;
    const bool isRemoved = bookmarks.removeOne(offset);
    if (!isRemoved)
        bookmarks.append(offset);
    std::ranges::sort(bookmarks);
    setBookmarks(bookmarks);
    emit said(
        (isRemoved ? u"Bookmark removed at 0x%1."_s : u"Bookmark set at 0x%1."_s).arg(offsetText(offset)), 1);
}

void HexEditing::nextBookmark()
{
    goToBookmark(std::ranges::upper_bound(std::as_const(m_bookmarks), editStart()) - m_bookmarks.cbegin());
}

void HexEditing::previousBookmark()
{
    goToBookmark(std::ranges::lower_bound(std::as_const(m_bookmarks), editStart()) - m_bookmarks.cbegin()
                 - 1);
}

void HexEditing::goToBookmark(qsizetype index)
{
    if (!hasFile())
        return;
    if (m_bookmarks.isEmpty()) {
        emit said(u"No bookmark is set."_s, 0);
        return;
    }
    const qsizetype count = m_bookmarks.size();
    const qsizetype place = (index + count) % count;
    m_model->setCursor(m_bookmarks[place]);
    emit shown();
    emit said(u"Bookmark %1 of %2 at 0x%3."_s.arg(QString::number(place + 1), QString::number(count),
                                                  offsetText(m_bookmarks[place])),
              1);
}

void HexEditing::rememberTarget(const QString &target)
{
    const QString text = target.trimmed();
    m_targets.removeAll(text);
    m_targets.prepend(text);
    if (m_targets.size() > mostTargets)
        m_targets.removeLast();
    emit targetsChanged();
}

QList<HexRowMarks> HexEditing::marks(int firstRow, int rows) const
{
    const QByteArray bytes = m_model->bytes();
    const QByteArray other = m_compare->bytes();
    const QList<quint16> found = m_matches->masks(firstRow, rows);
    QList<HexRowMarks> marks(rows);
    for (int i = 0; i < rows; ++i) {
        const qint64 start = (qint64(firstRow) + i) * HexModel::bytesPerRow;
        marks[i].selected = maskOf(start, m_model->selectionStart(), m_model->selectionLength());
        // Of long matches only the last one is filled.
        const quint16 match = maskOf(start, m_model->matchStart(), m_model->matchLength());
        marks[i].found = static_cast<quint16>(found[i] | match);
        marks[i].changed = changedBytes() > 0 ? maskOfDifferences(bytes, m_saved, start) : quint16(0);
        marks[i].different = maskOfDifferences(bytes, other, start);
        const qint64 end = start + HexModel::bytesPerRow;
        for (auto at = std::ranges::lower_bound(m_bookmarks, start); at != m_bookmarks.cend() && *at < end;
             ++at)
            marks[i].bookmarked |= static_cast<quint16>(1U << (*at - start));
    }
    return marks;
}
