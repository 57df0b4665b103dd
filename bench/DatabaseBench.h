#ifndef TESSEL_BENCH_DATABASEBENCH_H
#define TESSEL_BENCH_DATABASEBENCH_H

/// Adds the timings of reading and writing a thumbnail database of 100,000 lines.
void RegisterDatabase();

#endif
