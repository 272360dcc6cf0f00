#include "sources/globs.h"

#include <fnmatch.h>

#include <algorithm>
#include <cstddef>
#include <span>

#include "system/text_parts.h"

namespace host {
namespace {

constexpr std::string_view kAnyDirectories = "**";

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

// The patterns that the braces of the pattern stand for. A brace that does not close is itself.
void expandBraces(const std::string& pattern, std::vector<std::string>& out) {
  const std::size_t opening = findBrace(pattern);
  const std::vector<std::size_t> ends =
      opening == std::string::npos ? std::vector<std::size_t>() : alternativeEnds(pattern, opening);
  if (ends.empty()) {
    out.push_back(pattern);
    return;
  }
  std::size_t start = opening + 1;
  for (const std::size_t end : ends) {
    expandBraces(pattern.substr(0, opening) + pattern.substr(start, end - start) +
                     pattern.substr(ends.back() + 1),
                 out);
    start = end + 1;
  }
}

bool matchOne(const std::string& pattern, std::string_view name) {
  return ::fnmatch(pattern.c_str(), std::string(name).c_str(), 0) == 0;
}

bool matchAll(std::span<const std::string> pattern, std::span<const std::string_view> path) {
  while (!pattern.empty() && pattern.front() != kAnyDirectories) {
    if (path.empty() || !matchOne(pattern.front(), path.front())) return false;
    pattern = pattern.subspan(1);
    path = path.subspan(1);
  }
  if (pattern.empty()) return path.empty();
  // As in .gitignore files, ** at the end is for everything inside, which is at least one entry.
  if (pattern.size() == 1) return !path.empty();
  for (std::size_t skipped = 0; skipped <= path.size(); ++skipped) {
    if (matchAll(pattern.subspan(1), path.subspan(skipped))) return true;
  }
  return false;
}

}  // namespace

Globs::Globs(const std::vector<std::string>& patterns) {
  std::vector<std::string> expanded;
  for (const std::string& pattern : patterns) expandBraces(pattern, expanded);
  for (std::string& pattern : expanded) {
    Glob glob;
    glob.isForDirectories = pattern.ends_with('/');
    if (glob.isForDirectories) pattern.pop_back();
    glob.isForName = pattern.find('/') == std::string::npos;
    for (const std::string_view component : partsOf(pattern, '/')) {
      if (!component.empty()) glob.components.emplace_back(component);  // of a slash in front
    }
    globs_.push_back(std::move(glob));
  }
}

bool Globs::match(std::string_view path, bool isDirectory) const {
  if (areNone()) return false;
  const std::vector<std::string_view> components = partsOf(path, '/');
  return std::any_of(globs_.begin(), globs_.end(), [&](const Glob& glob) {
    if (glob.isForDirectories && !isDirectory) return false;
    const std::span<const std::string_view> all(components);
    return matchAll(glob.components, glob.isForName ? all.last(1) : all);
  });
}

}  // namespace host
