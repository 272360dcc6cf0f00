// All that a run is over, in order: what the user named, with directories walked.
#pragma once

#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

#include "command_line.h"

namespace host {

enum class InputKind {
  kFile,                 // for the module
  kIrregular,            // named, but neither a regular file nor a directory
  kPassedOver,           // the same, met in a walk
  kUnreadableDirectory,  // not listed to its end
};

struct Input {
  std::string path;
  InputKind kind;
  std::error_code reason;   // of an unreadable directory
  std::uint64_t place = 0;  // among the inputs that are reported on, which kPassedOver is not
};

struct Inputs {
  std::vector<Input> all;
  std::uint64_t reportCount = 0;
  std::uint64_t fileCount = 0;  // of these, those for the module
};

// What is told of a file of the second and third kind.
std::string irregularFileMessage(const std::string& path);

// Looks at each name and below directories. A directory that is the same as passedOver, if that is
// not empty, is not gone into.
Inputs findInputs(const std::vector<std::string>& names, const CommandLine& commandLine,
                  const std::string& passedOver);

}  // namespace host
