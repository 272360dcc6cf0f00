// How near the module's first runs in a process come to the least that any module with its contract
// has to do: read the file, look at each byte once, allocate the nodes that stay, and copy the
// finished records into one answer from malloc. What decides which records there are is left out.
//
// usage: bench_least TEXTS ROUNDS MODULE [--benchmark_...]
//
// TEXTS is laid out as for bench_runs. Of each route, the files of 10 KB are run, and the whole
// text.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "opened_module.h"
#include "records/record_reader.h"
#include "report.h"
#include "tree/object_branch.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFirstRoom = std::size_t{64} * 1024;
constexpr std::string_view kRecordStart = "\n  {\n";

// What a run has made of a file.
struct Made {
  struct Record {
    std::string contents;
    std::string label;
    std::int32_t parent = -1;
    std::string_view bytes;  // of the answer
  };

  std::string file;
  std::string answer;
  std::vector<Record> records;
  std::size_t nodes = 0;  // some nodes have no record
};

void takeRecords(Made& made) {
  std::string_view rest = made.answer;
  host::RecordReader reader(made.answer);
  while (const host::Record* const record = reader.next()) {
    const std::size_t end = std::min(rest.find(kRecordStart, 2), rest.size());
    made.records.push_back({.contents = std::string(record->contents),
                            .label = std::string(record->label),
                            .parent = record->parentId,
                            .bytes = rest.substr(0, end)});
    rest.remove_prefix(end);
  }
  if (!rest.empty()) throw std::runtime_error(made.file + ": " + reader.fault());
}

// Asks the module in a child, so that this process has no memory that its children could reuse.
std::vector<Made> makeAll(const std::string& path, const std::vector<std::string>& files) {
  const fs::path scratch =
      fs::temp_directory_path() / ("bench_least." + std::to_string(::getpid()));
  sampleInChild([&](Sample&) {
    const OpenedModule module(path);
    std::ofstream out(scratch, std::ios::binary);
    for (const std::string& file : files) {
      const std::string_view answer = module.parse(file);
      out << module.nodeCount() << " " << answer.size() << "\n" << answer;
    }
    out.close();
    if (!out) throw std::runtime_error("cannot write " + scratch.string());
  });
  std::vector<Made> all(files.size());
  std::ifstream in(scratch, std::ios::binary);
  for (std::size_t i = 0; i < files.size(); ++i) {
    Made& made = all[i];
    made.file = files[i];
    std::size_t bytes = 0;
    in >> made.nodes >> bytes;
    in.get();
    made.answer.resize(bytes);
    in.read(made.answer.data(), static_cast<std::streamsize>(bytes));
    if (!in) throw std::runtime_error("cannot read " + scratch.string());
    takeRecords(made);
  }
  fs::remove(scratch);
  return all;
}

// An answer that grows as its size becomes known.
class Answer {
 public:
  Answer() : bytes_(static_cast<char*>(std::malloc(room_))) {}

  void append(std::string_view text) {
    if (size_ + text.size() > room_) {
      while (size_ + text.size() > room_) room_ *= 2;
      bytes_ = static_cast<char*>(std::realloc(bytes_, room_));
    }
    if (bytes_ == nullptr) throw std::bad_alloc();
    std::memcpy(bytes_ + size_, text.data(), text.size());
    size_ += text.size();
  }

  std::string_view text() const { return {bytes_, size_}; }

 private:
  std::size_t room_ = kFirstRoom;
  std::size_t size_ = 0;
  char* bytes_;
};

// Nodes and answer stay, as a run's do.
void doTheLeast(const Made& made, std::set<ObjectBranch*>& registry, Answer& answer) {
  const std::string source = readFile(made.file);
  benchmark::DoNotOptimize(std::count(source.begin(), source.end(), '\n'));
  std::vector<ObjectBranch*> nodes;
  nodes.reserve(made.nodes);
  for (std::size_t id = 0; id < made.nodes; ++id) {
    auto* const node = new ObjectBranch;
    registry.insert(registry.end(), node);
    nodes.push_back(node);
    node->nodeID = static_cast<std::int32_t>(id);
    node->filePath = made.file;
    if (id >= made.records.size()) continue;
    const Made::Record& record = made.records[id];
    node->contents = record.contents;
    node->branchTypeAsString = record.label;
    if (record.parent >= 0 && static_cast<std::size_t>(record.parent) < id) {
      node->parent = nodes[static_cast<std::size_t>(record.parent)];
      node->parent->children.push_back(node);
    }
    answer.append(record.bytes);
  }
}

Variant least(const std::vector<Made>& all) {
  return {"least_", [&all](Sample& sample) {
            auto& registry = *new std::set<ObjectBranch*>;
            for (const Made& made : all) {
              Answer answer;
              addTime(sample, [&] { doTheLeast(made, registry, answer); });
              if (answer.text() != made.answer) throw std::runtime_error("another answer");
              sample.recordBytes += static_cast<double>(made.answer.size());
              sample.nodes += static_cast<double>(made.nodes);
            }
          }};
}

Variant whole(const std::string& path, const std::vector<Made>& all) {
  return {"", [path, &all](Sample& sample) {
            const OpenedModule module(path);
            for (const Made& made : all) {
              const char* answer = nullptr;
              addTime(sample, [&] { answer = module.parse(made.file); });
              if (made.answer != answer) throw std::runtime_error("another answer");
              sample.sourceBytes += static_cast<double>(fs::file_size(made.file));
              sample.recordBytes += static_cast<double>(made.answer.size());
              sample.nodes += module.nodeCount();
            }
          }};
}

int run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 4) {
    std::cerr << "usage: bench_least TEXTS ROUNDS MODULE [--benchmark_...]\n";
    return 2;
  }
  const int rounds = std::atoi(argv[2]);
  std::vector<std::vector<Made>> all;
  std::vector<std::string> names;
  for (const std::string& route : filesOf(fs::path(argv[1]) / "runs")) {
    for (const char* const size : {"10KB", "whole"}) {
      if (!fs::exists(fs::path(route) / size)) continue;
      names.push_back(fs::path(route).filename().string() + "/" + size);
      all.push_back(makeAll(argv[3], filesOf(fs::path(route) / size)));
    }
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    registerBenchmark(names[i], {whole(argv[3], all[i]), least(all[i])}, rounds);
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
    std::cerr << "bench_least: " << error.what() << "\n";
    return 1;
  }
}
