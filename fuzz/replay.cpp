// Runs a target over files instead of under a fuzzer: to reproduce a finding, and as a test.
//
//   replay TARGET PATH ...
//
// Each path is a file or a folder, which is searched recursively. Fails if there are no files.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "targets.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesAt(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const fuzz::Target& target, const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::fprintf(stderr, "%s\n", path.c_str());
  fuzz::run(target, bytes);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const fuzz::Target* const target = fuzz::findTarget(argc > 1 ? argv[1] : "");
    if (target == nullptr) throw std::runtime_error("no target of that name");
    std::size_t count = 0;
    for (int i = 2; i < argc; ++i) {
      for (const fs::path& path : filesAt(argv[i])) {
        replay(*target, path);
        ++count;
      }
    }
    if (count == 0) throw std::runtime_error("no file to replay");
    std::printf("%zu files replayed\n", count);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "replay: %s\n", error.what());
    return 1;
  }
  return 0;
}
