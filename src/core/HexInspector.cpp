#include "core/HexInspector.h"

#include <QVariantMap>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

QVariantMap row(const QString &name, const QString &first, const QString &second, bool single)
{
    return {{u"name"_s, name}, {u"first"_s, first}, {u"second"_s, second}, {u"single"_s, single}};
}

// Without a value it has empty texts.
QVariantMap numberRow(const QString &name, bool hasValue, quint32 value, int digits)
{
    if (!hasValue)
        return row(name, {}, {}, false);
    return row(name, u"%1"_s.arg(value, digits, 16, '0'_L1).toUpper(), QString::number(value), false);
}

} // namespace

HexInspector::HexInspector(QObject *parent)
    : QObject(parent)
    , m_counting([this](std::optional<ByteSums> &&sums) {
        m_counted.clear();
        showSums(sums);
    })
{
    updateValues();
    showSums({});
}

void HexInspector::setHexModel(HexModel *hexModel)
{
    if (m_hexModel == hexModel)
        return;
    giveUp();
    if (m_hexModel)
        m_hexModel->disconnect(this);
    m_hexModel = hexModel;
    if (hexModel) {
        connect(hexModel, &HexModel::aboutToChange, this, &HexInspector::giveUp);
        connect(hexModel, &HexModel::dataChangedSig, this, &HexInspector::update);
        connect(hexModel, &HexModel::cursorChanged, this, &HexInspector::updateValues);
        connect(hexModel, &HexModel::selectionChanged, this, &HexInspector::updateSums);
    }
    emit hexModelChanged();
    update();
}

void HexInspector::setActive(bool active)
{
    if (std::exchange(m_active, active) == active)
        return;
    if (!active)
        giveUp();
    emit activeChanged();
    update();
}

void HexInspector::update()
{
    updateValues();
    updateSums();
}

void HexInspector::updateValues()
{
    // Even then there are rows, from the first.
    if (!m_active && !m_values.isEmpty())
        return;
    const QByteArray bytes = m_hexModel ? m_hexModel->bytes() : QByteArray();
    m_values.clear();
    const auto values = ByteValues::at(bytes, m_hexModel ? m_hexModel->cursor() : 0);
    for (const ByteValues::Row &value : values)
        m_values.append(row(value.name, value.littleEndian, value.bigEndian, value.single));
    emit valuesChanged();
}

void HexInspector::updateSums()
{
    ByteRange range;
    if (m_hexModel)
        range = {m_hexModel->selectionStart(), m_hexModel->selectionLength()};
    if (!m_active || range == m_range)
        return;
    giveUp();
    m_range = range;
    if (range.length == 0)
        return showSums({});
    const QByteArray bytes = m_hexModel->bytes();
    const QByteArrayView selected = QByteArrayView(bytes).sliced(range.start, range.length);
    if (range.length <= ByteSums::pieceSize)
        return showSums(ByteSums::of(selected, [] { return false; }));
    m_counted = bytes;
    m_counting.start([selected](const auto &isGivenUp) { return ByteSums::of(selected, isGivenUp); });
    showSums({});
}

void HexInspector::showSums(const std::optional<ByteSums> &sums)
{
    const int length = m_range ? m_range->length : 0;
    const ByteSums known = sums.value_or(ByteSums());
    const QString sha256 = QString::fromLatin1(known.sha256.toHex()).toUpper();
    m_sums = {
        numberRow(u"Length"_s, length > 0, static_cast<quint32>(length), 1),
        numberRow(u"Sum 8"_s, sums.has_value(), known.sum & 0xFF, 2),
        numberRow(u"Sum 16"_s, sums.has_value(), known.sum & 0xFFFF, 4),
        numberRow(u"Sum 32"_s, sums.has_value(), known.sum, 8),
        numberRow(u"CRC-32"_s, sums.has_value(), known.crc32, 8),
        row(u"SHA-256"_s, sha256, {}, true),
    };
    emit sumsChanged();
}

void HexInspector::giveUp()
{
    m_counting.stop();
    m_counted.clear();
    m_range.reset();
}
