// A long text as lines: how often to repeat it (a byte), and the text.

#include "FuzzSupport.h"
#include "core/TextLines.h"

#include <QAbstractItemModelTester>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestLine = 1000;

// A cut line goes on in the next; a whole one ends at a line break, which belongs to none.
void expectJoined(const TextLines &lines, int role)
{
    const QString text = lines.text();
    qsizetype at = 0;
    bool isCut = false;
    for (int row = 0; row < lines.rowCount(); ++row) {
        const QString line = lines.data(lines.index(row), role).toString();
        FUZZ_EXPECT(line.size() <= longestLine && !line.contains('\n'_L1));
        FUZZ_EXPECT(QStringView(text).sliced(at).startsWith(line));
        if (isCut)
            FUZZ_EXPECT(!(text.at(at - 1).isHighSurrogate() && text.at(at).isLowSurrogate()));
        at += line.size();
        isCut = at < text.size() && text.at(at) != '\n'_L1;
        FUZZ_EXPECT(!isCut || line.size() >= longestLine - 1);
        at += isCut ? 0 : 1;
    }
    // The last break has no line after it.
    FUZZ_EXPECT(at == text.size() || at == text.size() + 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int times = input.takeByte();
    const QString text = input.takeRestAsText();

    TextLines lines;
    const QAbstractItemModelTester tester(&lines, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const int role = lines.roleNames().key("line");
    for (const QString &shown : {text, text.repeated(times), text.chopped(text.size() / 2)}) {
        lines.setText(shown);
        FUZZ_EXPECT(lines.text() == shown);
        expectJoined(lines, role);
    }
    FUZZ_EXPECT(!lines.data(lines.index(lines.rowCount()), role).isValid());
    FUZZ_EXPECT(!lines.data(lines.index(0), Qt::DisplayRole).isValid());
    return 0;
}
