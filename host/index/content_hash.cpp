#include "index/content_hash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <array>
#include <cstdio>

namespace host::index {

std::string contentHash(std::string_view bytes) {
  std::array<char, 17> digits;
  std::snprintf(digits.data(), digits.size(), "%016llx",
                static_cast<unsigned long long>(XXH3_64bits(bytes.data(), bytes.size())));
  return digits.data();
}

}  // namespace host::index
