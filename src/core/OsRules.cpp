#include "core/FileTools.h"

#include <QRegularExpression>
#include <QVariantList>

#include <algorithm>

namespace {

bool isAsciiCapital(QChar c)
{
    return c >= QLatin1Char('A') && c <= QLatin1Char('Z');
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
    static const QRegularExpression token(QStringLiteral("([A-Z0-9]{6,})"));
    return token.match(name.toUpper()).captured(1);
}

QString FileTools::yearFromName(const QString &name)
{
    static const QRegularExpression year(QStringLiteral("(19|20)\\d{2}"));
    return year.match(name).captured(0);
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
    static const QRegularExpression reserved(QStringLiteral(R"([\\/:*?"<>|])"));
    QString name = text;
    name.replace(reserved, QStringLiteral("_"));
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
