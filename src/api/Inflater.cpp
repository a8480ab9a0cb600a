#include "api/Inflater.h"

namespace {

constexpr int eitherFormat = 32;
constexpr qsizetype piece = 256 * 1024;

} // namespace

Inflater::Inflater()
{
    if (inflateInit2(&m_stream, MAX_WBITS + eitherFormat) != Z_OK)
        m_state = State::Broken;
}

Inflater::~Inflater()
{
    inflateEnd(&m_stream);
}

void Inflater::add(const QByteArray &packed, QByteArray &bytes, qint64 most)
{
    // zlib does not write there.
    m_stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(packed.constData()));
    m_stream.avail_in = static_cast<uInt>(packed.size());
    bool isFull = false;
    while ((m_stream.avail_in > 0 || isFull) && m_state != State::Broken && bytes.size() <= most) {
        // One body may follow another.
        if (m_state == State::Whole)
            inflateReset(&m_stream);
        const qsizetype had = bytes.size();
        bytes.resize(had + piece);
        m_stream.next_out = reinterpret_cast<Bytef *>(bytes.data() + had);
        m_stream.avail_out = static_cast<uInt>(piece);
        const int result = inflate(&m_stream, Z_NO_FLUSH);
        bytes.resize(had + piece - static_cast<qsizetype>(m_stream.avail_out));
        isFull = m_stream.avail_out == 0 && result == Z_OK;
        if (result == Z_STREAM_END)
            m_state = State::Whole;
        else
            m_state = result == Z_OK || result == Z_BUF_ERROR ? State::Unfinished : State::Broken;
    }
}
