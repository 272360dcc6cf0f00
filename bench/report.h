// Shared by both benchmark programs: the command line, and turning samples into benchmark counters.
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
  std::string prefix;  // of its counters' names; empty for the first variant
  Measure measure;
};

// Registers a benchmark of so many rounds. Each round samples every variant in turn, so that other
// load on the machine affects all of them alike. The counters are medians: ms, cpu_ms, MBps and
// record_MBps (of wall time), nodes, record_bytes, source_bytes and peak_bytes.
void registerBenchmark(const std::string& name, std::vector<Variant> variants, int rounds);

// Runs the registered benchmarks and prints a table on standard error; --benchmark_out=FILE also
// writes the results to FILE.
void runRegistered();

std::string readFile(const std::filesystem::path& path);

// Returns the files directly in the folder, sorted by name.
std::vector<std::string> filesOf(const std::filesystem::path& folder);

}  // namespace bench
