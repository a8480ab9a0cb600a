#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

/// Bytes as text and back. Everything is re-entrant.

/// Two upper-case hex digits a byte, separated by single spaces.
QString hexText(QByteArrayView bytes);

/// A character a byte: itself where it is printable ASCII, else a dot.
QString asciiText(QByteArrayView bytes);

/// The definition of an array in C, sixteen bytes a line.
QString cArrayText(QByteArrayView bytes);

/// "1 byte", "2 bytes".
QString countText(int count, const QString &unit);

/// "1F3A7": an offset without padding.
QString offsetText(qint64 offset);

/// The bytes that pairs of hex digits encode, with white space and ",;:" anywhere between them; nothing if
/// the text is anything else, or empty.
std::optional<QByteArray> bytesOfHex(const QString &text);

/// The bytes of pasted text: those of an array in C or of pairs of hex digits if it reads as such, else the
/// text as UTF-8, with its outer blanks. Empty for text that has no UTF-8.
QByteArray pastedBytes(const QString &text);
