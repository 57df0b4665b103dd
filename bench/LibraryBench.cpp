// Times the library's operations on large pictures. With TESSEL_BENCH_PICTURES in the environment
// these are the photographs of that folder, else noise. What each figure is compared with is timed
// in the same run; see docs/performance.md.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "bench/DatabaseBench.h"
#include "bench/Operations.h"
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

/// Enlarging makes more bytes than it reads, and its definition is slow: a few pictures suffice.
constexpr std::size_t kEnlarged = 4;
/// Of any result: 7 bytes for each source pixel, which is what CombineWithAlpha reads.
constexpr std::size_t kMostBytesPerPixel = 7;

/// The most that is in use beside the set: SeparateAlpha's pictures and its results.
constexpr std::size_t kWorkBytesPerPixel = 8;

/// Lets the allocator keep memory, as the program does, and gives it `bytes` to keep: page faults
/// of fresh memory would drown the operations that make a new buffer.
void KeepMemory(std::size_t bytes)
{
    constexpr std::size_t kBlock = 64 << 20;
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, -1);
#endif
    std::deque<std::vector<unsigned char>> blocks;
    for (std::size_t total = 0; total < bytes; total += kBlock)
        blocks.emplace_back(kBlock);
}

/// Times one pass over the set. What it works on is made and released off the clock.
void TimeOperation(benchmark::State& state, const SOperation& operation,
                   const CPictureSet& pictures, std::size_t count, unsigned char* buffer)
{
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        auto works = pictures.Copy(count, operation.mBits, operation.mSecondBits);
        state.ResumeTiming();
        for (SWork& work : works)
            operation.mRun(work, buffer);
        state.PauseTiming();
        works.clear();
        state.ResumeTiming();
    }
    const int bytes = (operation.mBits + operation.mSecondBits) / 8;
    state.SetBytesProcessed(static_cast<std::int64_t>(pictures.Pixels(count)) * bytes);
}

void Register(const std::string& name, const SOperation& operation, const CPictureSet& pictures,
              unsigned char* buffer)
{
    const bool enlarging = name.ends_with("/enlarge");
    const std::size_t count = enlarging ? std::min(kEnlarged, pictures.Count()) : pictures.Count();
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=, &operation, &pictures](auto& state) {
                                     TimeOperation(state, operation, pictures, count, buffer);
                                 })
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

void RegisterAll(const CPictureSet& pictures, unsigned char* buffer)
{
    for (const SOperation& operation : ScalerOperations())
        Register(operation.mName, operation, pictures, buffer);
    static std::deque<SOperation> copies;
    for (const SOperation& operation : Operations()) {
        const std::string name = operation.mName;
        Register("operation/" + name, operation, pictures, buffer);
        copies.push_back({"", operation.mBits, operation.mSecondBits, CopySources});
        Register("copy/" + name, copies.back(), pictures, buffer);
    }
    RegisterDatabase();
}

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    // The library's operations write lines to standard output, the reports go past them.
    std::ostream reports(std::cout.rdbuf());
    std::cout.rdbuf(nullptr);

    const CPictureSet pictures(std::getenv("TESSEL_BENCH_PICTURES"));
    if (pictures.Count() == 0) {
        std::cerr << "library_bench: no colour pictures of 5 megapixels and more" << std::endl;
        return 1;
    }
    KeepMemory(pictures.Pixels(pictures.Count()) * kWorkBytesPerPixel);
    std::vector<unsigned char> buffer(pictures.LargestPixels() * kMostBytesPerPixel);
    if (!ScalersAgree(pictures, buffer.data())) {
        std::cerr << "library_bench: the scaler's pixels aren't its definition's" << std::endl;
        return 1;
    }
    RegisterAll(pictures, buffer.data());
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_None);
    reporter.SetOutputStream(&reports);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
