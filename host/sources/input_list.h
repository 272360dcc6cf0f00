// All that a run is over, in order: what the user named, with directories walked.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sources/directory_walk.h"

namespace host {

enum class InputKind {
  kFile,        // for the module
  kRefused,     // a name, or a directory that was not listed to its end
  kPassedOver,  // met in a walk
};

struct Input {
  std::string path;
  InputKind kind;
  std::string reason;       // of one that is not for the module
  std::uint64_t place = 0;  // among the inputs that are reported on, which kPassedOver is not
  std::string copy = {};    // the file that holds its text, if that is not at path
  bool isFound = false;     // in a walk, and not named

  const std::string& textPath() const { return copy.empty() ? path : copy; }
};

struct Inputs {
  std::vector<Input> all;
  std::uint64_t reportCount = 0;
  std::uint64_t fileCount = 0;       // of these, those for the module
  std::uint64_t unchangedCount = 0;  // files that are left out, since they were read before
  std::uint64_t skippedCount = 0;    // binary files and entries that git ignores, met in walks
};

inline constexpr const char* kIrregular = "not a regular file, skipped";

// What a run writes to and is therefore not to read.
struct Written {
  std::optional<std::string> file;             // that takes the output, or
  int output;                                  // a descriptor, or negative
  std::optional<std::string> diagnosticsFile;  // that takes the diagnostic lines, or
  int diagnostics;                             // a descriptor, or negative
  std::string directory;                       // of answer files, or empty
};

// Finds the kind of each name, and walks directories. What is written is skipped in a walk. Of
// names, the output of a descriptor is refused; for a file that the run would replace or empty, and
// for the directory, it throws Failure.
Inputs findInputs(const std::vector<std::string>& names, const WalkRules& rules,
                  const Written& written);

// The one input of a run over a text that is kept in the file copy.
Inputs inputCalled(const std::string& name, const std::string& copy);

// The size of a regular file in bytes; 0 for all else, and for what is not there.
std::uint64_t regularFileBytes(const std::string& path);

}  // namespace host
