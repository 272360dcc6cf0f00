// Plain substring search for texts that are known at compile time.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace text {

// A text to search for, with the place of its byte that is least common in source text: the search
// goes from one such byte to the next, and most texts have few.
class Needle {
 public:
  consteval Needle(std::string_view text) : text_(text) {  // NOLINT: a literal is meant to convert
    if (text.empty()) throw "a needle is never empty";     // ends the compilation
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (rarity(text[i]) > rarity(text[anchor_])) anchor_ = i;
    }
  }
  template <std::size_t kSize>
  consteval Needle(const char (&literal)[kSize])  // NOLINT: as above
      : Needle(std::string_view(literal, kSize - 1)) {}

  constexpr std::string_view text() const { return text_; }

  bool isIn(std::string_view haystack) const {
    if (haystack.size() < text_.size()) return false;
    const char* from = haystack.data() + anchor_;
    const char* const end = haystack.data() + haystack.size() - (text_.size() - anchor_) + 1;
    while (from < end) {
      const void* const hit =
          std::memchr(from, text_[anchor_], static_cast<std::size_t>(end - from));
      if (hit == nullptr) return false;
      from = static_cast<const char*>(hit);
      if (std::memcmp(from - anchor_, text_.data(), text_.size()) == 0) return true;
      ++from;
    }
    return false;
  }

 private:
  static constexpr std::size_t rarity(char byte) {
    // Common bytes of source text, the most common first; all others are rare.
    constexpr std::string_view kCommon = " etrniosaldcu()pmfh,.;=g_bv";
    return kCommon.find(byte);  // npos, the largest value, for a rare one
  }

  std::string_view text_;
  std::size_t anchor_ = 0;
};

// True when the needle occurs anywhere in haystack.
inline bool contains(std::string_view haystack, const Needle& needle) {
  return needle.isIn(haystack);
}

}  // namespace text
