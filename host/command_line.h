// What the user asked for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "directory_walk.h"
#include "file_limits.h"
#include "format.h"
#include "name_list.h"

namespace host {

enum class Color { kAuto, kAlways, kNever };

struct CommandLine {
  bool help = false;                    // the rest is as if not given
  bool version = false;                 // files may be empty
  std::optional<std::string> generate;  // the kind of text that is asked for; files may be empty
  std::vector<std::string> files;       // may be empty with a list
  std::optional<std::string> list;      // a file with names of further files
  NameEnd listNameEnd = NameEnd::kLineFeed;
  bool recursive = false;
  WalkRules walkRules;
  std::optional<std::string> outDirectory;
  std::string defines;                // the values of --defines, joined by line feeds
  std::optional<std::string> plugin;  // without it the program finds its own
  std::string diagnostics = "none";
  const Format* format = nullptr;    // set by readCommandLine
  std::optional<std::size_t> depth;  // of the outline
  std::string onlyLabels;            // the values of --only, joined by commas
  bool times = false;
  unsigned jobs = 1;
  FileLimits limits;
  bool strict = false;
  bool quiet = false;
  bool progress = true;
  Color color = Color::kAuto;
};

// Throws Failure for a command line that cannot be followed.
CommandLine readCommandLine(int argc, const char* const* argv);

}  // namespace host
