// The patterns of --include and --exclude.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// Patterns as people know them from .gitignore files and from shells: * and ? stop at a slash,
// [...] is a set of bytes, ** stands for any number of directories, {a,b} for a or b.
class Globs {
 public:
  explicit Globs(const std::vector<std::string>& patterns);

  bool areNone() const { return globs_.empty(); }

  // Whether one of them matches an entry. The path is the entry's below the directory that is
  // walked, and ends in its name. A pattern without a slash is for the name, one with a slash for
  // the path; a slash at its end is for directories only.
  bool match(std::string_view path, bool isDirectory) const;

 private:
  struct Glob {
    std::vector<std::string> components;
    bool isForName;
    bool isForDirectories;
  };

  std::vector<Glob> globs_;
};

}  // namespace host
