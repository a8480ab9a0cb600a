#pragma once

#include <QByteArray>

#include <zlib.h>

/// Unpacks a body in gzip or zlib's format while it arrives. Qt's own unpacking takes the first half of a
/// body for the whole, and holds it twice. Belongs to one thread.
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

private:
    z_stream m_stream = {};
    State m_state = State::Unfinished;
};
