#include "SampleContainer.h"

#include <QByteArrayView>

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView magic = "KVTSAMPLE1\n";
constexpr QByteArrayView endLine = "end";
constexpr int keyWidth = 12;
constexpr int rowWidth = 48;

// Wide enough for what users type into them: overwriting a shorter text with a longer one stays within the
// field.
template <typename Owner> struct Field
{
    QByteArrayView key;
    int width;
    QString Owner::*text;
};
constexpr Field<SampleTune> tuneFields[] = {
    {"created", 20, &SampleTune::created},
    {"software", 20, &SampleTune::softwareVersion},
    {"interface", 20, &SampleTune::interfaceCalId},
};
constexpr Field<SampleModule> moduleFields[] = {
    {"module", 24, &SampleModule::title},
    {"vin", 17, &SampleModule::vin},
    {"serial", 20, &SampleModule::serial},
    {"mainos", 24, &SampleModule::mainOs},
};

QByteArray cleaned(const QString &text, bool isLabel = false)
{
    QString result = text.trimmed();
    for (QChar &c : result) {
        if (c.category() == QChar::Other_Control || (isLabel && c == u'='))
            c = u'_';
    }
    return result.toUtf8();
}

QByteArray line(QByteArrayView key, int width, const QByteArray &value)
{
    return key.toByteArray().leftJustified(keyWidth, ' ') + value.leftJustified(width, ' ') + '\n';
}

QByteArray segmentLines(const SampleSegment &segment)
{
    const QByteArray size = QByteArray::number(segment.bytes.size(), 16).toUpper().rightJustified(8, '0');
    return line("segment", 0, cleaned(segment.name, true) + '=' + size) + segment.bytes + '\n';
}

QByteArray moduleLines(const SampleModule &module)
{
    QByteArray result;
    for (const auto &[key, width, text] : moduleFields)
        result += line(key, width, cleaned(module.*text));
    for (const SampleRow &row : module.rows)
        result += line("row", rowWidth, cleaned(row.label, true) + '=' + cleaned(row.value));
    for (const SampleSegment &segment : module.segments)
        result += segmentLines(segment);
    return result;
}

/// Walks the lines; the first fault ends the walk and is kept.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }

    std::optional<SampleTune> read();
    QString error() const { return m_error; }
    QList<qsizetype> segmentOffsets() const { return m_segmentOffsets; }

private:
    bool fail(const QString &reason);
    bool nextLine(QByteArray *key, QByteArray *value);
    bool takeLine(const QByteArray &key, const QByteArray &value);
    bool takeRow(const QByteArray &value);
    bool takeSegment(const QByteArray &value);

    const QByteArray &m_bytes;
    qsizetype m_position = 0;
    SampleTune m_tune;
    QList<qsizetype> m_segmentOffsets;
    QString m_error;
};

bool Reader::fail(const QString &reason)
{
    m_error = u"%1 at byte %2"_s.arg(reason).arg(m_position);
    return false;
}

bool Reader::nextLine(QByteArray *key, QByteArray *value)
{
    const QByteArrayView rest = QByteArrayView(m_bytes).sliced(m_position);
    const qsizetype length = rest.indexOf('\n');
    if (length < 0)
        return fail(u"The file is cut short"_s);
    const QByteArray text = rest.first(length).toByteArray();
    *key = text.left(keyWidth).trimmed();
    *value = text.mid(keyWidth).trimmed();
    m_position += length + 1;
    return true;
}

bool Reader::takeRow(const QByteArray &value)
{
    const qsizetype split = value.indexOf('=');
    if (split < 0)
        return fail(u"A row without \"=\""_s);
    m_tune.modules.last().rows.append(
        {QString::fromUtf8(value.left(split).trimmed()), QString::fromUtf8(value.mid(split + 1).trimmed())});
    return true;
}

bool Reader::takeSegment(const QByteArray &value)
{
    const qsizetype split = value.lastIndexOf('=');
    bool isNumber = false;
    const qint64 size = value.mid(split + 1).toLongLong(&isNumber, 16);
    if (split < 0 || !isNumber || size < 0)
        return fail(u"A segment without a size"_s);
    if (size >= m_bytes.size() - m_position || m_bytes.at(m_position + size) != '\n')
        return fail(u"A segment does not end where it says"_s);
    m_tune.modules.last().segments.append(
        {QString::fromUtf8(value.left(split).trimmed()), m_bytes.mid(m_position, size)});
    m_segmentOffsets.append(m_position);
    m_position += size + 1;
    return true;
}

bool Reader::takeLine(const QByteArray &key, const QByteArray &value)
{
    for (const auto &[name, width, text] : tuneFields) {
        if (key == name) {
            m_tune.*text = QString::fromUtf8(value);
            return true;
        }
    }
    if (key == "module")
        m_tune.modules.append(SampleModule{});
    if (m_tune.modules.isEmpty())
        return fail(u"A module's line before the first module"_s);
    for (const auto &[name, width, text] : moduleFields) {
        if (key == name) {
            m_tune.modules.last().*text = QString::fromUtf8(value);
            return true;
        }
    }
    if (key == "row")
        return takeRow(value);
    return key == "segment" ? takeSegment(value) : fail(u"An unknown line"_s);
}

std::optional<SampleTune> Reader::read()
{
    if (!m_bytes.startsWith(magic)) {
        fail(u"Not a sample container"_s);
        return std::nullopt;
    }
    m_position = magic.size();
    QByteArray key;
    QByteArray value;
    while (nextLine(&key, &value)) {
        if (key == endLine) {
            if (m_position == m_bytes.size())
                return m_tune;
            fail(u"Bytes after the end"_s);
            return std::nullopt;
        }
        if (!takeLine(key, value))
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

QString SampleModule::rowValue(const QString &label) const
{
    for (const SampleRow &row : rows) {
        if (row.label == label)
            return row.value;
    }
    return {};
}

QByteArray SampleContainer::write(const SampleTune &tune)
{
    QByteArray result = magic.toByteArray();
    for (const auto &[key, width, text] : tuneFields)
        result += line(key, width, cleaned(tune.*text));
    for (const SampleModule &module : tune.modules)
        result += moduleLines(module);
    return result + endLine.toByteArray() + '\n';
}

std::optional<SampleTune> SampleContainer::read(const QByteArray &bytes, QString *error)
{
    Reader reader(bytes);
    std::optional<SampleTune> tune = reader.read();
    if (!tune && error)
        *error = reader.error();
    return tune;
}

QList<qsizetype> SampleContainer::segmentOffsets(const QByteArray &bytes)
{
    Reader reader(bytes);
    return reader.read() ? reader.segmentOffsets() : QList<qsizetype>();
}
