// What the user asked for.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct CommandLine {
  bool help = false;     // the rest is as if not given
  bool version = false;  // files may be empty
  std::vector<std::string> files;
  std::string defines;                // the values of --defines, joined by line feeds
  std::optional<std::string> plugin;  // without it the program finds its own
  std::string diagnostics = "none";
};

extern const std::string_view kHelp;

// Throws Failure for a command line that cannot be followed.
CommandLine readCommandLine(int argc, const char* const* argv);

}  // namespace host
