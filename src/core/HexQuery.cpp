#include "core/FileTools.h"

#include "core/HexText.h"

#include <QByteArrayView>
#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cstring>

#ifndef __GLIBC__
#include <functional>
#endif

using namespace Qt::StringLiterals;

namespace {

// Knuth, Morris and Pratt's search from the end: memmem knows one direction only.
qsizetype lastIndexOf(QByteArrayView haystack, QByteArrayView needle)
{
    const qsizetype length = needle.size();
    const auto fromEnd = [](QByteArrayView bytes, qsizetype i) { return bytes[bytes.size() - 1 - i]; };
    // How much of a partial match is left to go on with after the next byte differs.
    QList<qsizetype> rest(length, 0);
    for (qsizetype i = 1, matched = 0; i < length; ++i) {
        while (matched > 0 && fromEnd(needle, i) != fromEnd(needle, matched))
            matched = rest[matched - 1];
        matched += fromEnd(needle, i) == fromEnd(needle, matched) ? 1 : 0;
        rest[i] = matched;
    }
    for (qsizetype i = 0, matched = 0; i < haystack.size(); ++i) {
        while (matched > 0 && fromEnd(haystack, i) != fromEnd(needle, matched))
            matched = rest[matched - 1];
        matched += fromEnd(haystack, i) == fromEnd(needle, matched) ? 1 : 0;
        if (matched == length)
            return haystack.size() - 1 - i;
    }
    return -1;
}

const char *indexOf(const char *begin, const char *end, QByteArrayView needle)
{
#ifdef __GLIBC__
    // Two-way matching: linear on zeros with a needle of almost only zeros, where a skip table is quadratic.
    return static_cast<const char *>(
        memmem(begin, static_cast<size_t>(end - begin), needle.data(), static_cast<size_t>(needle.size())));
#else
    const char *const found =
        std::search(begin, end, std::boyer_moore_searcher(needle.cbegin(), needle.cend()));
    return found == end ? nullptr : found;
#endif
}

// Where the needle has the byte that is rarest among some of these.
qsizetype rarestPlace(QByteArrayView bytes, QByteArrayView needle)
{
    constexpr qsizetype samples = 4096;
    std::array<int, 256> counts{};
    const qsizetype step = std::max<qsizetype>(bytes.size() / samples, 1);
    for (qsizetype i = 0; i < bytes.size(); i += step)
        ++counts[static_cast<uchar>(bytes[i])];
    const auto rarest = std::ranges::min_element(
        needle, {}, [&counts](char byte) { return counts[static_cast<uchar>(byte)]; });
    return rarest - needle.begin();
}

// Checks the needle only at its rarest byte, which memchr finds fast. If that byte is too frequent, goes on
// without, so that the time stays linear.
const char *indexOfByRarest(const char *begin, const char *end, QByteArrayView needle)
{
    // In bytes compared.
    constexpr qsizetype costOfPlace = 16;
    constexpr qsizetype patience = 4096;
    constexpr qsizetype sampled = 1 << 20;
    const qsizetype place = rarestPlace({begin, std::min<qsizetype>(end - begin, sampled)}, needle);
    const char *const start = begin + place;
    const char *const last = end - (needle.size() - 1 - place);
    qsizetype cost = 0;
    for (const char *at = start; at < last; ++at) {
        at = static_cast<const char *>(std::memchr(at, needle[place], static_cast<size_t>(last - at)));
        if (!at)
            break;
        if (std::memcmp(at - place, needle.data(), static_cast<size_t>(needle.size())) == 0)
            return at - place;
        cost += needle.size() + costOfPlace;
        if (cost > patience + 2 * (at - start))
            return indexOf(at - place + 1, end, needle);
    }
    return nullptr;
}

} // namespace

QByteArray FileTools::parseHexQuery(const QString &query)
{
    const std::optional<QByteArray> bytes = bytesOfHex(query);
    return bytes ? *bytes : query.trimmed().toUtf8();
}

int FileTools::findBytes(const QByteArray &haystack, const QByteArray &needle, int from)
{
    const qsizetype start = std::max(from, 0);
    if (needle.isEmpty() || start >= haystack.size())
        return -1;
    // A near match is found before it would pay to look at what the bytes are.
    constexpr qsizetype nearby = 65536;
    const char *const begin = haystack.constData();
    const char *const end = begin + haystack.size();
    const qsizetype middle = std::min(haystack.size(), start + nearby + needle.size() - 1);
    const char *match = indexOf(begin + start, begin + middle, needle);
    if (!match && middle < haystack.size())
        match = indexOfByRarest(begin + middle - needle.size() + 1, end, needle);
    return match ? static_cast<int>(match - begin) : -1;
}

int FileTools::findNext(const QByteArray &haystack, const QByteArray &needle, int from)
{
    const int found = findBytes(haystack, needle, from);
    if (found >= 0 || from <= 0)
        return found;
    // All that begins at `from` or later was looked at already.
    const qsizetype rest = std::min(haystack.size(), from - 1 + needle.size());
    return findBytes(QByteArray::fromRawData(haystack.constData(), rest), needle, 0);
}

int FileTools::findPrevious(const QByteArray &haystack, const QByteArray &needle, int before)
{
    if (needle.isEmpty() || needle.size() > haystack.size())
        return -1;
    const qsizetype start = std::clamp<qsizetype>(before, 0, haystack.size());
    const qsizetype end = std::min(haystack.size(), start - 1 + needle.size());
    const qsizetype found = lastIndexOf(QByteArrayView(haystack).first(end), needle);
    if (found >= 0)
        return static_cast<int>(found);
    // All that begins before `start` was looked at already.
    const qsizetype later = lastIndexOf(QByteArrayView(haystack).sliced(start), needle);
    return later < 0 ? -1 : static_cast<int>(start + later);
}

FileTools::Replaced FileTools::replaceBytes(const QByteArray &haystack, const QByteArray &needle,
                                            const QByteArray &replacement)
{
    Replaced replaced;
    if (needle.size() != replacement.size())
        return replaced;
    int done = 0;
    for (int at = findBytes(haystack, needle, 0); at >= 0; at = findBytes(haystack, needle, done)) {
        if (replaced.count == 0)
            replaced.start = done = at;
        replaced.bytes += QByteArrayView(haystack).sliced(done, at - done);
        replaced.bytes += replacement;
        done = at + static_cast<int>(needle.size());
        ++replaced.count;
    }
    return replaced;
}

std::optional<qint64> FileTools::parseOffset(const QString &text, int cursor, int byteCount)
{
    static const QRegularExpression form(uR"(^([+-]?)\s*(?:([0-9]{1,10})d|(?:0x)?([0-9a-f]{1,8}))$)"_s,
                                         QRegularExpression::CaseInsensitiveOption);

    const QString trimmed = text.trimmed();
    if (trimmed.compare("end"_L1, Qt::CaseInsensitive) == 0)
        return std::max(byteCount, 1) - 1;
    const QRegularExpressionMatch match = form.match(trimmed);
    if (!match.hasMatch())
        return std::nullopt;
    const qint64 number =
        match.hasCaptured(2) ? match.captured(2).toLongLong() : match.captured(3).toLongLong(nullptr, 16);
    const QString sign = match.captured(1);
    return sign.isEmpty() ? number : sign == "+"_L1 ? cursor + number : cursor - number;
}

std::optional<FileTools::Target> FileTools::parseTarget(const QString &text, int cursor, int byteCount)
{
    const qsizetype colon = text.indexOf(':'_L1);
    const std::optional<qint64> offset =
        parseOffset(text.first(colon < 0 ? text.size() : colon), cursor, byteCount);
    if (!offset || colon < 0)
        return offset ? std::optional(Target{*offset, 0}) : std::nullopt;
    // A length is written as an offset is, but counts from nowhere.
    const QString length = text.sliced(colon + 1).trimmed();
    const std::optional<qint64> count = parseOffset(length, 0, 0);
    const bool isLength = count && *count > 0 && length.front().isLetterOrNumber();
    return isLength ? std::optional(Target{*offset, *count}) : std::nullopt;
}
