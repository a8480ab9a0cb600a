#pragma once

#include <QByteArrayView>

#include <functional>
#include <optional>
#include <vector>

/// How often bytes occur in others, overlapping occurrences included. Counted by block, so that the number of
/// a single occurrence is known without counting from the start.
class MatchCount
{
public:
    /// Linear in the length of both, whatever the bytes. Nothing once `cancelled`, asked every 64 KiB,
    /// returns true. An empty needle occurs nowhere.
    static std::optional<MatchCount> of(QByteArrayView haystack, QByteArrayView needle,
                                        const std::function<bool()> &cancelled = {});

    /// Counts anew around `length` bytes at `offset`, after they were overwritten.
    void update(QByteArrayView haystack, QByteArrayView needle, qsizetype offset, qsizetype length);

    int total() const { return m_total; }
    /// The number of the occurrence at `position`, from 1, among those in the same haystack.
    int numberAt(QByteArrayView haystack, QByteArrayView needle, int position) const;

private:
    std::vector<int> m_blocks;
    int m_total = 0;
};
