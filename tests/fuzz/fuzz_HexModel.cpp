// The hex editor's rows: the buffer as a field, then steps of one byte (which step) and its numbers.

#include "FuzzSupport.h"
#include "core/HexModel.h"

#include <QAbstractItemModelTester>

#include <algorithm>
#include <iterator>

namespace {

QByteArray field(const HexModel &model, int row, HexModel::Role role)
{
    return model.data(model.index(row), role).toString().toLatin1();
}

// The rows show the bytes and nothing else.
void expectRows(const HexModel &model)
{
    const QByteArray bytes = model.bytes();
    FUZZ_EXPECT(model.rowCount() == std::max<qsizetype>((bytes.size() + 15) / 16, 1));
    QByteArray shown;
    QByteArray ascii;
    for (int row = 0; row < model.rowCount(); ++row) {
        FUZZ_EXPECT(field(model, row, HexModel::OffsetRole)
                    == QByteArray::number(row * 16, 16).rightJustified(8, '0').toUpper());
        const QByteArray hex = field(model, row, HexModel::HexRole);
        const QByteArray rowBytes = QByteArray::fromHex(hex);
        FUZZ_EXPECT(hex == rowBytes.toHex(' ').toUpper());
        FUZZ_EXPECT(rowBytes.size() == 16 || row == model.rowCount() - 1);
        shown += rowBytes;
        ascii += field(model, row, HexModel::AsciiRole);
    }
    FUZZ_EXPECT(shown == bytes);
    QByteArray printable = bytes;
    const auto isHidden = [](char c) { return c < 32 || c > 126; };
    std::replace_if(printable.begin(), printable.end(), isHidden, '.');
    FUZZ_EXPECT(ascii == printable);
}

void expectCursor(const HexModel &model)
{
    FUZZ_EXPECT(model.byteCount() == model.bytes().size());
    FUZZ_EXPECT(model.cursor() >= 0 && model.cursor() < std::max(model.byteCount(), 1));
    FUZZ_EXPECT(model.currentRow() == model.cursor() / 16 && model.currentRow() < model.rowCount());
}

void patch(HexModel &model, int offset, const QByteArray &bytes)
{
    const QByteArray before = model.bytes();
    const int cursor = model.cursor();
    const bool fits = !bytes.isEmpty() && offset >= 0 && offset <= before.size() - bytes.size();
    FUZZ_EXPECT(model.applyPatch(offset, bytes) == fits);
    FUZZ_EXPECT(model.cursor() == cursor);
    if (!fits) {
        FUZZ_EXPECT(model.bytes() == before);
        return;
    }
    FUZZ_EXPECT(model.bytes() == before.first(offset) + bytes + before.sliced(offset + bytes.size()));
}

void moveCursor(HexModel &model, int position)
{
    model.setCursor(position);
    FUZZ_EXPECT(model.cursor() == std::clamp(position, 0, std::max(model.byteCount(), 1) - 1));
}

void clickRow(HexModel &model, int row)
{
    model.clickRow(row);
    const qint64 last = std::max(model.byteCount(), 1) - 1;
    FUZZ_EXPECT(model.cursor() == std::clamp<qint64>(qint64(row) * 16, 0, last));
}

void replaceBytes(HexModel &model, const QByteArray &bytes)
{
    const int cursor = model.cursor();
    model.setBytes(bytes);
    FUZZ_EXPECT(model.bytes() == bytes);
    FUZZ_EXPECT(model.cursor() == std::min(cursor, std::max(model.byteCount(), 1) - 1));
}

void step(HexModel &model, FuzzInput &input)
{
    // Wide enough to pass every end of a 32-bit number when taken times sixteen.
    constexpr int scale = 65536;
    switch (input.takeByte() % 6) {
    case 0:
        moveCursor(model, input.takeShort());
        break;
    case 1:
        moveCursor(model, input.takeShort() * scale);
        break;
    case 2:
        clickRow(model, input.takeShort());
        break;
    case 3:
        clickRow(model, input.takeShort() * scale);
        break;
    case 4: {
        const int offset = input.takeShort();
        patch(model, offset, input.takeBytes(input.takeByte()));
        break;
    }
    default:
        replaceBytes(model, input.takeBytes(input.takeByte()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    HexModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setBytes(input.takeField());
    while (!input.atEnd()) {
        step(model, input);
        expectCursor(model);
    }
    expectRows(model);
    FUZZ_EXPECT(!model.data(model.index(model.rowCount()), HexModel::HexRole).isValid());
    FUZZ_EXPECT(!model.data(model.index(0), Qt::DisplayRole).isValid());
    return 0;
}
