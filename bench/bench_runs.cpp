// Whole runs through ParseJS of a module opened at run time, including reading the file and the
// whole answer. Given two modules, runs them alternately.
//
// usage: bench_runs TEXTS ROUNDS MODULE [MODULE] [--benchmark_...]
//
// TEXTS/runs/ROUTE/SIZE holds the files of one benchmark: the same text for every size of a route,
// in pieces of that size. One sample parses all of them in one process, file by file.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "opened_module.h"
#include "report.h"

namespace bench {
namespace {

// With again, the process has already run the files once, untimed.
void runFiles(Sample& sample, const std::string& path, const std::vector<std::string>& files,
              bool again) {
  const OpenedModule module(path);
  for (std::size_t i = 0; again && i < files.size(); ++i) module.parse(files[i]);
  for (const std::string& file : files) {
    const char* answer = nullptr;
    addTime(sample, [&] { answer = module.parse(file); });
    sample.sourceBytes += static_cast<double>(std::filesystem::file_size(file));
    sample.recordBytes += static_cast<double>(std::strlen(answer));
    sample.nodes += module.nodeCount();
  }
}

int run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 4 && argc != 5) {
    std::cerr << "usage: bench_runs TEXTS ROUNDS MODULE [MODULE] [--benchmark_...]\n";
    return 2;
  }
  const int rounds = std::atoi(argv[2]);
  for (const std::string& route : filesOf(std::filesystem::path(argv[1]) / "runs")) {
    for (const std::string& size : filesOf(route)) {
      const std::vector<std::string> files = filesOf(size);
      const auto variants = [&](bool again) {
        std::vector<Variant> found;
        for (int i = 3; i < argc; ++i) {
          const std::string module = argv[i];
          found.push_back({i == 3 ? "" : "against_", [module, files, again](Sample& sample) {
                             runFiles(sample, module, files, again);
                           }});
        }
        return found;
      };
      const std::string routeName = std::filesystem::path(route).filename().string();
      const std::string sizeName = std::filesystem::path(size).filename().string();
      registerBenchmark(routeName + "/" + sizeName, variants(false), rounds);
      if (sizeName == "whole") registerBenchmark(routeName + "/again", variants(true), rounds);
    }
  }
  runRegistered();
  return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  try {
    return bench::run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "bench_runs: " << error.what() << "\n";
    return 1;
  }
}
