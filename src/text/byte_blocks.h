// Tests sixteen bytes at a time. The compiler turns its vector type into the target processor's own
// instructions.
//
// A test is a function from Bytes to a Mask, such as
//   [](Bytes bytes) { return bytes.are('"') | bytes.are('\n'); }
// It treats each byte separately and must be false for a space, which pads a text shorter than a
// block.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "text/byte_set.h"

namespace text {

inline constexpr std::size_t kBlockBytes = 16;

class Bytes {
 public:
  using Vector = signed char __attribute__((vector_size(kBlockBytes)));
  using Mask = Vector;  // all bits of a byte are set where the test is true

  explicit Bytes(const char* block) { std::memcpy(&bytes_, block, kBlockBytes); }

  Mask are(char byte) const { return bytes_ == all(byte); }
  // Compares signed values: a byte from 0x80 up is below every other.
  Mask areBelow(char byte) const { return bytes_ < all(byte); }

 private:
  static Vector all(char byte) {
    Vector vector;
    std::memset(&vector, byte, kBlockBytes);
    return vector;
  }

  Vector bytes_;
};

// Whether any byte of the mask is set.
inline bool isAny(Bytes::Mask mask) {
  std::array<std::uint64_t, 2> halves;
  std::memcpy(halves.data(), &mask, kBlockBytes);
  return (halves[0] | halves[1]) != 0;
}

// The index of the first byte of the mask that is set, kBlockBytes if none is.
inline std::size_t firstSet(Bytes::Mask mask) {
  std::array<std::uint64_t, 2> halves;
  std::memcpy(halves.data(), &mask, kBlockBytes);
  // The byte that comes first in memory is the lowest or the highest of the number.
  const auto zeros = [](std::uint64_t half) {
    return static_cast<std::size_t>(std::endian::native == std::endian::little
                                        ? std::countr_zero(half)
                                        : std::countl_zero(half)) /
           8;
  };
  return halves[0] != 0 ? zeros(halves[0]) : 8 + zeros(halves[1]);
}

// A text of at most kBlockBytes bytes, padded with spaces.
class PaddedBlock {
 public:
  explicit PaddedBlock(std::string_view text) {
    bytes_.fill(' ');
    text.copy(bytes_.data(), kBlockBytes);
  }
  const char* data() const { return bytes_.data(); }

 private:
  std::array<char, kBlockBytes> bytes_;
};

// Whether a byte of the text passes the test.
template <typename Test>
bool holdsByte(std::string_view text, Test test) {
  if (text.size() < kBlockBytes) return isAny(test(Bytes(PaddedBlock(text).data())));
  Bytes::Mask found = test(Bytes(text.data() + text.size() - kBlockBytes));
  for (std::size_t i = 0; i + kBlockBytes < text.size(); i += kBlockBytes)
    found |= test(Bytes(text.data() + i));
  return isAny(found);
}

// Offset of the first byte at or after from that is in the set, or the text's size if there is
// none, as findMember finds it. The test has to be true for the members, and may be true for other
// bytes that are rare. It is quicker than findMember where the next member is some ten bytes away:
// the processor cannot foresee when a loop over so few bytes ends.
template <typename Test>
std::size_t findMemberByBlocks(std::string_view text, const ByteSet& set, Test test,
                               std::size_t from) {
  while (from + kBlockBytes <= text.size()) {
    const std::size_t hit = firstSet(test(Bytes(text.data() + from)));
    from += hit;
    if (hit == kBlockBytes) continue;
    if (set(text[from])) return from;
    ++from;
  }
  return findMember(text, set, from);
}

}  // namespace text
