// The whole-file cases on disk.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace whole_file {

struct CaseFile {
  std::string name;  // "script/commonjs-module"
  std::filesystem::path folder;
  std::string input;                   // the input's file name
  std::optional<std::string> defines;  // bytes of the defines argument, if any
  std::string records;                 // expected
  std::string standardOutput;          // expected
  std::string standardError;           // expected; empty if the case has no such file
  std::string omission;                // what quorl-js reports as left out; likewise
};

// Returns all cases sorted by name. Throws if a folder does not hold exactly one input and both
// expectations: a case that checks nothing would go unnoticed.
std::vector<CaseFile> loadCases();

// Returns all bytes of a file. Throws if it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace whole_file
