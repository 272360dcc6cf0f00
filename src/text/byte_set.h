// A set of bytes, built at compile time from a string that lists them.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace text {

class ByteSet {
 public:
  consteval explicit ByteSet(std::string_view bytes) {
    for (const char byte : bytes) member_[static_cast<unsigned char>(byte)] = true;
  }

  // The set of bytes for which contains(byte) is true; byte is a value from 0 to 255.
  template <typename Predicate>
  static consteval ByteSet where(Predicate contains) {
    ByteSet set{""};
    for (std::size_t byte = 0; byte < set.member_.size(); ++byte) {
      set.member_[byte] = contains(static_cast<int>(byte));
    }
    return set;
  }

  constexpr bool operator()(char byte) const { return member_[static_cast<unsigned char>(byte)]; }

  consteval ByteSet operator|(const ByteSet& other) const {
    ByteSet both = *this;
    for (std::size_t i = 0; i < both.member_.size(); ++i) both.member_[i] |= other.member_[i];
    return both;
  }

 private:
  std::array<bool, 256> member_{};
};

// Offset of the first byte at or after from that is in the set (findNonMember: that is not), or the
// text's size if there is none.
inline std::size_t findMember(std::string_view text, const ByteSet& set, std::size_t from = 0) {
  while (from < text.size() && !set(text[from])) ++from;
  return from;
}
inline std::size_t findNonMember(std::string_view text, const ByteSet& set, std::size_t from = 0) {
  while (from < text.size() && set(text[from])) ++from;
  return from;
}

inline constexpr ByteSet kDigits{"0123456789"};
inline constexpr ByteSet kUpperCaseLetters{"ABCDEFGHIJKLMNOPQRSTUVWXYZ"};
inline constexpr ByteSet kLetters =
    kUpperCaseLetters | ByteSet{"abcdefghijklmnopqrstuvwxyz"};  // ASCII, whatever the C locale

// Two definitions of white space, kept apart on purpose; a third is the space alone.
inline constexpr ByteSet kTrimmed{" \n\r\t\f\v"};
inline constexpr ByteSet kCollapsed{" \n\r\t"};  // required: form feed and vertical tab stay
static_assert(kTrimmed('\f') && !kCollapsed('\f'));

}  // namespace text
