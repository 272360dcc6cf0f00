#include "sources/globs.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "system/failure.h"
#include "system/text_parts.h"

namespace host {
namespace {

constexpr std::size_t kMaxAlternatives = 1000;

// Where the brace that opens at the offset closes, and the commas between its alternatives; the
// end of the text comes last. Empty if it does not close.
std::vector<std::size_t> alternativeEnds(std::string_view pattern, std::size_t opening) {
  std::vector<std::size_t> ends;
  std::size_t depth = 0;
  for (std::size_t at = opening; at < pattern.size(); ++at) {
    if (pattern[at] == '\\') {
      ++at;
    } else if (pattern[at] == '{') {
      ++depth;
    } else if (pattern[at] == ',' && depth == 1) {
      ends.push_back(at);
    } else if (pattern[at] == '}' && --depth == 0) {
      ends.push_back(at);
      return ends;
    }
  }
  return {};
}

std::size_t findBrace(std::string_view pattern) {
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    if (pattern[at] == '\\') {
      ++at;
    } else if (pattern[at] == '{') {
      return at;
    }
  }
  return std::string_view::npos;
}

// Replaces the pattern by those that its first braces stand for, in reverse order. Returns false if
// there are no braces; ones that do not close are themselves.
bool expandFirstBraces(std::vector<std::string>& patterns) {
  const std::string pattern = patterns.back();
  const std::size_t opening = findBrace(pattern);
  if (opening == std::string::npos) return false;
  const std::vector<std::size_t> ends = alternativeEnds(pattern, opening);
  if (ends.empty()) return false;
  patterns.pop_back();
  for (std::size_t index = ends.size(); index-- > 0;) {
    const std::size_t start = (index == 0 ? opening : ends[index - 1]) + 1;
    patterns.push_back(pattern.substr(0, opening) + pattern.substr(start, ends[index] - start) +
                       pattern.substr(ends.back() + 1));
  }
  return true;
}

// The patterns that the braces of the pattern stand for.
std::vector<std::string> withoutBraces(const std::string& pattern) {
  std::vector<std::string> result;
  std::vector<std::string> left = {pattern};
  for (std::size_t steps = 0; !left.empty();) {
    if (!expandFirstBraces(left)) {
      result.push_back(std::move(left.back()));
      left.pop_back();
    } else {
      ++steps;  // of braces with one alternative each, too, there may be very many
    }
    if (steps > kMaxAlternatives || result.size() + left.size() > kMaxAlternatives) {
      throw Failure("glob " + pattern + ": its braces stand for more than 1000 patterns");
    }
  }
  return result;
}

// The pattern's components with a slash between each two.
std::string normalized(std::string_view pattern) {
  std::string result;
  for (const std::string_view component : partsOf(pattern, '/')) {
    if (component.empty() || component == ".") continue;
    if (!result.empty()) result += '/';
    result += component;
  }
  return result;
}

}  // namespace

Globs::Globs(const std::vector<std::string>& patterns) {
  for (const std::string& given : patterns) {
    for (std::string& pattern : withoutBraces(given)) {
      const bool isForDirectories = pattern.ends_with('/');
      if (isForDirectories) pattern.pop_back();
      const bool isForName = pattern.find('/') == std::string::npos;
      const auto subject = isForName ? WildPattern::Subject::kName : WildPattern::Subject::kPath;
      globs_.push_back(
          {WildPattern(normalized(pattern), subject, false), isForName, isForDirectories});
    }
  }
}

bool Globs::match(std::string_view path, bool isDirectory) const {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  return std::any_of(globs_.begin(), globs_.end(), [&](const Glob& glob) {
    if (glob.isForDirectories && !isDirectory) return false;
    return glob.pattern.matches(glob.isForName ? name : path);
  });
}

bool Globs::isUsable(std::string_view pattern) {
  return pattern.find_first_not_of("./") != std::string_view::npos;
}

}  // namespace host
