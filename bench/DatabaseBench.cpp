#include "bench/DatabaseBench.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "app/CTessel.h"

namespace {

constexpr long kLines = 100'000;

std::string FileName()
{
    const std::string name = "tesselbench." + std::to_string(getpid()) + ".txt";
    return std::filesystem::temp_directory_path() / name;
}

CTessel FilledDatabase()
{
    CTessel tessel;
    for (long i = 0; i < kLines; ++i)
        tessel.mFileInfoSet.insert({"picture" + std::to_string(i) + ".jpg", 1'700'000'000 + i});
    return tessel;
}

void WriteLines(benchmark::State& state)
{
    const std::string file = FileName();
    CTessel tessel = FilledDatabase();
    for ([[maybe_unused]] auto _ : state)
        tessel.WriteDbase(file.c_str());
    state.SetItemsProcessed(state.iterations() * kLines);
    std::filesystem::remove(file);
}

void ReadLines(benchmark::State& state)
{
    const std::string file = FileName();
    FilledDatabase().WriteDbase(file.c_str());
    for ([[maybe_unused]] auto _ : state) {
        CTessel tessel;
        tessel.ReadDbase(file.c_str());
        if (tessel.mFileInfoSet.size() != kLines)
            state.SkipWithError("lines are missing");
    }
    state.SetItemsProcessed(state.iterations() * kLines);
    std::filesystem::remove(file);
}

}  // namespace

void RegisterDatabase()
{
    benchmark::RegisterBenchmark("database/write", WriteLines)->Iterations(1);
    benchmark::RegisterBenchmark("database/read", ReadLines)->Iterations(1);
}
