// Tests sixteen bytes at a time. The compiler turns its vector type into the target processor's own
// instructions.
//
// A test is a function from Bytes to a Mask, such as
//   [](Bytes bytes) { return bytes.are('"') | bytes.are('\n'); }
// It treats each byte separately and must be false for a space, which pads a text shorter than a
// block.
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

}  // namespace text
