#include "report.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

double median(const std::vector<Sample>& samples, double Sample::*field) {
  std::vector<double> values;
  for (const Sample& sample : samples) values.push_back(sample.*field);
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void setCounters(benchmark::State& state, const std::string& prefix,
                 const std::vector<Sample>& samples) {
  const double seconds = median(samples, &Sample::wallSeconds);
  const Sample& any = samples.front();  // byte counts are the same in each sample
  const auto set = [&](const char* name, double value) { state.counters[prefix + name] = value; };
  set("ms", seconds * 1e3);
  set("cpu_ms", median(samples, &Sample::cpuSeconds) * 1e3);
  set("MBps", any.sourceBytes / seconds * 1e-6);
  set("record_MBps", any.recordBytes / seconds * 1e-6);
  set("source_bytes", any.sourceBytes);
  set("record_bytes", any.recordBytes);
  set("nodes", any.nodes);
  set("peak_bytes", median(samples, &Sample::peakBytes));
}

void runVariants(benchmark::State& state, const std::vector<Variant>& variants) {
  // Warm up: read files and code into memory.
  for (const Variant& variant : variants) sampleInChild(variant.measure);
  std::vector<std::vector<Sample>> samples(variants.size());
  for ([[maybe_unused]] auto round : state) {
    for (std::size_t i = 0; i < variants.size(); ++i)
      samples[i].push_back(sampleInChild(variants[i].measure));
    state.SetIterationTime(samples.front().back().wallSeconds);
  }
  for (std::size_t i = 0; i < variants.size(); ++i)
    setCounters(state, variants[i].prefix, samples[i]);
  state.SetBytesProcessed(static_cast<std::int64_t>(samples.front().front().sourceBytes) *
                          static_cast<std::int64_t>(state.iterations()));
}

}  // namespace

void registerBenchmark(const std::string& name, std::vector<Variant> variants, int rounds) {
  benchmark::RegisterBenchmark(
      name.c_str(),
      [variants = std::move(variants)](benchmark::State& state) { runVariants(state, variants); })
      ->UseManualTime()
      ->Iterations(rounds)
      ->Unit(benchmark::kMillisecond);
}

void runRegistered() {
  benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_None);
  reporter.SetOutputStream(&std::cerr);
  reporter.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&reporter);
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> filesOf(const std::filesystem::path& folder) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    files.push_back(entry.path().string());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace bench
