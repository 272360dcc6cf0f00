// Plain substring search for texts that are known at compile time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "text/byte_blocks.h"

namespace text {

// A text to search for. The search scans for the needle's rarest byte (in source text) with the
// byte after it beside it, and compares the whole needle only there: most texts have few such
// places.
class Needle {
 public:
  consteval Needle(std::string_view text) : text_(text) {  // NOLINT: implicit on purpose
    if (text.empty()) throw "a needle is never empty";     // fails the compilation
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
      if (rarity(text[i]) > rarity(text[anchor_])) anchor_ = i;
    }
  }
  template <std::size_t kSize>
  consteval Needle(const char (&literal)[kSize])  // NOLINT: as above
      : Needle(std::string_view(literal, kSize - 1)) {}

  constexpr std::string_view text() const { return text_; }

  bool isIn(std::string_view haystack) const { return find(haystack) != std::string_view::npos; }

  // Offset of the first occurrence, npos if there is none.
  std::size_t find(std::string_view haystack) const {
    if (text_.size() == 1) return haystack.find(text_[0]);
    if (haystack.size() < text_.size()) return std::string_view::npos;
    const char* const begin = haystack.data();
    const char* const end = begin + (haystack.size() - text_.size() + 1);
    const char* from = begin;  // where the needle may begin
    // Test a block of start positions at a time while a full block is left to read.
    const std::size_t reach = anchor_ + 1 + kBlockBytes;
    for (; from + reach <= begin + haystack.size(); from += kBlockBytes) {
      const char* const anchors = from + anchor_;
      if (!isAny(Bytes(anchors).are(text_[anchor_]) & Bytes(anchors + 1).are(text_[anchor_ + 1])))
        continue;
      const char* const last = std::min(from + kBlockBytes, end);
      const char* const hit = findBeginning(from, last);
      if (hit != last) return static_cast<std::size_t>(hit - begin);
    }
    if (from >= end) return std::string_view::npos;
    const char* const hit = findBeginning(from, end);
    return hit == end ? std::string_view::npos : static_cast<std::size_t>(hit - begin);
  }

 private:
  // First position in [from, end) where the needle begins, or end.
  const char* findBeginning(const char* from, const char* end) const {
    while (from < end) {
      const void* const hit =
          std::memchr(from + anchor_, text_[anchor_], static_cast<std::size_t>(end - from));
      if (hit == nullptr) return end;
      from = static_cast<const char*>(hit) - anchor_;
      if (std::memcmp(from, text_.data(), text_.size()) == 0) return from;
      ++from;
    }
    return end;
  }

  static constexpr std::size_t rarity(char byte) {
    // Frequent bytes of source text, most frequent first; all others are rare.
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
