#pragma once

#include <QByteArray>
#include <QString>

#include <zlib.h>

/// Unpacks a gzip or deflate body while it arrives. Qt's own unpacking takes a truncated body for a whole
/// one, and keeps two copies of the packed bytes. Belongs to one thread.
class Inflater
{
public:
    enum class State
    {
        Unfinished,
        Whole,
        Broken
    };

    Inflater();
    ~Inflater();
    Q_DISABLE_COPY_MOVE(Inflater)

    /// Unpacks onto the end of `bytes`, until there are more than `most`.
    void add(const QByteArray &packed, QByteArray &bytes, qint64 most);
    /// Of all that was added. A broken one stays so.
    State state() const { return m_state; }
    /// zlib's words for why it is broken.
    QString fault() const { return QString::fromLatin1(m_stream.msg); }

private:
    z_stream m_stream = {};
    State m_state = State::Unfinished;
};
