#include "formats/signature.h"

#include <algorithm>

namespace host {
namespace {

using outline::Kind;

constexpr std::size_t kMaxHeadBytes = 2'000;
constexpr std::string_view kBlanks = " \t\r\n";

bool isWordByte(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_' || byte == '$' || byte == '#' ||
         static_cast<unsigned char>(byte) >= 0x80;
}

std::string withSingleBlanks(std::string_view text) {
  std::string result;
  while (true) {
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(begin);
    if (text.empty()) return result;
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    if (!result.empty()) result += ' ';
    result += text.substr(0, end);
    text.remove_prefix(end);
  }
}

bool hasParameters(Kind kind) {
  return kind == Kind::kFunction || kind == Kind::kMethod || kind == Kind::kConstructor ||
         kind == Kind::kGetter || kind == Kind::kSetter;
}

// From its opening parenthesis to the one that closes it, or as far as the text goes.
std::string_view inParentheses(std::string_view text) {
  std::size_t depth = 0;
  char quote = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    if (quote != 0) {
      if (byte == '\\') ++at;
      if (byte == quote) quote = 0;
    } else if (byte == '"' || byte == '\'' || byte == '`') {
      quote = byte;
    } else if (byte == '(') {
      ++depth;
    } else if (byte == ')' && --depth == 0) {
      return text.substr(0, at + 1);
    }
  }
  return text;
}

std::string parametersBehind(std::string_view text) {
  const std::size_t open = text.find('(');
  const std::size_t arrow = text.find("=>");
  if (arrow < open) {  // a single parameter without parentheses
    std::string_view head = text.substr(0, arrow);
    head = head.substr(0, head.find_last_not_of(kBlanks) + 1);
    const auto word = std::find_if_not(head.rbegin(), head.rend(), isWordByte);
    return "(" + std::string(word.base(), head.end()) + ")";
  }
  const std::size_t stop = text.find_first_of(";{}");
  if (open == std::string_view::npos || stop < open) return {};
  return withSingleBlanks(inParentheses(text.substr(open)));
}

}  // namespace

std::size_t findName(std::string_view line, std::string_view name) {
  if (name.empty()) return std::string_view::npos;
  for (std::size_t at = line.find(name); at != std::string_view::npos;
       at = line.find(name, at + 1)) {
    const std::size_t end = at + name.size();
    const bool beginsWord = at == 0 || !isWordByte(line[at - 1]) || !isWordByte(name.front());
    const bool endsWord = end == line.size() || !isWordByte(line[end]) || !isWordByte(name.back());
    if (beginsWord && endsWord) return at;
  }
  return std::string_view::npos;
}

std::string signatureOf(const outline::Item& item, std::string_view text) {
  text = text.substr(0, kMaxHeadBytes);
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  const std::size_t at = findName(line, item.name);
  if (at == std::string_view::npos) return {};
  const std::string_view rest = text.substr(at + item.name.size());
  if (hasParameters(item.kind)) return parametersBehind(rest);
  if (item.kind != Kind::kClass && item.kind != Kind::kInterface) return {};
  const std::string head = withSingleBlanks(rest.substr(0, rest.find_first_of("{\r\n")));
  return head.empty() || isWordByte(head.front()) ? (head.empty() ? "" : " " + head) : head;
}

}  // namespace host
