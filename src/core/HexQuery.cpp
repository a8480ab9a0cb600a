#include "core/FileTools.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstring>

#ifndef __GLIBC__
#include <functional>
#endif

using namespace Qt::StringLiterals;

QByteArray FileTools::parseHexQuery(const QString &query)
{
    static const QRegularExpression separators(uR"([\s,;:])"_s);
    static const QRegularExpression hexDigits(u"^[0-9A-Fa-f]+$"_s);

    const QString trimmed = query.trimmed();
    QString digits = trimmed;
    digits.remove(separators);
    if (digits.size() % 2 == 0 && hexDigits.match(digits).hasMatch())
        return QByteArray::fromHex(digits.toLatin1());
    return trimmed.toUtf8();
}

int FileTools::findBytes(const QByteArray &haystack, const QByteArray &needle, int from)
{
    const qsizetype start = std::max(from, 0);
    if (needle.isEmpty() || start >= haystack.size())
        return -1;
    const char *const begin = haystack.constData();
    const char *const end = begin + haystack.size();
#ifdef __GLIBC__
    // Two-way matching: linear on zeros with a needle of almost only zeros, where a skip table is quadratic.
    const void *const found = memmem(begin + start, static_cast<size_t>(end - begin - start),
                                     needle.constData(), static_cast<size_t>(needle.size()));
    const char *const match = found ? static_cast<const char *>(found) : end;
#else
    const char *const match =
        std::search(begin + start, end, std::boyer_moore_searcher(needle.cbegin(), needle.cend()));
#endif
    return match == end ? -1 : static_cast<int>(match - begin);
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
