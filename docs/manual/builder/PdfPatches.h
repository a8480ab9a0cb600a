#pragma once

#include "ManualText.h"

#include <QByteArray>

// What the PDF writer has no setting for is put right in its finished file. Every patch keeps the length, for
// the file counts its bytes. Only for files whose pages have one height, in points.

/// Replaces the time of writing, so that the same chapters make the same bytes.
void dropTimeStamp(QByteArray &pdf);

/// Turns the links made by linkTo(), which the writer takes for web addresses, into jumps to the headings.
/// `firstPage` counts from 0. False when a link remains that leads nowhere.
bool joinLinks(QByteArray &pdf, const QList<ContentsEntry> &headings, int firstPage, double pageTop);
