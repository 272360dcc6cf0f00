// Questions put to sixteen bytes at a time. The compilers' vector type becomes the processor's own
// instructions, whichever processor it is.
//
// A test is a function from Bytes to a Mask, such as
//   [](Bytes bytes) { return bytes.are('"') | bytes.are('\n'); }
// It looks at each byte alone and is not true of a space, which stands in for what is missing of a
// text that is shorter than a block.
#pragma once

#include <array>
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

// Whether the mask is true of any byte.
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
