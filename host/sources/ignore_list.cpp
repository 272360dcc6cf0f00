#include "sources/ignore_list.h"

#include "system/text_parts.h"

namespace host {
namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr int kAnyByte = -1;

char lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

// The line without the blanks at its end, of which a backslash keeps one.
std::string_view withoutTrailingBlanks(std::string_view line) {
  std::size_t end = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == ' ') continue;
    if (line[at] == '\\' && ++at == line.size()) return line;  // as git does
    end = at + 1;
  }
  return line.substr(0, end);
}

}  // namespace

IgnoreList::IgnoreList(std::string_view text, bool ignoresCase) : ignoresCase_(ignoresCase) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  for (std::string_view line : partsOf(text, '\n')) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    line = line.substr(0, line.find('\0'));
    if (!line.starts_with('#')) addRule(withoutTrailingBlanks(line), ignoresCase);
  }
}

void IgnoreList::addRule(std::string_view line, bool ignoresCase) {
  const bool ignores = !line.starts_with('!');
  if (!ignores) line.remove_prefix(1);
  const bool isForDirectories = line.ends_with('/');
  if (isForDirectories) line.remove_suffix(1);
  if (line.empty()) return;  // would match an empty name
  const bool isForName = line.find('/') == std::string_view::npos;
  if (line.starts_with('/')) line.remove_prefix(1);
  const auto subject = isForName ? WildPattern::Subject::kName : WildPattern::Subject::kPath;
  rules_.push_back({WildPattern(line, subject, ignoresCase), ignores, isForDirectories, isForName});
  const std::optional<char> last = rules_.back().pattern.lastByte();
  lastBytes_.push_back(last ? static_cast<unsigned char>(*last) : kAnyByte);
}

std::optional<bool> IgnoreList::verdictOn(std::string_view path, bool isDirectory) const {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  if (name.empty()) return std::nullopt;
  const char end = ignoresCase_ ? lower(name.back()) : name.back();
  const int last = static_cast<unsigned char>(end);
  for (std::size_t index = rules_.size(); index-- > 0;) {
    if (lastBytes_[index] != last && lastBytes_[index] != kAnyByte) continue;
    const Rule& rule = rules_[index];
    if (rule.isForDirectories && !isDirectory) continue;
    if (rule.pattern.matches(rule.isForName ? name : path)) return rule.ignores;
  }
  return std::nullopt;
}

}  // namespace host
