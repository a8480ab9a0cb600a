#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

// What every target shares. A target is one source that defines LLVMFuzzerTestOneInput: the fuzzer's engine
// calls it with bytes it makes up, the replay program with the seeds.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
/// Gives the process a home of its own and an application object without a display. Called once, first.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

/// Ends the process where `holds` is not true; the engine then keeps the input.
#define FUZZ_EXPECT(holds)                                                                                   \
    do {                                                                                                     \
        if (!(holds))                                                                                        \
            endAsFind(#holds, __FILE__, __LINE__);                                                           \
    } while (false)

[[noreturn]] void endAsFind(const char *expectation, const char *file, int line);

/// UTF-8 as a text. The characters U+E000 to U+E7FF stand for the halves of surrogate pairs, which UTF-8
/// cannot carry but a JSON text can, so that seeds may hold halves without their other half.
QString textOf(const QByteArray &utf8);

/// Whether the texts in `json` are the same however they are come by. Qt loses a byte order mark at
/// the begin of a text or of a key, but not everywhere.
bool keepsItsTexts(const QByteArray &json);

/// Takes an input apart, front to back. Past the end everything is 0 or empty.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size);

    bool atEnd() const { return m_rest.isEmpty(); }
    std::uint8_t takeByte();
    /// Two bytes, the low one first.
    std::int16_t takeShort();
    /// As many bytes as there are, up to `count`.
    QByteArray takeBytes(qsizetype count);
    /// Up to the next record separator (0x1E), or to the end.
    QByteArray takeField();
    QString takeTextField() { return textOf(takeField()); }
    QByteArray takeRest();
    QString takeRestAsText() { return textOf(takeRest()); }

private:
    QByteArray m_rest;
};
