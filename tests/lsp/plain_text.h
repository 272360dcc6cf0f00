// A client's text in the plain reading: units of UTF-16 in one string, in which a position is found
// by counting from the beginning.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "lsp/positions.h"

namespace lsp_test {

class PlainText {
 public:
  explicit PlainText(host::lsp::Encoding encoding) : encoding_(encoding) {}

  std::size_t size() const { return units_.size(); }

  // Replaces units from begin to end, which lie between characters.
  void replace(std::size_t begin, std::size_t end, const std::u16string& with) {
    units_.replace(begin, end - begin, with);
  }

  // The nearest place at or before that many units that is neither inside a pair of surrogates nor
  // between the two bytes of a CR LF, where no position can be.
  std::size_t placeBefore(std::size_t at) const {
    while (at > 0 && at < units_.size() && (isLow(units_[at]) || isInLineEnd(at))) --at;
    return at;
  }

  host::lsp::Position positionOf(std::size_t at) const {
    host::lsp::Position position;
    for (std::size_t i = 0; i < at; ++i) {
      if (endsLine(i)) {
        ++position.line;
        position.character = 0;
      } else {
        position.character += unitsFor(i);
      }
    }
    return position;
  }

  std::string utf8() const { return utf8Of(units_); }

  static std::string utf8Of(const std::u16string& units) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
      char32_t point = units[i];
      if (isHigh(units[i])) point = 0x10000 + ((point - 0xd800) << 10U) + (units[++i] - 0xdc00U);
      append(text, point);
    }
    return text;
  }

 private:
  static bool isHigh(char16_t unit) { return unit >= 0xd800 && unit < 0xdc00; }
  static bool isLow(char16_t unit) { return unit >= 0xdc00 && unit < 0xe000; }

  bool isInLineEnd(std::size_t at) const { return units_[at] == '\n' && units_[at - 1] == '\r'; }

  // Whether the unit is the last of a line end.
  bool endsLine(std::size_t at) const {
    const bool isPaired = at + 1 < units_.size() && units_[at + 1] == '\n';
    return units_[at] == '\n' || (units_[at] == '\r' && !isPaired);
  }

  unsigned unitsFor(std::size_t at) const {
    if (encoding_ == host::lsp::Encoding::kUtf16) return 1;
    const char16_t unit = units_[at];
    if (isHigh(unit) || isLow(unit)) return 2;  // four bytes for the two of them
    return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
  }

  static void append(std::string& text, char32_t point) {
    const auto byte = [&text](char32_t value) { text += static_cast<char>(value); };
    if (point < 0x80) {
      byte(point);
    } else if (point < 0x800) {
      byte(0xc0 | point >> 6U);
      byte(0x80 | (point & 0x3fU));
    } else if (point < 0x10000) {
      byte(0xe0 | point >> 12U);
      byte(0x80 | (point >> 6U & 0x3fU));
      byte(0x80 | (point & 0x3fU));
    } else {
      byte(0xf0 | point >> 18U);
      byte(0x80 | (point >> 12U & 0x3fU));
      byte(0x80 | (point >> 6U & 0x3fU));
      byte(0x80 | (point & 0x3fU));
    }
  }

  host::lsp::Encoding encoding_;
  std::u16string units_;
};

}  // namespace lsp_test
