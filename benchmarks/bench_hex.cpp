// The hex editor's rules: row texts, and searching 256 MiB beside the C library's memmem.

#include "Haystack.h"
#include "core/FileTools.h"
#include "core/HexModel.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

const QByteArray &haystack(bool random)
{
    static const QByteArray zeros = Haystack::zeros();
    static const QByteArray noise = Haystack::noise();
    return random ? noise : zeros;
}

QByteArray needle(bool random, qsizetype length)
{
    return random ? Haystack::absentFromNoise(length) : Haystack::absentFromZeros(length);
}

void findBytes(benchmark::State &state)
{
    const bool random = state.range(0) != 0;
    const QByteArray wanted = needle(random, state.range(1));
    for (auto _ : state)
        benchmark::DoNotOptimize(FileTools::findBytes(haystack(random), wanted, 1));
    state.SetBytesProcessed(state.iterations() * Haystack::size);
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
    state.SetBytesProcessed(state.iterations() * Haystack::size);
}

void needles(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"random", "needle"})
        ->ArgsProduct({{0, 1}, {2, 4, 8, 64}})
        ->Unit(benchmark::kMillisecond);
}

void oneRow(benchmark::State &state)
{
    HexModel model;
    model.setBytes(Haystack::randomBytes(1024 * 1024));
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
