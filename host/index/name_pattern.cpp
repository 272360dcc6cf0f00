#include "index/name_pattern.h"

#include <array>
#include <cstddef>

#include "system/failure.h"

namespace host::index {
namespace {

// What an expression compiles to grows with its bounds, and can take all memory.
constexpr std::size_t kMaxBytes = 1000;
constexpr std::size_t kMaxBounds = 3;

Failure invalid(const std::string& pattern, const std::string& reason) {
  return Failure("--regex: '" + pattern + "': " + reason);
}

// A back-reference takes time that grows exponentially.
bool hasReference(std::string_view pattern) {
  for (std::size_t at = 0; at + 1 < pattern.size(); ++at) {
    if (pattern[at] != '\\') continue;
    ++at;
    if (pattern[at] >= '1' && pattern[at] <= '9') return true;
  }
  return false;
}

std::size_t boundsIn(std::string_view pattern) {
  std::size_t count = 0;
  for (const char byte : pattern) count += byte == '{' ? 1 : 0;
  return count;
}

}  // namespace

NamePattern::NamePattern(const std::string& pattern) {
  if (pattern.size() > kMaxBytes) throw invalid(pattern, "longer than 1,000 bytes");
  if (pattern.find('\0') != std::string::npos) throw invalid(pattern, "holds a NUL byte");
  if (hasReference(pattern)) throw invalid(pattern, "has a back-reference");
  if (boundsIn(pattern) > kMaxBounds) throw invalid(pattern, "more than 3 bounds in braces");
  const int error = ::regcomp(&expression_, pattern.c_str(), REG_EXTENDED | REG_NOSUB);
  if (error == 0) return;
  std::array<char, 200> reason;
  ::regerror(error, &expression_, reason.data(), reason.size());
  throw invalid(pattern, reason.data());
}

NamePattern::~NamePattern() { ::regfree(&expression_); }

bool NamePattern::matches(std::string_view name) const {
  regmatch_t range{};
  range.rm_eo = static_cast<regoff_t>(name.size());
  return ::regexec(&expression_, name.data(), 1, &range, REG_STARTEND) == 0;
}

}  // namespace host::index
