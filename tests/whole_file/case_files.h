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
  std::optional<std::string> defines;  // the bytes of the defines argument, if there is one
  std::string records;                 // expected
  std::string standardOutput;          // expected
  std::string standardError;           // expected; empty without a file for it
};

// All cases, by name. Throws if a folder does not hold exactly one input and both expectations:
// a case that checks nothing would pass unseen.
std::vector<CaseFile> loadCases();

// All bytes of a file. Throws if it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace whole_file
