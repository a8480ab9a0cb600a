#include "FuzzSupport.h"

#include "support/TestMain.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr char recordSeparator = '\x1e';

constexpr char16_t firstStandIn = 0xE000;
constexpr char16_t lastStandIn = 0xE7FF;
constexpr char16_t firstSurrogate = 0xD800;

// Most inputs make Qt or a model warn, and writing that down would cost more than the input.
void dropMessage(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "fatal: %s\n", qPrintable(message));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static const TestEnvironment environment;
    // Never destroyed: at the exit Qt Network's own globals may be gone before it, and Qt 6.8 then crashes.
    [[maybe_unused]] static const auto *const application = new QCoreApplication(*argc, *argv);
    qInstallMessageHandler(dropMessage);
    return 0;
}

void endAsFind(const char *expectation, const char *file, int line)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, expectation);
    std::abort();
}

QString textOf(const QByteArray &utf8)
{
    QString text = QString::fromUtf8(utf8);
    for (QChar &c : text) {
        if (c.unicode() >= firstStandIn && c.unicode() <= lastStandIn)
            c = QChar(static_cast<char16_t>(c.unicode() - firstStandIn + firstSurrogate));
    }
    return text;
}

bool keepsItsTexts(const QByteArray &json)
{
    return !json.contains("\xef\xbb\xbf") && !json.toLower().contains("\\ufeff");
}

FuzzInput::FuzzInput(const std::uint8_t *data, std::size_t size)
    : m_rest(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))
{
}

std::uint8_t FuzzInput::takeByte()
{
    const QByteArray byte = takeBytes(1);
    return byte.isEmpty() ? std::uint8_t(0) : static_cast<std::uint8_t>(byte.front());
}

std::int16_t FuzzInput::takeShort()
{
    const int low = takeByte();
    const int high = takeByte();
    return static_cast<std::int16_t>(high << 8 | low);
}

QByteArray FuzzInput::takeBytes(qsizetype count)
{
    const QByteArray bytes = m_rest.first(std::min(count, m_rest.size()));
    m_rest.remove(0, bytes.size());
    return bytes;
}

QByteArray FuzzInput::takeField()
{
    const qsizetype end = m_rest.indexOf(recordSeparator);
    const QByteArray field = takeBytes(end < 0 ? m_rest.size() : end);
    takeBytes(1);
    return field;
}

QByteArray FuzzInput::takeRest()
{
    return takeBytes(m_rest.size());
}
