#include "core/MatchCount.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr qsizetype blockSize = 65536;

// Knuth, Morris and Pratt's search, which never looks at a byte twice, however close the matches are.
class Matcher
{
public:
    explicit Matcher(QByteArrayView needle)
        : m_needle(needle)
        , m_rest(static_cast<size_t>(needle.size()), 0)
    {
        for (qsizetype i = 1, matched = 0; i < needle.size(); ++i) {
            matched = step(matched, needle[i]);
            m_rest[static_cast<size_t>(i)] = matched;
        }
    }

    // Goes on where the last call ended, and returns how many matches end within `bytes`.
    int count(QByteArrayView bytes)
    {
        if (m_needle.size() == 1)
            return static_cast<int>(std::count(bytes.begin(), bytes.end(), m_needle[0]));
        int found = 0;
        for (const char *at = bytes.begin(); at != bytes.end(); ++at) {
            if (m_matched == 0) {
                at = static_cast<const char *>(
                    std::memchr(at, m_needle[0], static_cast<size_t>(bytes.end() - at)));
                if (!at)
                    break;
            }
            m_matched = step(m_matched, *at);
            if (m_matched == m_needle.size()) {
                ++found;
                m_matched = m_rest.back();
            }
        }
        return found;
    }

private:
    // How much of the needle matches after one more byte.
    qsizetype step(qsizetype matched, char next) const
    {
        while (matched > 0 && m_needle[matched] != next)
            matched = m_rest[static_cast<size_t>(matched - 1)];
        return m_needle[matched] == next ? matched + 1 : matched;
    }

    QByteArrayView m_needle;
    // How much of a partial match is left to go on with after the next byte differs.
    std::vector<qsizetype> m_rest;
    qsizetype m_matched = 0;
};

} // namespace

std::optional<MatchCount> MatchCount::of(QByteArrayView haystack, QByteArrayView needle,
                                         const std::function<bool()> &cancelled)
{
    MatchCount result;
    if (needle.isEmpty())
        return result;
    Matcher matcher(needle);
    for (qsizetype start = 0; start < haystack.size(); start += blockSize) {
        if (cancelled && cancelled())
            return std::nullopt;
        const int found = matcher.count(haystack.sliced(start, std::min(blockSize, haystack.size() - start)));
        result.m_blocks.push_back(found);
        result.m_total += found;
    }
    return result;
}

void MatchCount::update(QByteArrayView haystack, QByteArrayView needle, qsizetype offset, qsizetype length)
{
    const qsizetype lastEnd = std::min(offset + length + needle.size() - 1, haystack.size());
    qsizetype start = offset / blockSize * blockSize;
    // What begins before the block may end in it.
    const qsizetype before = std::max<qsizetype>(start - needle.size() + 1, 0);
    Matcher matcher(needle);
    matcher.count(haystack.sliced(before, start - before));
    for (; start < lastEnd; start += blockSize) {
        int &count = m_blocks[static_cast<size_t>(start / blockSize)];
        m_total -= count;
        count = matcher.count(haystack.sliced(start, std::min(blockSize, haystack.size() - start)));
        m_total += count;
    }
}

int MatchCount::numberAt(QByteArrayView haystack, QByteArrayView needle, int position) const
{
    // Counted are the ends of matches, up to that of the one asked for.
    const qsizetype end = position + needle.size();
    const qsizetype block = (end - 1) / blockSize;
    int number = 0;
    for (qsizetype i = 0; i < block; ++i)
        number += m_blocks[static_cast<size_t>(i)];
    // What begins before the block may end in it.
    const qsizetype before = std::max<qsizetype>(block * blockSize - needle.size() + 1, 0);
    Matcher matcher(needle);
    return number + matcher.count(haystack.sliced(before, end - before));
}
