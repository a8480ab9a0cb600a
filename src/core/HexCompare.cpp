#include "core/HexCompare.h"

#include "core/FileTools.h"
#include "core/HexModel.h"
#include "core/HexText.h"

#include <QFileInfo>
#include <QPromise>

#include <algorithm>
#include <thread>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Compared between two looks at whether it was given up.
constexpr qsizetype comparedAtOnce = 1 << 20;

QByteArrayView rowOf(const QByteArray &bytes, int row)
{
    const qsizetype start = qsizetype(row) * HexModel::bytesPerRow;
    if (start < 0 || start >= bytes.size())
        return {};
    return QByteArrayView(bytes).sliced(start,
                                        std::min<qsizetype>(HexModel::bytesPerRow, bytes.size() - start));
}

} // namespace

HexCompare::HexCompare(HexModel *model, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_comparing([this](std::optional<ByteDifferences> &&differences) {
        if (!differences)
            return stop();
        m_differences = std::move(*differences);
        emit changed();
        if (std::exchange(m_isNew, false))
            emit finished();
    })
{
    connect(&m_reading, &QFutureWatcherBase::finished, this, [this] {
        if (!m_reading.isCanceled())
            take(m_reading.result());
    });
    connect(m_model, &HexModel::aboutToChange, this, &HexCompare::giveUp);
    connect(m_model, &HexModel::modelReset, this, &HexCompare::compare);
    connect(m_model, &HexModel::overwritten, this, [this](int offset, const QByteArray &before) {
        m_differences.update(m_model->bytes(), m_bytes, offset, before.size());
        if (isActive())
            emit changed();
    });
}

void HexCompare::start(const QString &path)
{
    // The thread is on its own: a disk that does not answer holds nobody up, not even at the end.
    QPromise<OtherFile> promise;
    m_reading.setFuture(promise.future());
    promise.start();
    std::thread([promise = std::move(promise), path]() mutable {
        OtherFile other{QFileInfo(path).fileName(), {}, {}};
        try {
            other.bytes = FileTools::readFile(path, &other.error);
        } catch (...) {
            other.error = u"Could not read file."_s;
        }
        promise.addResult(std::move(other));
        promise.finish();
    }).detach();
    emit changed();
}

void HexCompare::take(const OtherFile &other)
{
    if (other.bytes.isEmpty()) {
        emit changed();
        emit failed(other.error.isEmpty() ? u"The other file is empty."_s : other.error);
        return;
    }
    m_comparing.stop();
    m_differences = ByteDifferences();
    m_name = other.name;
    m_bytes = other.bytes;
    m_isNew = true;
    emit otherChanged();
    compare();
}

void HexCompare::stop()
{
    m_reading.setFuture({});
    m_comparing.stop();
    m_name.clear();
    m_bytes.clear();
    m_differences = ByteDifferences();
    emit otherChanged();
    emit changed();
}

// The comparison reads the open file's buffer: it stops before a write, and starts over.
void HexCompare::giveUp()
{
    if (!m_comparing.isRunning())
        return;
    m_comparing.stop();
    compare();
}

void HexCompare::compare()
{
    if (!isActive() || std::exchange(m_isDue, true))
        return;
    m_differences = ByteDifferences();
    emit changed();
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isDue = false;
            if (!isActive())
                return;
            // A view, not a copy: a reference released late would make the next write detach.
            m_comparing.start(
                [ours = QByteArrayView(m_model->bytes()), theirs = m_bytes](const auto &isGivenUp) {
                    const qsizetype size = std::min(ours.size(), theirs.size());
                    std::optional<ByteDifferences> differences(size);
                    for (qsizetype at = 0; at < size && !isGivenUp(); at += comparedAtOnce)
                        differences->update(ours, theirs, at, comparedAtOnce);
                    return differences;
                });
        },
        Qt::QueuedConnection);
}

QString HexCompare::text() const
{
    if (isBusy())
        return u"Comparing …"_s;
    if (!isActive())
        return {};
    QString text = places() == 0 ? u"No difference"_s
                                 : u"%1 %2 in %3"_s.arg(countText(differingBytes(), u"byte"_s),
                                                        differingBytes() == 1 ? u"differs"_s : u"differ"_s,
                                                        countText(places(), u"place"_s));
    const qsizetype longer = m_bytes.size() - m_model->byteCount();
    if (longer != 0) {
        text += u"; the other file is %1 %2"_s.arg(countText(static_cast<int>(std::abs(longer)), u"byte"_s),
                                                   longer > 0 ? u"longer"_s : u"shorter"_s);
    }
    return text;
}

QString HexCompare::digits(int row) const
{
    return hexText(rowOf(m_bytes, row));
}

QString HexCompare::characters(int row) const
{
    return asciiText(rowOf(m_bytes, row));
}

ByteRange HexCompare::place(int index) const
{
    return m_differences.place(m_model->bytes(), m_bytes, index);
}

QString HexCompare::placeText(int index) const
{
    const ByteRange range = place(index);
    return range.length == 0 ? QString()
                             : u"%1  %2"_s.arg(offsetText(range.start).rightJustified(8, '0'_L1),
                                               countText(range.length, u"byte"_s));
}

ByteRange HexCompare::placeAt(int position) const
{
    return m_differences.placeAt(m_model->bytes(), m_bytes, position);
}

ByteRange HexCompare::next(int position) const
{
    return m_differences.next(m_model->bytes(), m_bytes, position);
}

ByteRange HexCompare::previous(int position) const
{
    return m_differences.previous(m_model->bytes(), m_bytes, position);
}

int HexCompare::numberAt(int start) const
{
    return m_differences.numberAt(m_model->bytes(), m_bytes, start);
}

QVariantList HexCompare::map(int lines) const
{
    QVariantList ends;
    const auto runs = m_differences.map(lines);
    for (const auto &[first, end] : runs)
        ends << first << end;
    return ends;
}
