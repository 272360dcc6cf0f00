// What both benchmark programs have in common: their command line, and how samples become the
// counters of a benchmark.
#pragma once

#include <benchmark/benchmark.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "child_sample.h"

namespace bench {

using Measure = std::function<void(Sample&)>;

struct Variant {
  std::string prefix;  // of its counters; the first variant has none
  Measure measure;
};

// A benchmark of so many rounds. Each takes one sample of every variant in turn, so that whatever
// else the machine does meets all of them alike. The counters are medians: ms, cpu_ms, MBps and
// record_MBps (of wall time), nodes, record_bytes, source_bytes and peak_bytes.
void registerBenchmark(const std::string& name, std::vector<Variant> variants, int rounds);

// Runs what was registered, with a readable table on standard error; --benchmark_out=FILE writes
// it down.
void runRegistered();

std::string readFile(const std::filesystem::path& path);

// The files right in the folder, by name.
std::vector<std::string> filesOf(const std::filesystem::path& folder);

}  // namespace bench
