#include "html/attributes.h"

#include "text/string_primitives.h"

namespace html {

std::string textPreview(std::string_view text, std::size_t maxLength) {
  std::string scratch;
  const std::string_view reduced = text::trimAndReduceView(text, scratch);
  std::string preview(reduced.substr(0, maxLength));
  if (reduced.size() > maxLength) preview += "...";
  // Quotes are escaped behind the cut. No line end is left to replace: reducing has taken them.
  text::replaceEach(preview, "\"", "\\\"");
  return preview;
}

}  // namespace html

std::string ExtractTextPreview(const std::string& text, std::size_t maxLength) {
  return html::textPreview(text, maxLength);
}
