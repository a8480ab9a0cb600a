#include "api/Inflater.h"

#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int gzipFormat = MAX_WBITS + 16;
constexpr int deflateFormat = MAX_WBITS;

QByteArray packed(const QByteArray &bytes, int format = gzipFormat)
{
    z_stream stream = {};
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, format, 8, Z_DEFAULT_STRATEGY);
    QByteArray result(bytes.size() + 1000, Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    deflate(&stream, Z_FINISH);
    result.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return result;
}

// Does not repeat itself within what zlib remembers.
QByteArray sample(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char &byte : bytes) {
        state = state * 1'664'525 + 1'013'904'223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

QByteArray changedAt(QByteArray bytes, qsizetype index)
{
    bytes[index] = static_cast<char>(bytes.at(index) ^ 1);
    return bytes;
}

constexpr qint64 noLimit = 1'000'000'000;

} // namespace

class TestInflater : public QObject
{
    Q_OBJECT

private slots:
    void unpacks_data();
    void unpacks();
    void knowsAnEnd();
    void stopsAtTheLimit();
};

void TestInflater::unpacks_data()
{
    using State = Inflater::State;
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<State>("state");

    const auto row = [](const char *name, const QByteArray &body, const QByteArray &bytes, State state) {
        QTest::newRow(name) << body << bytes << state;
    };
    const QByteArray large = sample(1'000'000);
    const QByteArray onePiece = large.first(256 * 1024);
    const QByteArray zeros(10'000'000, '\0');
    const QByteArray gzip = packed(large);
    const QByteArray one = packed("a");
    row("gzip", gzip, large, State::Whole);
    row("deflate", packed(large, deflateFormat), large, State::Whole);
    row("small", packed("{}"), "{}", State::Whole);
    row("of-nothing", packed({}), {}, State::Whole);
    row("much-larger", packed(zeros), zeros, State::Whole);
    row("exactly-one-piece", packed(onePiece), onePiece, State::Whole);
    row("two-in-a-row", gzip + one, large + "a", State::Whole);
    row("nothing", {}, {}, State::Unfinished);
    row("half-of-the-second", one + one.first(10), "a", State::Unfinished);
    row("without-its-sum", gzip.chopped(8), large, State::Unfinished);
    row("wrong-sum", changedAt(gzip, gzip.size() - 8), large, State::Broken);
    row("text-after", one + "text", "a", State::Broken);
    row("text", "plain text", {}, State::Broken);
}

void TestInflater::unpacks()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, bytes);
    QFETCH(Inflater::State, state);
    for (const qsizetype step : {qsizetype(1), qsizetype(1000), body.size() + 1}) {
        Inflater inflater;
        QByteArray found;
        for (qsizetype at = 0; at < body.size(); at += step)
            inflater.add(body.sliced(at, std::min(step, body.size() - at)), found, noLimit);
        QVERIFY(found == bytes);
        QCOMPARE(inflater.state(), state);
    }
}

void TestInflater::knowsAnEnd()
{
    const QByteArray body = packed(sample(1000));
    for (qsizetype size = 0; size < body.size(); ++size) {
        Inflater inflater;
        QByteArray found;
        inflater.add(body.first(size), found, noLimit);
        QCOMPARE(inflater.state(), Inflater::State::Unfinished);
    }
}

// By no more than the piece that passes it.
void TestInflater::stopsAtTheLimit()
{
    constexpr qint64 most = 1'000'000;
    Inflater inflater;
    QByteArray found;
    inflater.add(packed(QByteArray(100'000'000, '\0')), found, most);
    QVERIFY(found.size() > most);
    QVERIFY(found.size() < 2 * most);
}

KVTEDITOR_TEST_MAIN(TestInflater)
#include "tst_Inflater.moc"
