#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QString>

class QNetworkReply;
class QTimer;

/// Bytes of the current requests; an unknown total is -1.
struct TransferBytes
{
    qint64 sent = 0;
    qint64 toSend = 0;
    qint64 received = 0;
    qint64 toReceive = 0;
};
/// "Sending 12.3 MB of 64.0 MB" until all is sent, then "Receiving 1.2 MB"; empty when there is nothing to
/// show. Pure.
QString transferText(const TransferBytes &bytes);

/// Reports the progress of slow transfers to and from the service, as a sum when there are several. Main
/// thread.
class TransferMeter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString text READ text NOTIFY textChanged FINAL)
    /// Whether a request has not been answered yet.
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged FINAL)

public:
    explicit TransferMeter(QObject *parent = nullptr);

    QString text() const { return m_text; }
    bool isRunning() const { return !m_transfers.isEmpty(); }
    /// Counts the reply until it has finished or is destroyed.
    void watch(QNetworkReply *reply);
    /// Delay before a transfer is shown; 1 s by default.
    void setShowDelay(int milliseconds) { m_showDelay = milliseconds; }

signals:
    void textChanged();
    void runningChanged();

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
