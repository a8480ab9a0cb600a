#include "core/FileTools.h"

#include <QVariantList>

#include <algorithm>

// Characters are looked at one by one: a regular expression matches nothing at all in a text that holds half
// of a surrogate pair, and a service can send one.

namespace {

constexpr qsizetype shortestToken = 6;
constexpr qsizetype yearLength = 4;

bool isAsciiCapital(QChar c)
{
    return c >= QLatin1Char('A') && c <= QLatin1Char('Z');
}

bool isAsciiDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isYear(QStringView text)
{
    return (text.startsWith(QLatin1String("19")) || text.startsWith(QLatin1String("20")))
        && std::all_of(text.begin(), text.end(), isAsciiDigit);
}

// Any script's decimal digits count, while letters are ASCII only: that is how the numbers are told apart.
bool allDigits(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
}

} // namespace

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
            rows.append(QVariantMap{{QStringLiteral("label"), labels.at(i)},
                                    {QStringLiteral("value"), values.at(i)}});
        }
    }
    return {{QStringLiteral("title"), title},
            {QStringLiteral("vin"), vin},
            {QStringLiteral("serial"), serial},
            {QStringLiteral("mainOs"), mainOs},
            {QStringLiteral("rows"), rows}};
}

QString FileTools::sanitizeName(const QString &text)
{
    static const QString reserved = QStringLiteral(R"(\/:*?"<>|)");
    QString name = text;
    for (QChar &c : name) {
        if (reserved.contains(c))
            c = QLatin1Char('_');
    }
    return name.trimmed().isEmpty() ? QStringLiteral("file") : name;
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
