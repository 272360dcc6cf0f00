// Replaces operator new in the program that links this, so that chosen requests for memory fail.
#pragma once

#include <cstddef>
#include <optional>

namespace reliability {

// What operator new has seen and is to do. The module's requests for the answer itself go to
// realloc and are not among them.
struct Requests {
  std::size_t count = 0;
  std::optional<std::size_t> failing;  // the number, from 0, of the request that fails
  bool andAllBehind = false;
};
extern Requests requests;

}  // namespace reliability
