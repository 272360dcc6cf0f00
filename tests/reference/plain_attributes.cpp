#include "reference/plain_attributes.h"

#include "reference/plain_strings.h"

namespace reference {
namespace {

constexpr std::size_t kNone = std::string::npos;

bool isSpace(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\v' || byte == '\f' ||
         byte == '\r';
}

bool isQuote(char byte) { return byte == '"' || byte == '\''; }

// Returns the value at position, or after the white space there.
std::string valueAt(const std::string& text, std::size_t position) {
  while (position < text.size() && isSpace(text[position])) ++position;
  if (position >= text.size()) return "";
  if (isQuote(text[position])) {
    const std::size_t close = text.find(text[position], position + 1);
    return close == kNone ? "" : text.substr(position + 1, close - position - 1);
  }
  std::string value;
  for (std::size_t i = position; i < text.size() && !isSpace(text[i]) && text[i] != '>'; ++i)
    value += text[i];
  return value;
}

// Whether a closed quote directly follows the first hit of name; stores the text between the quotes
// in value.
bool hasQuotedValue(const std::string& text, const std::string& name, std::string& value) {
  const std::size_t hit = text.find(name);
  if (hit == kNone) return false;
  const std::size_t open = hit + name.size();
  if (open >= text.size() || !isQuote(text[open])) return false;
  const std::size_t close = text.find(text[open], open + 1);
  if (close == kNone) return false;
  value = text.substr(open + 1, close - open - 1);
  return true;
}

}  // namespace

std::string hrefValue(const std::string& tagText) {
  const std::size_t hit = tagText.find("href=");
  if (hit != kNone) return valueAt(tagText, hit + 5);
  const std::size_t spaced = tagText.find("href ");
  if (spaced == kNone) return "";
  const std::size_t sign = tagText.find('=', spaced);
  return sign == kNone ? "" : valueAt(tagText, sign + 1);
}

std::string srcValue(const std::string& tagText) {
  const std::size_t hit = tagText.find("src=");
  return hit == kNone ? "" : valueAt(tagText, hit + 4);
}

std::string elementIdentifier(const std::string& tagText) {
  const std::string name = tagText.substr(0, tagText.find(' '));
  std::string result = name;
  std::string value;
  if (hasQuotedValue(tagText, "id=", value)) return result + "#" + value;
  if (hasQuotedValue(tagText, "class=", value)) {
    value = value.substr(0, value.find(' '));
    if (!value.empty()) result += "." + value;
  }
  if (name == "script" && contains(tagText, "src=")) {
    result = "script[src]";
  } else if (name == "link" && contains(tagText, "href=")) {
    result = "link[href]";
  } else if (name == "form" && contains(tagText, "action=")) {
    result = "form[action]";
  }
  return result;
}

std::string textPreview(const std::string& text, std::size_t maxLength) {
  std::string result = trimAndReduce(text);
  if (result.size() > maxLength) result = result.substr(0, maxLength) + "...";
  replaceAll(result, "\"", "\\\"");
  replaceAll(result, "\n", " ");
  replaceAll(result, "\r", " ");
  return result;
}

}  // namespace reference
