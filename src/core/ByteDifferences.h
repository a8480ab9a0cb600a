#pragma once

#include <QByteArrayView>
#include <QList>

#include <utility>
#include <vector>

/// A run of bytes.
struct ByteRange
{
    /// -1, with a length of 0, where there is none.
    int start = -1;
    int length = 0;

    bool operator==(const ByteRange &) const = default;
};

/// Where two byte arrays differ, up to the end of the shorter one. Differences are counted by block, not kept
/// byte by byte: the memory stays below 1 MiB whatever differs, and an edit costs no more than its blocks.
/// The arrays themselves are not kept; each call gets them as they are now. Copies may be used on different
/// threads.
class ByteDifferences
{
public:
    /// No differences yet among `size` bytes; `update` counts them.
    explicit ByteDifferences(qsizetype size = 0);

    /// Counts anew around `length` bytes at `offset`, after they have changed in one of the arrays.
    void update(QByteArrayView ours, QByteArrayView theirs, qsizetype offset, qsizetype length);

    /// How many bytes differ.
    int bytes() const { return m_bytes; }
    /// How many places differ: runs of differing bytes with equal ones around them.
    int places() const { return m_places; }

    /// The place at `index` from the start of the file; 0 is the first.
    ByteRange place(QByteArrayView ours, QByteArrayView theirs, int index) const;
    /// The place that holds `position`, if that byte differs.
    ByteRange placeAt(QByteArrayView ours, QByteArrayView theirs, int position) const;
    /// The first place that begins after `position`; the first of all if there is none.
    ByteRange next(QByteArrayView ours, QByteArrayView theirs, int position) const;
    /// The last place that begins before `position`; the last of all if there is none.
    ByteRange previous(QByteArrayView ours, QByteArrayView theirs, int position) const;
    /// The number, from 1, of the place that begins at `start`.
    int numberAt(QByteArrayView ours, QByteArrayView theirs, int start) const;
    /// The file as `lines` lines from top to bottom: the runs of those that hold a difference, each as its
    /// first line and the one after its last.
    QList<std::pair<int, int>> map(int lines) const;

private:
    struct Block
    {
        int bytes = 0;
        /// How many places begin here.
        int places = 0;
    };

    qsizetype blockAt(qsizetype position) const { return position >> m_shift; }
    Block counted(QByteArrayView ours, QByteArrayView theirs, qsizetype block) const;
    ByteRange rangeFrom(QByteArrayView ours, QByteArrayView theirs, qsizetype start) const;
    qsizetype firstStart(QByteArrayView ours, QByteArrayView theirs, qsizetype from) const;
    qsizetype lastStart(QByteArrayView ours, QByteArrayView theirs, qsizetype before) const;
    const std::vector<int> &placesBefore() const;

    qsizetype m_size;
    /// A block is 2 to this power bytes: one row of the editor, more in a large file.
    int m_shift = 4;
    std::vector<Block> m_blocks;
    int m_bytes = 0;
    int m_places = 0;
    /// How many places begin before each block; made by placesBefore, empty after a change.
    mutable std::vector<int> m_placesBefore;
};
