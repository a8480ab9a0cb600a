#include "api/UploadBody.h"

#include <algorithm>

UploadBody::UploadBody(const QList<QByteArray> &pieces, QObject *parent)
    : QIODevice(parent)
    , m_pieces(pieces)
{
    for (const QByteArray &piece : pieces)
        m_size += piece.size();
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 UploadBody::bytesAvailable() const
{
    return m_size - m_read + QIODevice::bytesAvailable();
}

bool UploadBody::atEnd() const
{
    return bytesAvailable() == 0;
}

bool UploadBody::seek(qint64)
{
    return false;
}

qint64 UploadBody::readData(char *data, qint64 maxSize)
{
    if (m_read == m_size)
        return maxSize == 0 ? 0 : -1;
    qint64 copied = 0;
    while (copied < maxSize && m_piece < m_pieces.size()) {
        const QByteArray &piece = m_pieces.at(m_piece);
        const qint64 count = std::min<qint64>(maxSize - copied, piece.size() - m_pieceRead);
        std::copy_n(piece.constData() + m_pieceRead, count, data + copied);
        copied += count;
        m_pieceRead += count;
        if (m_pieceRead == piece.size()) {
            ++m_piece;
            m_pieceRead = 0;
        }
    }
    m_read += copied;
    return copied;
}

qint64 UploadBody::writeData(const char *, qint64)
{
    return -1;
}
