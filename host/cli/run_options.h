// What the user asked for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "formats/format.h"
#include "outline/item.h"
#include "sources/directory_walk.h"
#include "sources/name_list.h"
#include "workers/file_limits.h"

namespace host {

enum class Color { kAuto, kAlways, kNever };

struct RunOptions {
  bool help = false;                     // the rest is as if not given
  bool version = false;                  // files may be empty
  std::optional<std::string> generate;   // the kind of text that is asked for; files may be empty
  std::vector<std::string> files;        // may be empty with a list
  std::optional<std::string> list;       // a file with names of further files
  std::optional<std::string> stdinName;  // the name of the text that standard input holds
  NameEnd listNameEnd = NameEnd::kLineFeed;
  WalkRules walkRules;
  std::optional<std::string> outputFile;
  std::optional<std::string> outDirectory;
  std::string defines;                // the values of --defines, joined by line feeds
  std::optional<std::string> plugin;  // without it the program finds its own
  std::string diagnostics = "none";
  const Format* format = nullptr;       // set by parseRunOptions
  std::optional<std::size_t> depth;     // the lowest level that is asked for
  std::vector<std::string> onlyLabels;  // empty for all
  std::optional<outline::KindSet> onlyKinds;
  bool ranges = false;
  bool times = false;
  unsigned jobs = 1;
  FileLimits limits;
  bool strict = false;
  bool quiet = false;
  bool progress = true;
  Color color = Color::kAuto;
};

// Throws Failure for a command line that cannot be followed.
RunOptions parseRunOptions(int argc, const char* const* argv);

class ArgumentParser;

// The options that say which files are read and how far, and those that only say how the run goes,
// for commands that share them.
void readInputOptions(const ArgumentParser& arguments, RunOptions& options);
void readRunningOptions(const ArgumentParser& arguments, RunOptions& options);

// The value of --color; throws Failure if it is none. isColorWanted decides for standard output.
Color readColor(const ArgumentParser& arguments);
bool isColorWanted(Color color);

}  // namespace host
