#include "sources/name_patterns.h"

#include <fnmatch.h>

#include <algorithm>
#include <cstddef>

#include "system/text_parts.h"

namespace host {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string inSmallLetters(std::string_view text) {
  std::string result(text);
  for (char& byte : result) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
  }
  return result;
}

// A simpler pattern that matches all that the component does: sets in brackets become "*", escapes
// "?".
std::string simplified(std::string_view component) {
  std::string result;
  for (std::size_t at = 0; at < component.size(); ++at) {
    if (component[at] == '[') {
      result += '*';
      at = std::min(component.rfind(']'), component.size());  // the last: a set may hold brackets
      if (at == component.size() || component[at] != ']') break;
    } else if (component[at] == '\\') {
      result += '?';
      ++at;
    } else {
      result += component[at];
    }
  }
  return inSmallLetters(result);
}

bool matchesAnything(std::string_view glob) {
  return glob.find_first_not_of('*') == std::string_view::npos;
}

bool matches(const std::string& glob, const std::string& name) {
  return ::fnmatch(glob.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
}

void addOnce(std::vector<std::string>& list, std::string entry) {
  if (std::find(list.begin(), list.end(), entry) == list.end()) list.push_back(std::move(entry));
}

}  // namespace

void NamePatterns::add(std::string_view rules) {
  for (const std::string_view line : partsOf(rules, '\n')) {
    // What begins with an exclamation mark only takes back what other rules say.
    if (!line.empty() && line.front() != '#' && line.front() != '!') addRule(line);
  }
}

void NamePatterns::addRule(std::string_view rule) {
  const std::size_t end = rule.find_last_not_of(kBlanks) + 1;
  if (end == 0) return;
  const bool hasBlanks = end < rule.size();
  rule = rule.substr(0, end);
  if (rule.ends_with('/')) rule.remove_suffix(1);
  const std::size_t slash = rule.rfind('/');
  std::string last = simplified(rule.substr(slash + 1));  // all of it without a slash
  if (hasBlanks) last += '*';                             // they may or may not be of the name
  if (!matchesAnything(last)) {
    if (last.find_first_of("*?") == std::string::npos) {
      names_.insert(std::move(last));
    } else if (last.front() == '*' && last.find_first_of("*?", 1) == std::string::npos) {
      addOnce(endings_, last.substr(1));
    } else {
      addOnce(globs_, std::move(last));
    }
    return;
  }
  const std::string_view before = slash == std::string_view::npos ? "" : rule.substr(0, slash);
  std::string parent = simplified(before.substr(before.rfind('/') + 1));
  if (matchesAnything(parent)) {
    matchesAll_ = true;
  } else {
    addOnce(parents_, std::move(parent));
  }
}

bool NamePatterns::mayMatch(std::string_view name) const {
  if (matchesAll_) return true;
  const std::string small = inSmallLetters(name);
  return names_.contains(small) ||
         std::any_of(endings_.begin(), endings_.end(),
                     [&](const std::string& ending) { return small.ends_with(ending); }) ||
         std::any_of(globs_.begin(), globs_.end(),
                     [&](const std::string& glob) { return matches(glob, small); });
}

bool NamePatterns::mayMatchAllIn(std::string_view directory) const {
  if (parents_.empty()) return false;
  const std::string small = inSmallLetters(directory);
  const std::vector<std::string_view> components = partsOf(small, '/');
  return std::any_of(components.begin(), components.end(), [&](std::string_view component) {
    return std::any_of(parents_.begin(), parents_.end(), [&](const std::string& parent) {
      return matches(parent, std::string(component));
    });
  });
}

}  // namespace host
