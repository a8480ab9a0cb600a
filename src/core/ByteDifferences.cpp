#include "core/ByteDifferences.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr qsizetype mostBlocks = 65536;

bool differs(QByteArrayView ours, QByteArrayView theirs, qsizetype position)
{
    return ours[position] != theirs[position];
}

bool startsAt(QByteArrayView ours, QByteArrayView theirs, qsizetype position)
{
    return differs(ours, theirs, position) && (position == 0 || !differs(ours, theirs, position - 1));
}

} // namespace

ByteDifferences::ByteDifferences(qsizetype size)
    : m_size(size)
{
    while ((size >> m_shift) >= mostBlocks)
        ++m_shift;
    m_blocks.resize(static_cast<size_t>((size + (qsizetype(1) << m_shift) - 1) >> m_shift));
}

void ByteDifferences::update(QByteArrayView ours, QByteArrayView theirs, qsizetype offset, qsizetype length)
{
    const qsizetype known = std::min({ours.size(), theirs.size(), m_size});
    if (offset >= known || length <= 0)
        return;
    // Whether a place begins at the byte after them depends on the last of them.
    const qsizetype last = blockAt(std::min(offset + length, known - 1));
    for (qsizetype i = blockAt(offset); i <= last; ++i) {
        Block &block = m_blocks[static_cast<size_t>(i)];
        const Block now = counted(ours.first(known), theirs.first(known), i);
        m_bytes += now.bytes - block.bytes;
        m_places += now.places - block.places;
        block = now;
    }
    m_placesBefore.clear();
}

ByteDifferences::Block ByteDifferences::counted(QByteArrayView ours, QByteArrayView theirs,
                                                qsizetype block) const
{
    const qsizetype start = block << m_shift;
    const qsizetype length = std::min(qsizetype(1) << m_shift, ours.size() - start);
    const char *const a = ours.data() + start;
    const char *const b = theirs.data() + start;
    Block result;
    if (std::memcmp(a, b, static_cast<size_t>(length)) == 0)
        return result;
    result.bytes = a[0] != b[0] ? 1 : 0;
    result.places = startsAt(ours, theirs, start) ? 1 : 0;
    for (qsizetype i = 1; i < length; ++i) {
        const int here = a[i] != b[i] ? 1 : 0;
        const int before = a[i - 1] != b[i - 1] ? 1 : 0;
        result.bytes += here;
        result.places += here & ~before;
    }
    return result;
}

ByteRange ByteDifferences::rangeFrom(QByteArrayView ours, QByteArrayView theirs, qsizetype start) const
{
    if (start < 0)
        return {};
    qsizetype end = start + 1;
    while (end < m_size && differs(ours, theirs, end)) {
        // Blocks that differ throughout need no look.
        const qsizetype block = blockAt(end);
        const qsizetype next = std::min((block + 1) << m_shift, m_size);
        const bool differsThroughout =
            m_blocks[static_cast<size_t>(block)].bytes == next - (block << m_shift);
        end = differsThroughout ? next : end + 1;
    }
    return {static_cast<int>(start), static_cast<int>(end - start)};
}

// The first place that begins at `from` or later; -1 if there is none.
qsizetype ByteDifferences::firstStart(QByteArrayView ours, QByteArrayView theirs, qsizetype from) const
{
    for (qsizetype i = from; i < m_size;) {
        const qsizetype block = blockAt(i);
        const qsizetype end = std::min((block + 1) << m_shift, m_size);
        if (m_blocks[static_cast<size_t>(block)].places > 0) {
            for (; i < end; ++i) {
                if (startsAt(ours, theirs, i))
                    return i;
            }
        }
        i = end;
    }
    return -1;
}

// The last place that begins before `before`; -1 if there is none.
qsizetype ByteDifferences::lastStart(QByteArrayView ours, QByteArrayView theirs, qsizetype before) const
{
    for (qsizetype i = std::min(before, m_size); i > 0;) {
        const qsizetype block = blockAt(i - 1);
        const qsizetype start = block << m_shift;
        if (m_blocks[static_cast<size_t>(block)].places > 0) {
            for (; i > start; --i) {
                if (startsAt(ours, theirs, i - 1))
                    return i - 1;
            }
        }
        i = start;
    }
    return -1;
}

const std::vector<int> &ByteDifferences::placesBefore() const
{
    if (m_placesBefore.empty()) {
        m_placesBefore.reserve(m_blocks.size());
        int sum = 0;
        for (const Block &block : m_blocks) {
            m_placesBefore.push_back(sum);
            sum += block.places;
        }
    }
    return m_placesBefore;
}

ByteRange ByteDifferences::place(QByteArrayView ours, QByteArrayView theirs, int index) const
{
    if (index < 0 || index >= m_places)
        return {};
    // The last block with no more places before it than that holds the place, as it is not an empty one.
    const std::vector<int> &before = placesBefore();
    const auto block = std::upper_bound(before.cbegin(), before.cend(), index) - before.cbegin() - 1;
    qsizetype start = firstStart(ours, theirs, block << m_shift);
    for (int i = before[static_cast<size_t>(block)]; i < index; ++i)
        start = firstStart(ours, theirs, start + 1);
    return rangeFrom(ours, theirs, start);
}

int ByteDifferences::numberAt(QByteArrayView ours, QByteArrayView theirs, int start) const
{
    const qsizetype block = blockAt(start);
    int number = placesBefore()[static_cast<size_t>(block)];
    for (qsizetype i = block << m_shift; i <= start; ++i)
        number += startsAt(ours, theirs, i) ? 1 : 0;
    return number;
}

ByteRange ByteDifferences::placeAt(QByteArrayView ours, QByteArrayView theirs, int position) const
{
    if (position < 0 || position >= m_size || !differs(ours, theirs, position))
        return {};
    return rangeFrom(ours, theirs, lastStart(ours, theirs, qsizetype(position) + 1));
}

ByteRange ByteDifferences::next(QByteArrayView ours, QByteArrayView theirs, int position) const
{
    const qsizetype start = firstStart(ours, theirs, qsizetype(position) + 1);
    return rangeFrom(ours, theirs, start >= 0 ? start : firstStart(ours, theirs, 0));
}

ByteRange ByteDifferences::previous(QByteArrayView ours, QByteArrayView theirs, int position) const
{
    const qsizetype start = lastStart(ours, theirs, position);
    return rangeFrom(ours, theirs, start >= 0 ? start : lastStart(ours, theirs, m_size));
}

QList<std::pair<int, int>> ByteDifferences::map(int lines) const
{
    QList<std::pair<int, int>> runs;
    const auto lineOf = [&](size_t block) {
        return static_cast<int>(static_cast<qint64>(block) * lines / static_cast<qint64>(m_blocks.size()));
    };
    for (size_t i = 0; lines > 0 && i < m_blocks.size(); ++i) {
        if (m_blocks[i].bytes == 0)
            continue;
        const int first = lineOf(i);
        const int end = std::max(lineOf(i + 1), first + 1);
        if (!runs.isEmpty() && first <= runs.last().second)
            runs.last().second = std::max(runs.last().second, end);
        else
            runs.append({first, end});
    }
    return runs;
}
