#include "api/TransferMeter.h"

#include <QLocale>
#include <QNetworkReply>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int updateInterval = 100;

QString size(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString progress(const QString &what, qint64 done, qint64 total)
{
    return total > 0 ? u"%1 %2 of %3"_s.arg(what, size(done), size(total)) : u"%1 %2"_s.arg(what, size(done));
}

/// The sum of two totals is known when both are. A peer may announce any number: what is more than can be
/// counted is the most that can.
qint64 totalOf(qint64 one, qint64 other)
{
    if (one < 0 || other < 0)
        return -1;
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    return one > most - other ? most : one + other;
}

} // namespace

QString transferText(const TransferBytes &bytes)
{
    if (bytes.sent < bytes.toSend)
        return progress(u"Sending"_s, bytes.sent, bytes.toSend);
    if (bytes.received > 0)
        return progress(u"Receiving"_s, bytes.received, bytes.toReceive);
    return {};
}

TransferMeter::TransferMeter(QObject *parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setInterval(updateInterval);
    connect(m_timer, &QTimer::timeout, this, &TransferMeter::update);
}

void TransferMeter::watch(QNetworkReply *reply)
{
    m_transfers[reply].age.start();
    m_timer->start();
    emit runningChanged();
    // For a sequential body Qt does not know the length: total equals sent, and both are 0 at the end.
    const qint64 length = reply->request().header(QNetworkRequest::ContentLengthHeader).toLongLong();
    connect(reply, &QNetworkReply::uploadProgress, this, [this, reply, length](qint64 sent, qint64 total) {
        if (total > 0) {
            m_transfers[reply].bytes.sent = sent;
            m_transfers[reply].bytes.toSend = std::max(length, total);
        }
    });
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
        m_transfers[reply].bytes.received = received;
        m_transfers[reply].bytes.toReceive = total;
    });
    const auto forget = [this, reply] {
        if (m_transfers.remove(reply) > 0)
            emit runningChanged();
        update();
    };
    // No progress comes after the end.
    connect(reply, &QNetworkReply::finished, this, forget);
    connect(reply, &QObject::destroyed, this, forget);
}

void TransferMeter::update()
{
    TransferBytes sum;
    for (const Transfer &transfer : std::as_const(m_transfers)) {
        if (!transfer.age.hasExpired(m_showDelay))
            continue;
        sum.sent += transfer.bytes.sent;
        sum.toSend = totalOf(sum.toSend, transfer.bytes.toSend);
        sum.received += transfer.bytes.received;
        sum.toReceive = totalOf(sum.toReceive, transfer.bytes.toReceive);
    }
    if (m_transfers.isEmpty())
        m_timer->stop();
    const QString text = transferText(sum);
    if (text == m_text)
        return;
    m_text = text;
    emit textChanged();
}
