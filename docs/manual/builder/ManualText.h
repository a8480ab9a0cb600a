#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class QPaintDevice;
class QTextBlock;
class QTextDocument;

/// Where a page's text stands, in the units of the device that it is laid out for.
struct PageText
{
    double width;
    double height;
};

/// A heading. `page` counts from 0 within the text; `top` is how far below the top of that page it stands, in
/// points.
struct ContentsEntry
{
    QString title;
    QString anchor;
    int level;
    int page;
    double top;
};

/// What a link to an anchor is written as. Long enough for the jump that takes its place in the file.
QString linkTo(const QString &anchor);

/// Joins the Markdown chapters in `folder`, in the order of `chapters`, to one text for pages of the given
/// size. Links to other chapters and to their headings become links within the text. Without a value when a
/// chapter, a picture or the target of a link is missing, or a chapter does not begin with its one title;
/// `error` then says which.
std::unique_ptr<QTextDocument> readManual(const QString &folder, const QStringList &chapters,
                                          const PageText &page, QPaintDevice *device, QString *error);

/// Breaks the pages so that no heading stands alone at the foot of one, no caption leaves its picture, and a
/// chapter begins a page unless all of it fits below the one before.
void breakPages(QTextDocument &text);

/// All headings, in order of the text, which was laid out at the given resolution.
QList<ContentsEntry> contentsOf(const QTextDocument &text, double dotsPerInch);

/// The titles of chapters and sections as pages of their own; page numbers are those of the entries plus
/// `firstPage`.
std::unique_ptr<QTextDocument> contentsPages(const QList<ContentsEntry> &entries, int firstPage,
                                             const PageText &page, QPaintDevice *device);
