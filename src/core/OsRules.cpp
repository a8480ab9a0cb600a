#include "core/FileTools.h"

#include <QVariantList>

#include <algorithm>

using namespace Qt::StringLiterals;

// Characters are looked at one by one: a regular expression matches nothing at all in a text that holds half
// of a surrogate pair, and a service can send one.

namespace {

constexpr qsizetype shortestToken = 6;
constexpr qsizetype yearLength = 4;

bool isAsciiCapital(QChar c)
{
    return c >= 'A'_L1 && c <= 'Z'_L1;
}

bool isAsciiDigit(QChar c)
{
    return c >= '0'_L1 && c <= '9'_L1;
}

bool isYear(QStringView text)
{
    return (text.startsWith("19"_L1) || text.startsWith("20"_L1))
        && std::all_of(text.begin(), text.end(), isAsciiDigit);
}

// Any script's decimal digits count, while letters are ASCII only: that is how the numbers are told apart.
bool allDigits(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
}

} // namespace

bool FileTools::isKvtFile(const QString &name)
{
    return name.endsWith(".kvt"_L1, Qt::CaseInsensitive);
}

bool FileTools::isCumminsStyleOs(const QString &text)
{
    if (text.size() != 10)
        return false;
    const QString upper = text.toUpper();
    // Upper-casing may lengthen a text ("ß" becomes "SS"); the first ten characters decide.
    const QStringView view = QStringView(upper).first(10);
    return (view[0].isDigit() || isAsciiCapital(view[0])) && allDigits(view.sliced(1, 7))
        && isAsciiCapital(view[8]) && isAsciiCapital(view[9]);
}

bool FileTools::isWeakNumericOs(const QString &text)
{
    return text.size() >= 7 && text.size() <= 9 && allDigits(text);
}

QString FileTools::osTokenFromName(const QString &name)
{
    const QString upper = name.toUpper();
    const auto isPart = [](QChar c) { return isAsciiCapital(c) || isAsciiDigit(c); };
    for (auto begin = upper.begin(); begin != upper.end();) {
        begin = std::find_if(begin, upper.end(), isPart);
        const auto end = std::find_if_not(begin, upper.end(), isPart);
        if (end - begin >= shortestToken)
            return QStringView(begin, end).toString();
        begin = end;
    }
    return {};
}

QString FileTools::yearFromName(const QString &name)
{
    const QStringView view(name);
    for (qsizetype at = 0; at + yearLength <= view.size(); ++at) {
        const QStringView four = view.sliced(at, yearLength);
        if (isYear(four))
            return four.toString();
    }
    return {};
}

QVariantMap FileTools::makeModuleEntry(const QString &title, const QString &vin, const QString &serial,
                                       const QString &mainOs, const QStringList &labels,
                                       const QStringList &values)
{
    QVariantList rows;
    const qsizetype pairs = std::min(labels.size(), values.size());
    for (qsizetype i = 0; i < pairs; ++i) {
        if (!values.at(i).isEmpty()) {
            rows.append(QVariantMap{{u"label"_s, labels.at(i)}, {u"value"_s, values.at(i)}});
        }
    }
    return {{u"title"_s, title},
            {u"vin"_s, vin},
            {u"serial"_s, serial},
            {u"mainOs"_s, mainOs},
            {u"rows"_s, rows}};
}

QString FileTools::sanitizeName(const QString &text)
{
    static const QString reserved = uR"(\/:*?"<>|)"_s;
    QString name = text;
    for (QChar &c : name) {
        if (reserved.contains(c))
            c = '_'_L1;
    }
    return name.trimmed().isEmpty() ? u"file"_s : name;
}

QVariantMap FileTools::extractKvtIdentifiers(const QByteArray &)
{
    return {};
}

bool FileTools::groupGmOsCandidates(const QStringList &, QStringList *groupA, QStringList *groupB)
{
    if (groupA)
        groupA->clear();
    if (groupB)
        groupB->clear();
    return false;
}
