// The hex editor's rules: row texts, and searching 256 MiB beside the C library's memmem.

#include "core/FileTools.h"
#include "core/HexModel.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>

namespace {

constexpr qsizetype imageSize = 256 * 1024 * 1024;

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    std::mt19937_64 generator(4);
    for (qsizetype i = 0; i + 8 <= size; i += 8) {
        const auto word = generator();
        std::memcpy(bytes.data() + i, &word, sizeof word);
    }
    return bytes;
}

const QByteArray &haystack(bool random)
{
    static const QByteArray zeros(imageSize, '\0');
    static const QByteArray noise = randomBytes(imageSize);
    return random ? noise : zeros;
}

// Absent from both haystacks. On zeros all but the last byte matches everywhere; noise of another seed
// matches rarely.
QByteArray needle(bool random, qsizetype length)
{
    QByteArray bytes = random ? randomBytes(128).last(64).first(length) : QByteArray(length, '\0');
    bytes.back() = static_cast<char>(bytes.back() + 1);
    return bytes;
}

void findBytes(benchmark::State &state)
{
    const bool random = state.range(0) != 0;
    const QByteArray wanted = needle(random, state.range(1));
    for (auto _ : state)
        benchmark::DoNotOptimize(FileTools::findBytes(haystack(random), wanted, 1));
    state.SetBytesProcessed(state.iterations() * imageSize);
}

void memmemOfTheLibrary(benchmark::State &state)
{
    const bool random = state.range(0) != 0;
    const QByteArray wanted = needle(random, state.range(1));
    const QByteArray &bytes = haystack(random);
    for (auto _ : state) {
        benchmark::DoNotOptimize(memmem(bytes.constData() + 1, static_cast<size_t>(bytes.size() - 1),
                                        wanted.constData(), static_cast<size_t>(wanted.size())));
    }
    state.SetBytesProcessed(state.iterations() * imageSize);
}

void needles(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"random", "needle"})
        ->ArgsProduct({{0, 1}, {4, 8, 64}})
        ->Unit(benchmark::kMillisecond);
}

void oneRow(benchmark::State &state)
{
    HexModel model;
    model.setBytes(randomBytes(1024 * 1024));
    int row = 0;
    for (auto _ : state) {
        const QModelIndex index = model.index(row);
        for (const int role : {HexModel::OffsetRole, HexModel::HexRole, HexModel::AsciiRole})
            benchmark::DoNotOptimize(model.data(index, role));
        row = (row + 1) % model.rowCount();
    }
}

BENCHMARK(findBytes)->Apply(needles);
BENCHMARK(memmemOfTheLibrary)->Apply(needles);
BENCHMARK(oneRow);

} // namespace

BENCHMARK_MAIN();
