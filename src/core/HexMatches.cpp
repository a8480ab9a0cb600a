#include "core/HexMatches.h"

#include "core/FileTools.h"
#include "core/HexModel.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The matches in sight are looked for with every frame.
constexpr qsizetype longestMarked = 256;
// Within a frame.
constexpr qsizetype mostCountedAtOnce = 1 << 20;

} // namespace

HexMatches::HexMatches(HexModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_counting([this](std::optional<MatchCount> &&count) {
        m_count = std::move(count);
        emit changed();
    })
{
    connect(m_model, &HexModel::aboutToChange, this, [this] { m_counting.stop(); });
    connect(m_model, &HexModel::modelReset, this, &HexMatches::forgetCount);
    connect(m_model, &HexModel::dataChangedSig, this, &HexMatches::count);
    connect(m_model, &HexModel::overwritten, this,
            [this](int offset, const QByteArray &before) { countAround(offset, before.size()); });
    connect(m_model, &HexModel::matchChanged, this, &HexMatches::changed);
}

void HexMatches::setNeedle(const QByteArray &needle)
{
    if (needle == m_needle)
        return;
    forgetCount();
    m_needle = needle;
    count();
    emit changed();
}

QString HexMatches::text() const
{
    if (!m_count)
        return {};
    const int start = m_model->matchStart();
    const int total = m_count->total();
    if (start < 0 || m_model->matchLength() != m_needle.size())
        return total == 1 ? u"1 match"_s : u"%1 matches"_s.arg(total);
    return u"%1 of %2"_s.arg(m_count->numberAt(m_model->bytes(), m_needle, start)).arg(total);
}

QList<quint16> HexMatches::masks(int firstRow, int rows) const
{
    QList<quint16> masks(rows, 0);
    const QByteArray bytes = m_model->bytes();
    const qint64 length = m_needle.size();
    if (length == 0 || length > longestMarked)
        return masks;
    // A match that is in sight in part only has its other part just outside.
    const qint64 firstByte = qint64(firstRow) * HexModel::bytesPerRow;
    const qint64 from = std::max<qint64>(firstByte - length + 1, 0);
    const qint64 end =
        std::min<qint64>(firstByte + qint64(rows) * HexModel::bytesPerRow + length - 1, bytes.size());
    if (from >= end)
        return masks;
    const QByteArray seen = QByteArray::fromRawData(bytes.constData() + from, end - from);
    qint64 marked = 0;
    for (int at = FileTools::findBytes(seen, m_needle, 0); at >= 0;
         at = FileTools::findBytes(seen, m_needle, at + 1)) {
        for (qint64 i = std::max<qint64>(marked, at); i < at + length; ++i) {
            const qint64 position = from + i - firstByte;
            if (position >= 0 && position < qint64(rows) * HexModel::bytesPerRow)
                masks[position / HexModel::bytesPerRow] |=
                    static_cast<quint16>(1U << (position % HexModel::bytesPerRow));
        }
        marked = at + length;
    }
    return masks;
}

void HexMatches::forgetCount()
{
    m_count.reset();
    m_counting.stop();
}

void HexMatches::countAround(int offset, qsizetype length)
{
    if (!m_count)
        return;
    if (length + m_needle.size() > mostCountedAtOnce) {
        forgetCount();
        count();
    } else {
        m_count->update(m_model->bytes(), m_needle, offset, length);
    }
    emit changed();
}

void HexMatches::count()
{
    // A run of edits is counted once, after it.
    if (m_count || m_needle.isEmpty() || std::exchange(m_isDue, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isDue = false;
            m_counting.stop();
            if (m_needle.isEmpty())
                return;
            // A view, not a copy: a reference released late would make the next write detach.
            m_counting.start([bytes = QByteArrayView(m_model->bytes()), needle = m_needle](
                                 const auto &isGivenUp) { return MatchCount::of(bytes, needle, isGivenUp); });
        },
        Qt::QueuedConnection);
}
