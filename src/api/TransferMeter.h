#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QString>

class QNetworkReply;
class QTimer;

/// Bytes of the requests under way; a total that is not known is -1.
struct TransferBytes
{
    qint64 sent = 0;
    qint64 toSend = 0;
    qint64 received = 0;
    qint64 toReceive = 0;
};
/// "Sending 12.3 MB of 64.0 MB" until all is sent, then "Receiving 1.2 MB"; empty when there is nothing to
/// tell. Pure.
QString transferText(const TransferBytes &bytes);

/// Tells how far the transfers to and from the service are that have taken longer than a moment; together,
/// when there are several. Main thread.
class TransferMeter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY textChanged FINAL)

public:
    explicit TransferMeter(QObject *parent = nullptr);

    QString text() const { return m_text; }
    /// Counts the reply until it has finished or is gone.
    void watch(QNetworkReply *reply);
    /// Delay before a transfer is shown; 1 s by default.
    void setShowDelay(int milliseconds) { m_showDelay = milliseconds; }

signals:
    void textChanged();

private:
    struct Transfer
    {
        TransferBytes bytes;
        QElapsedTimer age;
    };

    void update();

    QHash<QObject *, Transfer> m_transfers;
    QTimer *m_timer;
    int m_showDelay = 1000;
    QString m_text;
};
