// The rules of one ignore file, as gitignore(5) describes them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sources/wild_pattern.h"

namespace host {

class IgnoreList {
 public:
  // The text is that of the file. With ignoresCase, a rule matches in whatever case a name is.
  IgnoreList(std::string_view text, bool ignoresCase);

  // Whether the last rule that matches the entry ignores it; nothing if none matches. The path is
  // relative to the directory that the rules are for.
  std::optional<bool> verdictOn(std::string_view path, bool isDirectory) const;

 private:
  struct Rule {
    WildPattern pattern;
    bool ignores;  // false after an exclamation mark
    bool isForDirectories;
    bool isForName;
  };

  void addRule(std::string_view line, bool ignoresCase);

  std::vector<Rule> rules_;
  // Of each rule, the byte in which a name has to end, or kAnyByte: most rules fail here already.
  std::vector<int> lastBytes_;
  bool ignoresCase_;
};

}  // namespace host
