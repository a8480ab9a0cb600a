#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>

/// A sequential upload body: Qt 6.4 and 6.8 resend a POST with a seekable body when the server closes early,
/// so that a ticket would be opened or credits spent twice. The bytes are shared, not copied.
class UploadBody : public QIODevice
{
    Q_OBJECT

public:
    explicit UploadBody(const QList<QByteArray> &pieces, QObject *parent = nullptr);

    bool isSequential() const override { return true; }
    qint64 size() const override { return m_size; }
    qint64 bytesAvailable() const override;
    bool atEnd() const override;
    /// Always refused, without the warning of the base class.
    bool seek(qint64 position) override;

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *data, qint64 maxSize) override;

private:
    QList<QByteArray> m_pieces;
    qint64 m_size = 0;
    /// Bytes read so far: in all, and of the piece at `m_piece`.
    qint64 m_read = 0;
    qsizetype m_piece = 0;
    qsizetype m_pieceRead = 0;
};
