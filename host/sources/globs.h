// The patterns of --include and --exclude.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sources/wild_pattern.h"

namespace host {

// Patterns as in .gitignore files, see WildPattern, and {a,b} for a or b.
class Globs {
 public:
  // Throws Failure for one with too many alternatives.
  explicit Globs(const std::vector<std::string>& patterns);

  // Whether the pattern can match anything below the directory that is walked.
  static bool isUsable(std::string_view pattern);

  bool areNone() const { return globs_.empty(); }

  // Whether one of them matches an entry. The path is the entry's below the directory that is
  // walked, and ends in its name. A pattern without a slash is for the name, one with a slash for
  // the path; a slash at its end is for directories only.
  bool match(std::string_view path, bool isDirectory) const;

 private:
  struct Glob {
    WildPattern pattern;
    bool isForName;
    bool isForDirectories;
  };

  std::vector<Glob> globs_;
};

}  // namespace host
