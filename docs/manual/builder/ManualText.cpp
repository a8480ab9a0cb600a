#include "ManualText.h"

#include "ManualStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <QUrl>

#include <cmath>

namespace {

constexpr double unitsPerInch = 96;
constexpr int deepestListed = 2;

// What a heading is linked by: its words in small letters, joined by hyphens, as in the Markdown of the web.
QString slug(const QString &title)
{
    static const QRegularExpression dropped(QStringLiteral("[^a-z0-9_\\s-]"));
    return title.toLower().remove(dropped).simplified().replace(QLatin1Char(' '), QLatin1Char('-'));
}

QString headingAnchor(const QString &chapter, const QTextBlock &block)
{
    const QString name = QFileInfo(chapter).completeBaseName();
    return block.blockFormat().headingLevel() == 1 ? name : name + QLatin1Char('-') + slug(block.text());
}

// Where a link of `chapter` leads within the joined text: "file.md", "file.md#section" or "#section".
QString innerTarget(const QString &chapter, const QString &href)
{
    const QString file = href.section(QLatin1Char('#'), 0, 0);
    const QString section = href.section(QLatin1Char('#'), 1);
    const QString name = QFileInfo(file.isEmpty() ? chapter : file).completeBaseName();
    return section.isEmpty() ? name : name + QLatin1Char('-') + section;
}

bool leadsOut(const QString &href)
{
    return !QUrl(href).isRelative();
}

struct FormatRange
{
    int position;
    int length;
    QTextCharFormat format;
};

void apply(QTextDocument &text, const QList<FormatRange> &ranges)
{
    QTextCursor cursor(&text);
    for (const FormatRange &range : ranges) {
        cursor.setPosition(range.position);
        cursor.setPosition(range.position + range.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(range.format);
    }
}

QList<QTextTable *> tablesOf(const QTextDocument &text)
{
    QList<QTextTable *> tables;
    for (QTextFrame *const frame : text.rootFrame()->childFrames()) {
        if (auto *const table = qobject_cast<QTextTable *>(frame))
            tables.append(table);
    }
    return tables;
}

bool isInTable(const QTextBlock &block)
{
    return QTextCursor(block).currentTable() != nullptr;
}

std::unique_ptr<QTextDocument> newText(const PageText &page, QPaintDevice *device)
{
    auto text = std::make_unique<QTextDocument>();
    text->documentLayout()->setPaintDevice(device);
    text->setDocumentMargin(0);
    text->setUseDesignMetrics(true);
    text->setDefaultFont(ManualStyle::font(ManualStyle::bodySize));
    text->setPageSize(QSizeF(page.width, page.height));
    return text;
}

/// Gives a text that was read from Markdown its links and its look, chapter by chapter.
class Finisher
{
public:
    Finisher(QTextDocument &text, QString folder, const QStringList &chapters, double width)
        : m_text(text)
        , m_folder(std::move(folder))
        , m_chapters(chapters)
        , m_width(width)
    {
    }

    // Empty when all went well, else what is wrong with the chapters.
    QString finish()
    {
        nameHeadings();
        for (QTextBlock block = m_text.begin(); block.isValid(); block = block.next())
            styleBlock(block);
        apply(m_text, m_ranges);
        addCaptions();
        for (QTextTable *const table : tablesOf(m_text))
            styleTable(table);
        return m_error;
    }

private:
    void fail(const QString &reason)
    {
        if (m_error.isEmpty())
            m_error = reason;
    }

    void nameHeadings()
    {
        qsizetype chapter = -1;
        for (QTextBlock block = m_text.begin(); block.isValid(); block = block.next()) {
            const int level = block.blockFormat().headingLevel();
            if (level == 1)
                ++chapter;
            m_chapterOfBlock.append(m_chapters.value(chapter));
            if (level > 0 && chapter >= 0)
                m_anchors.insert(headingAnchor(m_chapters.value(chapter), block));
        }
        if (chapter + 1 != m_chapters.size())
            fail(QStringLiteral("each chapter must have one title, and it must stand first"));
    }

    void styleBlock(const QTextBlock &block)
    {
        const int level = block.blockFormat().headingLevel();
        const bool inTable = isInTable(block);
        QTextBlockFormat format = block.blockFormat();
        format.setLineHeight(level > 0 ? 110 : ManualStyle::lineHeight, QTextBlockFormat::ProportionalHeight);
        const double above[] = {0, 30, 18, 12};
        const bool listGoesOn = block.textList() && block.next().textList() == block.textList();
        const double below[] = {inTable || listGoesOn ? 2.0 : 7.0, 10, 6, 4};
        format.setTopMargin(above[std::min(level, 3)]);
        format.setBottomMargin(below[std::min(level, 3)]);
        if (format.hasProperty(QTextFormat::BlockQuoteLevel))
            format.setBackground(ManualStyle::shade);
        QTextCursor(block).setBlockFormat(format);

        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment part = it.fragment();
            QTextCharFormat look = part.charFormat();
            if (look.isImageFormat())
                look = pictureFormat(look.toImageFormat());
            else if (level > 0)
                look = headingFormat(block, level);
            else
                look = textFormat(look, block, inTable);
            m_ranges.append({part.position(), part.length(), look});
        }
    }

    QTextCharFormat headingFormat(const QTextBlock &block, int level) const
    {
        const double sizes[] = {20, 13, 10.5};
        QTextCharFormat look;
        look.setFont(ManualStyle::font(sizes[std::min(level, 3) - 1], QFont::Bold));
        look.setForeground(level < 3 ? ManualStyle::heading : ManualStyle::text);
        look.setAnchor(true);
        look.setAnchorNames({headingAnchor(m_chapterOfBlock.at(block.blockNumber()), block)});
        return look;
    }

    QTextCharFormat textFormat(const QTextCharFormat &read, const QTextBlock &block, bool inTable)
    {
        const double shrink = inTable ? 0.8 : 0;
        QTextCharFormat look;
        look.setFont(ManualStyle::font(ManualStyle::bodySize - shrink));
        if (read.fontFixedPitch()) {
            look.setFontFamilies({ManualStyle::codeFamily()});
            look.setFontPointSize(ManualStyle::codeSize - shrink);
        }
        look.setFontWeight(read.fontWeight() > QFont::Normal ? QFont::Bold : QFont::Normal);
        look.setFontItalic(read.fontItalic());
        look.setForeground(ManualStyle::text);
        if (read.isAnchor() && !read.anchorHref().isEmpty()) {
            look.setAnchor(true);
            look.setAnchorHref(target(block, read.anchorHref()));
            look.setForeground(ManualStyle::heading);
        }
        return look;
    }

    QString target(const QTextBlock &block, const QString &href)
    {
        if (leadsOut(href))
            return href;
        const QString chapter = m_chapterOfBlock.at(block.blockNumber());
        const QString anchor = innerTarget(chapter, href);
        if (!m_anchors.contains(anchor))
            fail(QStringLiteral("%1: nothing to link to at %2").arg(chapter, href));
        return linkTo(anchor);
    }

    QTextImageFormat pictureFormat(QTextImageFormat look)
    {
        const QImage picture(QDir(m_folder).filePath(look.name()));
        if (picture.isNull()) {
            fail(QStringLiteral("no picture in %1").arg(look.name()));
            return look;
        }
        m_text.addResource(QTextDocument::ImageResource, QUrl(look.name()), picture);
        const double width = std::min(m_width, picture.width() / 2.0 + m_width / 2);
        look.setWidth(width);
        look.setHeight(width * picture.height() / picture.width());
        return look;
    }

    // Below each picture stands what it shows, in one block with it, so that both stay together.
    void addCaptions()
    {
        for (QTextBlock block = m_text.begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextCharFormat look = it.fragment().charFormat();
                if (!look.isImageFormat())
                    continue;
                QTextCharFormat caption;
                caption.setFont(ManualStyle::font(ManualStyle::smallSize));
                caption.setForeground(ManualStyle::muted);
                QTextCursor cursor(block);
                QTextBlockFormat format = block.blockFormat();
                format.setLineHeight(100, QTextBlockFormat::ProportionalHeight);
                format.setTopMargin(6);
                format.setBottomMargin(12);
                cursor.setBlockFormat(format);
                cursor.movePosition(QTextCursor::EndOfBlock);
                cursor.insertText(
                    QChar(QChar::LineSeparator) + look.stringProperty(QTextFormat::ImageAltText), caption);
                break;
            }
        }
    }

    static void styleTable(QTextTable *table)
    {
        QTextTableFormat format = table->format();
        format.setBorder(0);
        format.setBorderCollapse(true);
        format.setCellSpacing(0);
        format.setCellPadding(0);
        format.setTopMargin(4);
        format.setBottomMargin(12);
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        format.setHeaderRowCount(1);
        format.setColumnWidthConstraints(columnWidths(table));
        table->setFormat(format);
        for (int row = 0; row < table->rows(); ++row) {
            for (int column = 0; column < table->columns(); ++column)
                styleCell(table->cellAt(row, column), row == 0);
        }
    }

    static void styleCell(QTextTableCell cell, bool isHeader)
    {
        QTextTableCellFormat look;
        look.setPadding(4);
        look.setBottomPadding(3);
        look.setLeftPadding(5);
        look.setBottomBorder(isHeader ? 1 : 0.5);
        look.setBottomBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        look.setBottomBorderBrush(isHeader ? ManualStyle::accent : ManualStyle::rule);
        if (isHeader)
            look.setBackground(ManualStyle::shade);
        cell.setFormat(look);
        if (!isHeader)
            return;
        QTextCharFormat bold;
        bold.setFontWeight(QFont::Bold);
        QTextCursor cursor = cell.firstCursorPosition();
        cursor.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(bold);
    }

    // Shares the width by the longest text of each column, within bounds, and never below its longest word.
    static QList<QTextLength> columnWidths(const QTextTable *table)
    {
        constexpr double lineLetters = 92;
        QList<double> shares;
        double sum = 0;
        for (int column = 0; column < table->columns(); ++column) {
            qsizetype longest = 0;
            qsizetype longestWord = 0;
            for (int row = 0; row < table->rows(); ++row) {
                const QTextTableCell cell = table->cellAt(row, column);
                QTextCursor cursor = cell.firstCursorPosition();
                cursor.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
                const QString words = cursor.selectedText();
                longest = std::max(longest, words.size());
                for (const QString &word : words.split(QLatin1Char(' ')))
                    longestWord = std::max(longestWord, word.size());
            }
            const double wanted = std::sqrt(double(std::clamp<qsizetype>(longest, 12, 160)));
            shares.append(std::max(wanted, std::sqrt(12.0) * double(longestWord + 3) / lineLetters * 8));
            sum += shares.constLast();
        }
        QList<QTextLength> widths;
        for (const double share : shares)
            widths.append(QTextLength(QTextLength::PercentageLength, 100 * share / sum));
        return widths;
    }

    QTextDocument &m_text;
    QString m_folder;
    QStringList m_chapters;
    double m_width;
    QStringList m_chapterOfBlock;
    QSet<QString> m_anchors;
    QList<FormatRange> m_ranges;
    QString m_error;
};

/// A block or a table at the top level of the text.
struct Item
{
    QTextBlock block;
    QTextTable *table = nullptr;

    int level() const { return table ? 0 : block.blockFormat().headingLevel(); }
};

class Breaker
{
public:
    explicit Breaker(QTextDocument &text)
        : m_text(text)
        , m_pageHeight(text.pageSize().height())
        , m_unit(unitsPerInch / text.documentLayout()->paintDevice()->logicalDpiY())
    {
        for (auto it = text.rootFrame()->begin(); !it.atEnd(); ++it) {
            auto *const table = qobject_cast<QTextTable *>(it.currentFrame());
            if (table || !it.currentBlock().text().isEmpty())
                m_items.append({it.currentBlock(), table});
        }
    }

    void run()
    {
        for (qsizetype i = 1; i < m_items.size(); ++i) {
            const int first = firstPage(i);
            if (first != settledPage(i) || (m_items.at(i).level() == 1 && first != lastPageOfChapter(i)))
                breakBefore(i);
            keepRowsWhole(m_items.at(i).table);
        }
    }

private:
    int pageAt(double y) const { return static_cast<int>(y / m_pageHeight); }

    int pageOfLine(const QTextBlock &block, int line) const
    {
        const double top = m_text.documentLayout()->blockBoundingRect(block).top();
        const QTextLine textLine = block.layout()->lineAt(line);
        return pageAt(top + textLine.y() + textLine.height() / 2);
    }

    int lastLine(const QTextBlock &block) const { return std::max(0, block.layout()->lineCount() - 1); }

    int firstPage(qsizetype i) const
    {
        const Item &item = m_items.at(i);
        return pageOfLine(item.table ? item.table->cellAt(0, 0).firstCursorPosition().block() : item.block,
                          0);
    }

    int lastPageOfRow(const QTextTable *table, int row) const
    {
        int page = 0;
        for (int column = 0; column < table->columns(); ++column) {
            const QTextBlock block = table->cellAt(row, column).lastCursorPosition().block();
            page = std::max(page, pageOfLine(block, lastLine(block)));
        }
        return page;
    }

    // A row that would be cut begins on the next page, below the repeated header: a page break inside a cell
    // would leave a page with nothing but the header, so its upper padding takes up what is left of the page.
    void keepRowsWhole(QTextTable *table)
    {
        for (int row = 1; table && row < table->rows(); ++row) {
            const QTextBlock first = table->cellAt(row, 0).firstCursorPosition().block();
            const int page = pageOfLine(first, 0);
            if (page == lastPageOfRow(table, row))
                continue;
            const QTextLine line = first.layout()->lineAt(0);
            const double top = m_text.documentLayout()->blockBoundingRect(first).top() + line.y();
            const double filled = (page + 1) * m_pageHeight - top - line.height() / 2;
            for (int column = 0; column < table->columns(); ++column) {
                QTextTableCell cell = table->cellAt(row, column);
                QTextTableCellFormat format = cell.format().toTableCellFormat();
                format.setTopPadding(format.topPadding() + filled * m_unit);
                cell.setFormat(format);
            }
        }
    }

    int lastPage(qsizetype i) const
    {
        const Item &item = m_items.at(i);
        return item.table ? lastPageOfRow(item.table, item.table->rows() - 1)
                          : pageOfLine(item.block, lastLine(item.block));
    }

    int lastPageOfChapter(qsizetype i) const
    {
        qsizetype last = i;
        while (last + 1 < m_items.size() && m_items.at(last + 1).level() != 1)
            ++last;
        return lastPage(last);
    }

    // Headings, and the sentences that lead to a table or a list, stay with what comes next.
    bool leadsOn(qsizetype i) const
    {
        const Item &item = m_items.at(i);
        return !item.table && i + 1 < m_items.size()
            && (item.level() > 0 || item.block.text().endsWith(QLatin1Char(':')));
    }

    // The page by which item `i` has shown enough of itself not to look cut: it should be its first.
    int settledPage(qsizetype i) const
    {
        constexpr int keptLines = 4;
        const Item &item = m_items.at(i);
        if (leadsOn(i))
            return settledPage(i + 1);
        if (item.table)
            return lastPageOfRow(item.table, std::min(2, item.table->rows() - 1));
        const int last = lastLine(item.block);
        const bool whole = last < keptLines || item.block.text().contains(QChar::ObjectReplacementCharacter);
        return pageOfLine(item.block, whole ? last : 1);
    }

    void breakBefore(qsizetype i)
    {
        const Item &item = m_items.at(i);
        if (item.table) {
            QTextTableFormat format = item.table->format();
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            item.table->setFormat(format);
            return;
        }
        QTextBlockFormat format;
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        format.setTopMargin(0);
        QTextCursor(item.block).mergeBlockFormat(format);
    }

    QTextDocument &m_text;
    double m_pageHeight;
    double m_unit; // of a dot of the device
    QList<Item> m_items;
};

} // namespace

std::unique_ptr<QTextDocument> readManual(const QString &folder, const QStringList &chapters,
                                          const PageText &page, QPaintDevice *device, QString *error)
{
    QString markdown;
    for (const QString &chapter : chapters) {
        QFile file(QDir(folder).filePath(chapter));
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("%1: %2").arg(chapter, file.errorString());
            return nullptr;
        }
        markdown += QString::fromUtf8(file.readAll()) + QStringLiteral("\n\n");
    }
    auto text = newText(page, device);
    text->setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);
    // In one edit: each of its own would lay out the whole manual again.
    QTextCursor edit(text.get());
    edit.beginEditBlock();
    *error = Finisher(*text, folder, chapters, page.width / device->logicalDpiX() * unitsPerInch).finish();
    edit.endEditBlock();
    if (!error->isEmpty())
        return nullptr;
    return text;
}

void breakPages(QTextDocument &text)
{
    Breaker(text).run();
}

QString linkTo(const QString &anchor)
{
    constexpr qsizetype shortest = 40;
    return (QLatin1Char('#') + anchor).leftJustified(shortest, QLatin1Char('.'));
}

QList<ContentsEntry> contentsOf(const QTextDocument &text, double dotsPerInch)
{
    const double pageHeight = text.pageSize().height();
    QList<ContentsEntry> entries;
    for (QTextBlock block = text.begin(); block.isValid(); block = block.next()) {
        const int level = block.blockFormat().headingLevel();
        if (level < 1)
            continue;
        const double top =
            text.documentLayout()->blockBoundingRect(block).top() + block.layout()->lineAt(0).y();
        const int page = static_cast<int>((top + 1) / pageHeight);
        entries.append({block.text(), block.begin().fragment().charFormat().anchorNames().value(0), level,
                        page, (top - page * pageHeight) / dotsPerInch * 72});
    }
    return entries;
}

std::unique_ptr<QTextDocument> contentsPages(const QList<ContentsEntry> &entries, int firstPage,
                                             const PageText &page, QPaintDevice *device)
{
    auto text = newText(page, device);
    QTextCursor cursor(text.get());
    QTextCharFormat title;
    title.setFont(ManualStyle::font(20, QFont::Bold));
    title.setForeground(ManualStyle::heading);
    cursor.insertText(QStringLiteral("Contents"), title);

    const auto line = [](const ContentsEntry &entry) {
        QTextCharFormat look;
        look.setFont(
            ManualStyle::font(ManualStyle::bodySize, entry.level == 1 ? QFont::Bold : QFont::Normal));
        look.setForeground(ManualStyle::text);
        look.setAnchor(true);
        look.setAnchorHref(linkTo(entry.anchor));
        return look;
    };
    const double right = page.width / device->logicalDpiX() * unitsPerInch;
    for (const ContentsEntry &entry : entries) {
        if (entry.level > deepestListed)
            continue;
        QTextBlockFormat format;
        format.setTopMargin(entry.level == 1 ? 7 : 1);
        // The layout scales the place of a tab to the device, but not the margin at the left.
        const double indent = entry.level == 1 ? 0 : 14;
        format.setLeftMargin(indent / unitsPerInch * device->logicalDpiX());
        format.setTabPositions({QTextOption::Tab(right - indent, QTextOption::RightTab)});
        cursor.insertBlock(format);
        cursor.insertText(entry.title, line(entry));
        cursor.insertText(QStringLiteral("\t"), QTextCharFormat());
        cursor.insertText(QString::number(entry.page + firstPage), line(entry));
    }
    return text;
}
