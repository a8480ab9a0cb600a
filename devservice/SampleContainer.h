#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// One identifier of a module, as the editor lists it.
struct SampleRow
{
    QString label;
    QString value;
    bool operator==(const SampleRow &) const = default;
};

/// A named run of calibration bytes; what a segment swap moves.
struct SampleSegment
{
    QString name;
    QByteArray bytes;
    bool operator==(const SampleSegment &) const = default;
};

struct SampleModule
{
    QString title;
    QString vin;
    QString serial;
    QString mainOs;
    QList<SampleRow> rows;
    QList<SampleSegment> segments;
    bool operator==(const SampleModule &) const = default;

    /// The value of the first row with that label, or empty.
    QString rowValue(const QString &label) const;
};

struct SampleTune
{
    QString created;
    QString softwareVersion;
    QString interfaceCalId;
    QList<SampleModule> modules;
    bool operator==(const SampleTune &) const = default;
};

/// The stand-in's own file format, invented here for trying the editor. It is NOT the format of real tune
/// files and says nothing about it. Text lines of fixed width with the segments' bytes between them
/// (README.md has the layout), so that overwriting bytes in a hex editor leaves the file readable. Pure
/// functions, for any thread.
namespace SampleContainer {

/// Control characters in texts, and "=" in labels and segment names, are written as "_"; blanks at either end
/// are lost.
QByteArray write(const SampleTune &tune);

/// Nothing, with the reason in `error` (may be null), when the bytes are not a sample container. Takes any
/// input.
std::optional<SampleTune> read(const QByteArray &bytes, QString *error = nullptr);

/// Where the bytes of each segment begin, those of all modules in their order; empty when the bytes are no
/// sample container.
QList<qsizetype> segmentOffsets(const QByteArray &bytes);

} // namespace SampleContainer
