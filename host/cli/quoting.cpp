#include "cli/quoting.h"

namespace host {

std::string withBackslashes(std::string_view text, std::string_view set) {
  std::string result;
  for (const char byte : text) {
    if (set.find(byte) != std::string_view::npos) result += '\\';
    result += byte;
  }
  return result;
}

}  // namespace host
