// A POSIX extended regular expression over names, without back-references.
#pragma once

#include <regex.h>

#include <string>
#include <string_view>

namespace host::index {

class NamePattern {
 public:
  // Throws Failure for what is no such expression.
  explicit NamePattern(const std::string& pattern);
  NamePattern(const NamePattern&) = delete;
  NamePattern& operator=(const NamePattern&) = delete;
  ~NamePattern();

  // Whether it matches a part of the name.
  bool matches(std::string_view name) const;

 private:
  regex_t expression_{};
};

}  // namespace host::index
