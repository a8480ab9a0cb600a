#include "PdfPatches.h"

#include <QHash>

namespace {

QByteArray padded(const QByteArray &text, qsizetype length)
{
    return text.size() > length ? QByteArray() : text.leftJustified(length, ' ');
}

// Object numbers of the pages, in order, from the list of them: "/Kids [ 5 0 R 9 0 R ... ]".
QList<int> pageObjects(const QByteArray &pdf)
{
    const QByteArray key = QByteArrayLiteral("/Kids");
    const qsizetype start = pdf.indexOf('[', pdf.indexOf(key)) + 1;
    const QList<QByteArray> words = pdf.mid(start, pdf.indexOf(']', start) - start).simplified().split(' ');
    QList<int> objects;
    for (qsizetype i = 0; i + 2 < words.size(); i += 3)
        objects.append(words.at(i).toInt());
    return objects;
}

} // namespace

void dropTimeStamp(QByteArray &pdf)
{
    const QByteArray key = QByteArrayLiteral("/CreationDate (D:");
    const qsizetype at = pdf.indexOf(key);
    if (at < 0)
        return;
    const qsizetype start = at + key.size();
    const qsizetype length = pdf.indexOf(')', start) - start;
    pdf.replace(start, length, QByteArrayLiteral("20260101000000+00'00'").left(length).leftJustified(length));
}

bool joinLinks(QByteArray &pdf, const QList<ContentsEntry> &headings, int firstPage, double pageTop)
{
    const QList<int> pages = pageObjects(pdf);
    QHash<QByteArray, QByteArray> jumps;
    for (const ContentsEntry &heading : headings) {
        const int page = pages.value(firstPage + heading.page);
        jumps.insert(linkTo(heading.anchor).toLatin1(),
                     "/Type /Action\n/S /GoTo\n/D [" + QByteArray::number(page) + " 0 R /XYZ 0 "
                         + QByteArray::number(qRound(pageTop - heading.top)) + " 0]");
    }
    const QByteArray before = QByteArrayLiteral("/Type /Action\n/S /URI\n/URI (");
    for (qsizetype at = pdf.indexOf(before + '#'); at >= 0; at = pdf.indexOf(before + '#', at)) {
        const qsizetype name = at + before.size();
        const qsizetype end = pdf.indexOf(')', name);
        const QByteArray jump = padded(jumps.value(pdf.mid(name, end - name)), end + 1 - at);
        if (jump.trimmed().isEmpty())
            return false;
        pdf.replace(at, jump.size(), jump);
    }
    return true;
}
