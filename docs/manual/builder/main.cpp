#include "ManualStyle.h"
#include "ManualText.h"
#include "PdfPatches.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextDocument>

#include <cstdio>
#include <cstdlib>

// Makes the user manual: Markdown chapters to one PDF file.

namespace {

constexpr int resolution = 600;
const QString manualTitle = QStringLiteral("KVT File Editor 2026");
const QString manualSubtitle = QStringLiteral("User Manual");

double millimetres(double length)
{
    return length / 25.4 * resolution;
}

const QSizeF paper(millimetres(210), millimetres(297));
constexpr double textMargin = 22;
const QRectF textArea(millimetres(textMargin), millimetres(textMargin), millimetres(166), millimetres(250));

struct Request
{
    QString list;
    QString logo;
    QString version;
    QString output;
};

bool report(const QString &reason)
{
    std::fprintf(stderr, "kvteditor_manual: %s\n", qUtf8Printable(reason));
    return false;
}

void drawTitlePage(QPainter &painter, const QImage &logo, const QString &version)
{
    const QRectF band(0, 0, paper.width(), millimetres(120));
    painter.fillRect(band, ManualStyle::band);
    painter.fillRect(QRectF(0, band.bottom(), paper.width(), millimetres(1.6)), ManualStyle::accent);
    QSizeF size = logo.size();
    size.scale(millimetres(110), millimetres(70), Qt::KeepAspectRatio);
    QRectF place(QPointF(), size);
    place.moveCenter(band.center());
    painter.drawImage(place, logo);

    const auto line = [&painter](double top, const QFont &font, const QColor &colour, const QString &text) {
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(QRectF(textArea.left(), millimetres(top), textArea.width(), millimetres(16)),
                         Qt::AlignLeft | Qt::AlignVCenter, text);
    };
    line(142, ManualStyle::font(30, QFont::Bold), ManualStyle::text, manualTitle);
    line(158, ManualStyle::font(20), ManualStyle::heading, manualSubtitle);
    line(176, ManualStyle::font(11), ManualStyle::muted, QStringLiteral("Version %1").arg(version));
    line(262, ManualStyle::font(11), ManualStyle::muted, QStringLiteral("Voxworks Automotive - 2026"));
}

void drawFooter(QPainter &painter, int pageNumber)
{
    const double top = textArea.bottom() + millimetres(7);
    painter.setPen(QPen(ManualStyle::rule, millimetres(0.15)));
    painter.drawLine(QPointF(textArea.left(), top), QPointF(textArea.right(), top));
    painter.setFont(ManualStyle::font(ManualStyle::smallSize));
    painter.setPen(ManualStyle::muted);
    const QRectF place(textArea.left(), top + millimetres(1), textArea.width(), millimetres(6));
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                     manualTitle + QStringLiteral(" \u2013 ") + manualSubtitle);
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, QString::number(pageNumber));
}

// Draws each page of a text on a page of its own, and returns the number of the page that follows.
int drawPages(QPdfWriter &writer, QPainter &painter, const QTextDocument &text, int pageNumber)
{
    for (int page = 0; page < text.pageCount(); ++page) {
        writer.newPage();
        const QRectF shown(0, page * textArea.height(), textArea.width(), textArea.height());
        painter.save();
        painter.translate(textArea.left(), textArea.top() - shown.top());
        painter.setClipRect(shown);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = shown;
        context.palette.setColor(QPalette::Text, ManualStyle::text);
        text.documentLayout()->draw(&painter, context);
        painter.restore();
        drawFooter(painter, pageNumber++);
    }
    return pageNumber;
}

std::optional<QStringList> readList(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll())
        .split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}

bool save(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return report(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return true;
}

bool makeManual(const Request &request)
{
    const std::optional<QStringList> chapters = readList(request.list);
    if (!chapters || chapters->isEmpty())
        return report(QStringLiteral("no chapters in %1").arg(request.list));
    const QImage logo(request.logo);
    if (logo.isNull())
        return report(QStringLiteral("no picture in %1").arg(request.logo));

    QByteArray pdf;
    QBuffer buffer(&pdf);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(resolution);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF());
    writer.setTitle(manualTitle + QStringLiteral(" \u2013 ") + manualSubtitle);
    writer.setCreator(QStringLiteral("KVT Editor %1").arg(request.version));

    const PageText page{textArea.width(), textArea.height()};
    QString error;
    const auto text = readManual(QFileInfo(request.list).path(), *chapters, page, &writer, &error);
    if (!text)
        return report(error);
    breakPages(*text);
    const QList<ContentsEntry> entries = contentsOf(*text, resolution);
    // How many pages the contents take does not depend on the numbers in them.
    constexpr int firstContentsPage = 2;
    const int contentsCount = contentsPages(entries, 0, page, &writer)->pageCount();
    const auto contents = contentsPages(entries, firstContentsPage + contentsCount, page, &writer);

    QPainter painter(&writer);
    // Pictures of a window full of small text suffer from being stored as photographs.
    painter.setRenderHint(QPainter::LosslessImageRendering);
    drawTitlePage(painter, logo, request.version);
    drawPages(writer, painter, *text, drawPages(writer, painter, *contents, firstContentsPage));
    painter.end();
    buffer.close();
    dropTimeStamp(pdf);
    constexpr double pointsPerMillimetre = 72 / 25.4;
    const double textTop = (297 - textMargin) * pointsPerMillimetre;
    if (!joinLinks(pdf, entries, firstContentsPage - 1 + contentsCount, textTop))
        return report(QStringLiteral("a link leads nowhere"));
    return save(request.output, pdf);
}

} // namespace

int main(int argc, char **argv)
{
    const QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Makes the user manual from its Markdown chapters."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("list"), QStringLiteral("File that lists the chapters."));
    parser.addPositionalArgument(QStringLiteral("logo"), QStringLiteral("Picture of the title page."));
    parser.addPositionalArgument(QStringLiteral("version"), QStringLiteral("Version of the program."));
    parser.addPositionalArgument(QStringLiteral("output"), QStringLiteral("The PDF file to write."));
    parser.process(app);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 4)
        parser.showHelp(EXIT_FAILURE);
    const Request request{arguments.at(0), arguments.at(1), arguments.at(2), arguments.at(3)};
    return makeManual(request) ? EXIT_SUCCESS : EXIT_FAILURE;
}
