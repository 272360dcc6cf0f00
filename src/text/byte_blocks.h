// Questions put to sixteen bytes at a time. The compilers' vector type becomes the processor's own
// instructions, whichever processor it is.
//
// A test is a function from Bytes to a Mask, such as
//   [](Bytes bytes) { return bytes.are('"') | bytes.are('\n'); }
// It looks at each byte alone and is not true of a space, which stands in for what is beyond a text
// that ends inside a block.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace text {

inline constexpr std::size_t kBlockBytes = 16;

class Bytes {
 public:
  using Vector = signed char __attribute__((vector_size(kBlockBytes)));
  using Mask = Vector;  // all bits of a byte are set where the test is true

  explicit Bytes(const char* block) { std::memcpy(&bytes_, block, kBlockBytes); }

  Mask are(char byte) const { return bytes_ == all(byte); }
  // As signed values: a byte of 0x80 and above is less than every other.
  Mask areBelow(char byte) const { return bytes_ < all(byte); }

 private:
  static Vector all(char byte) {
    Vector vector;
    std::memset(&vector, byte, kBlockBytes);
    return vector;
  }

  Vector bytes_;
};

// The index of the first byte for which the mask is true, kBlockBytes if there is none.
inline std::size_t firstOf(Bytes::Mask mask) {
  std::array<std::uint64_t, 2> halves;
  std::memcpy(halves.data(), &mask, kBlockBytes);
  const auto zeroBytes = [](std::uint64_t half) {
    return static_cast<std::size_t>(std::endian::native == std::endian::little
                                        ? std::countr_zero(half)
                                        : std::countl_zero(half)) /
           8;
  };
  return halves[0] != 0 ? zeroBytes(halves[0]) : zeroBytes(halves[1]) + kBlockBytes / 2;
}

inline bool isAny(Bytes::Mask mask) {
  std::array<std::uint64_t, 2> halves;
  std::memcpy(halves.data(), &mask, kBlockBytes);
  return (halves[0] | halves[1]) != 0;
}

// The text, at most kBlockBytes long, with spaces behind it.
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

// The first offset from from on whose byte passes the test, and the text's size if there is none.
template <typename Test>
std::size_t findByte(std::string_view text, std::size_t from, Test test) {
  for (; from + kBlockBytes <= text.size(); from += kBlockBytes) {
    const std::size_t index = firstOf(test(Bytes(text.data() + from)));
    if (index < kBlockBytes) return from + index;
  }
  if (from >= text.size()) return text.size();
  const PaddedBlock rest(text.substr(from));
  const std::size_t index = firstOf(test(Bytes(rest.data())));
  return index < kBlockBytes ? from + index : text.size();
}

// Whether a byte of the text passes the test.
template <typename Test>
bool holdsByte(std::string_view text, Test test) {
  if (text.size() < kBlockBytes) return isAny(test(Bytes(PaddedBlock(text).data())));
  Bytes::Mask found = test(Bytes(text.data() + text.size() - kBlockBytes));
  for (std::size_t i = 0; i + kBlockBytes < text.size(); i += kBlockBytes)
    found |= test(Bytes(text.data() + i));
  return isAny(found);
}

}  // namespace text
