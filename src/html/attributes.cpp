#include "html/attributes.h"

#include <array>
#include <optional>

#include "text/byte_set.h"
#include "text/string_primitives.h"

namespace html {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr text::ByteSet kSpaces{" \t\n\v\f\r"};
constexpr text::ByteSet kUnquotedEnds = kSpaces | text::ByteSet{">"};

// Elements whose identifier shows one attribute instead of an id or class.
struct AttributeMark {
  std::string_view element;
  text::Needle attribute;
  std::string_view identifier;
};
constexpr std::array<AttributeMark, 3> kAttributeMarks{{{"script", "src=", "script[src]"},
                                                        {"link", "href=", "link[href]"},
                                                        {"form", "action=", "form[action]"}}};

bool isQuote(char byte) { return byte == '"' || byte == '\''; }

// Returns the text between the opening quote at the start of text and the next one like it, if both
// are there.
std::optional<std::string_view> quotedValue(std::string_view text) {
  if (text.empty() || !isQuote(text.front())) return std::nullopt;
  const std::size_t close = text.find(text.front(), 1);
  if (close == kNone) return std::nullopt;
  return text.substr(1, close - 1);
}

// Returns the attribute's value; text begins just after the "=".
std::string_view attributeValue(std::string_view text) {
  text.remove_prefix(text::findNonMember(text, kSpaces));
  if (text.empty()) return {};
  if (isQuote(text.front())) return quotedValue(text).value_or(std::string_view{});
  return text.substr(0, text::findMember(text, kUnquotedEnds));
}

// Returns the quoted value directly after name, which ends in "=".
std::optional<std::string_view> quotedValueBehind(std::string_view tagText,
                                                  const text::Needle& name) {
  const std::size_t hit = name.find(tagText);
  if (hit == kNone) return std::nullopt;
  return quotedValue(tagText.substr(hit + name.text().size()));
}

}  // namespace

std::string_view hrefValue(std::string_view tagText) {
  constexpr text::Needle kName = "href=";
  constexpr text::Needle kSpacedName = "href ";
  const std::size_t hit = kName.find(tagText);
  if (hit != kNone) return attributeValue(tagText.substr(hit + kName.text().size()));
  const std::size_t spaced = kSpacedName.find(tagText);
  if (spaced == kNone) return {};
  // required: any text may stand between the name and the "=".
  const std::size_t sign = tagText.find('=', spaced);
  return sign == kNone ? std::string_view{} : attributeValue(tagText.substr(sign + 1));
}

std::string_view srcValue(std::string_view tagText) {
  constexpr text::Needle kName = "src=";
  const std::size_t hit = kName.find(tagText);
  return hit == kNone ? std::string_view{}
                      : attributeValue(tagText.substr(hit + kName.text().size()));
}

std::string elementIdentifier(std::string_view tagText) {
  const std::string_view name = tagText.substr(0, tagText.find(' '));
  std::string identifier(name);
  if (const auto id = quotedValueBehind(tagText, "id=")) return identifier.append("#").append(*id);
  for (const AttributeMark& mark : kAttributeMarks) {
    if (name == mark.element && text::contains(tagText, mark.attribute)) {
      return std::string(mark.identifier);
    }
  }
  if (const auto classes = quotedValueBehind(tagText, "class=")) {
    const std::string_view first = classes->substr(0, classes->find(' '));
    if (!first.empty()) identifier.append(".").append(first);
  }
  return identifier;
}

std::string textPreview(std::string_view text, std::size_t maxLength) {
  std::string scratch;
  const std::string_view reduced = text::trimAndReduceView(text, scratch);
  std::string preview(reduced.substr(0, maxLength));
  if (reduced.size() > maxLength) preview += "...";
  // Quotes are escaped after the cut. No line ends are left to escape: reducing removed them.
  text::replaceEach(preview, "\"", "\\\"");
  return preview;
}

}  // namespace html

std::string ExtractHrefValue(const std::string& tagText) {
  return std::string(html::hrefValue(tagText));
}

std::string ExtractSrcValue(const std::string& tagText) {
  return std::string(html::srcValue(tagText));
}

std::string GetElementIdentifier(const std::string& tagText) {
  return html::elementIdentifier(tagText);
}

std::string ExtractTextPreview(const std::string& text, std::size_t maxLength) {
  return html::textPreview(text, maxLength);
}
