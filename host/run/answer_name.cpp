#include "run/answer_name.h"

#include <cstddef>
#include <cstdint>

namespace host {
namespace {

constexpr std::size_t kMaxNameBytes = 200;  // file systems take 255, of which others want some too
constexpr std::size_t kHashDigits = 16;

// No byte that stays as it is, so that a cut name is never a whole one as well.
constexpr char kCutMark = '~';

bool staysAsItIs(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '.' || byte == '_' || byte == '-';
}

void appendEscaped(std::string& out, char byte) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  const auto code = static_cast<unsigned char>(byte);
  out += {'%', kHexDigits[code >> 4U], kHexDigits[code & 0xfU]};
}

// FNV-1a, as 16 digits.
std::string hashOf(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char byte : text) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  }
  std::string digits(kHashDigits, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4U) {
    *digit = "0123456789abcdef"[hash & 0xfU];
  }
  return digits;
}

}  // namespace

std::string answerName(std::string_view path, std::string_view extension) {
  constexpr std::size_t kMaxBytesBeforeHash = kMaxNameBytes - 1 - kHashDigits;
  if (path.empty()) return std::string("%").append(extension);
  std::string name;
  std::size_t bytesBeforeHash = 0;  // ends behind a whole byte of the path
  for (const char byte : path) {
    if (staysAsItIs(byte) && !(byte == '.' && name.empty())) {
      name += byte;
    } else {
      appendEscaped(name, byte);
    }
    if (name.size() <= kMaxBytesBeforeHash) bytesBeforeHash = name.size();
  }
  if (name.size() > kMaxNameBytes) {
    name.resize(bytesBeforeHash);
    name += kCutMark + hashOf(path);
  }
  return name.append(extension);
}

}  // namespace host
