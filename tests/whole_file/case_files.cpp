#include "whole_file/case_files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace whole_file {
namespace {

namespace fs = std::filesystem;

CaseFile loadCase(const fs::path& folder) {
  CaseFile loaded;
  loaded.folder = folder;
  loaded.name = fs::relative(folder, QUORL_CASES).generic_string();
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().stem() != "input") continue;
    if (!loaded.input.empty()) throw std::runtime_error("two inputs in " + loaded.name);
    loaded.input = entry.path().filename().string();
  }
  if (loaded.input.empty()) throw std::runtime_error("no input in " + loaded.name);
  loaded.records = readFile(folder / "expected.records");
  loaded.standardOutput = readFile(folder / "expected.stdout");
  if (fs::exists(folder / "expected.stderr")) {
    loaded.standardError = readFile(folder / "expected.stderr");
  }
  if (fs::exists(folder / "expected.omission")) {
    loaded.omission = readFile(folder / "expected.omission");
  }
  if (fs::exists(folder / "defines.txt")) loaded.defines = readFile(folder / "defines.txt");
  return loaded;
}

}  // namespace

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<CaseFile> loadCases() {
  std::vector<CaseFile> cases;
  for (const fs::directory_entry& route : fs::directory_iterator(QUORL_CASES)) {
    if (!route.is_directory()) continue;
    for (const fs::directory_entry& folder : fs::directory_iterator(route.path())) {
      cases.push_back(loadCase(folder.path()));
    }
  }
  if (cases.empty()) throw std::runtime_error("no cases in " QUORL_CASES);
  std::sort(cases.begin(), cases.end(),
            [](const CaseFile& a, const CaseFile& b) { return a.name < b.name; });
  return cases;
}

}  // namespace whole_file
