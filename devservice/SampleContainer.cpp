#include "SampleContainer.h"

#include <QByteArrayView>

namespace {

constexpr QByteArrayView magic = "KVTSAMPLE1\n";
constexpr QByteArrayView endLine = "end";
constexpr int keyWidth = 12;

struct FieldWidth
{
    QByteArrayView key;
    int width;
};
// Wide enough for what users type into them: overwriting a shorter text with a longer one stays within the
// field.
constexpr FieldWidth fieldWidths[] = {
    {"created", 20}, {"software", 20}, {"interface", 20}, {"module", 24},
    {"vin", 17},     {"serial", 20},   {"mainos", 24},    {"row", 48},
};

int widthOf(QByteArrayView key)
{
    for (const FieldWidth &field : fieldWidths) {
        if (field.key == key)
            return field.width;
    }
    return 0;
}

QByteArray cleaned(const QString &text, bool isLabel = false)
{
    QString result = text.trimmed();
    for (QChar &c : result) {
        if (c.category() == QChar::Other_Control || (isLabel && c == u'='))
            c = u'_';
    }
    return result.toUtf8();
}

QByteArray line(const char *key, const QByteArray &value)
{
    return QByteArray(key).leftJustified(keyWidth, ' ') + value.leftJustified(widthOf(key), ' ') + '\n';
}

QByteArray segmentLines(const SampleSegment &segment)
{
    const QByteArray size = QByteArray::number(segment.bytes.size(), 16).toUpper().rightJustified(8, '0');
    return line("segment", cleaned(segment.name, true) + '=' + size) + segment.bytes + '\n';
}

QByteArray moduleLines(const SampleModule &module)
{
    QByteArray result = line("module", cleaned(module.title)) + line("vin", cleaned(module.vin))
        + line("serial", cleaned(module.serial)) + line("mainos", cleaned(module.mainOs));
    for (const SampleRow &row : module.rows)
        result += line("row", cleaned(row.label, true) + '=' + cleaned(row.value));
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
    bool takeModuleLine(const QByteArray &key, const QByteArray &value);
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
    m_error = QStringLiteral("%1 at byte %2").arg(reason).arg(m_position);
    return false;
}

bool Reader::nextLine(QByteArray *key, QByteArray *value)
{
    const QByteArrayView rest = QByteArrayView(m_bytes).sliced(m_position);
    const qsizetype length = rest.indexOf('\n');
    if (length < 0)
        return fail(QStringLiteral("The file is cut short"));
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
        return fail(QStringLiteral("A row without \"=\""));
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
        return fail(QStringLiteral("A segment without a size"));
    if (size >= m_bytes.size() - m_position || m_bytes.at(m_position + size) != '\n')
        return fail(QStringLiteral("A segment does not end where it says"));
    m_tune.modules.last().segments.append(
        {QString::fromUtf8(value.left(split).trimmed()), m_bytes.mid(m_position, size)});
    m_segmentOffsets.append(m_position);
    m_position += size + 1;
    return true;
}

bool Reader::takeModuleLine(const QByteArray &key, const QByteArray &value)
{
    if (m_tune.modules.isEmpty())
        return fail(QStringLiteral("A module's line before the first module"));
    SampleModule &module = m_tune.modules.last();
    const QString text = QString::fromUtf8(value);
    if (key == "vin")
        module.vin = text;
    else if (key == "serial")
        module.serial = text;
    else if (key == "mainos")
        module.mainOs = text;
    else if (key == "row")
        return takeRow(value);
    else if (key == "segment")
        return takeSegment(value);
    else
        return fail(QStringLiteral("An unknown line"));
    return true;
}

bool Reader::takeLine(const QByteArray &key, const QByteArray &value)
{
    const QString text = QString::fromUtf8(value);
    if (key == "created") {
        m_tune.created = text;
    } else if (key == "software") {
        m_tune.softwareVersion = text;
    } else if (key == "interface") {
        m_tune.interfaceCalId = text;
    } else if (key == "module") {
        m_tune.modules.append(SampleModule{text, {}, {}, {}, {}, {}});
    } else {
        return takeModuleLine(key, value);
    }
    return true;
}

std::optional<SampleTune> Reader::read()
{
    if (!m_bytes.startsWith(magic)) {
        fail(QStringLiteral("Not a sample container"));
        return std::nullopt;
    }
    m_position = magic.size();
    QByteArray key;
    QByteArray value;
    while (nextLine(&key, &value)) {
        if (key == endLine) {
            if (m_position == m_bytes.size())
                return m_tune;
            fail(QStringLiteral("Bytes after the end"));
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
    QByteArray result = magic.toByteArray() + line("created", cleaned(tune.created))
        + line("software", cleaned(tune.softwareVersion)) + line("interface", cleaned(tune.interfaceCalId));
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
