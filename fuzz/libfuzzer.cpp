// Runs the program's one target under libFuzzer, which provides main.
#include <cstddef>
#include <cstdint>

#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const fuzz::Target* kTarget = fuzz::findTarget(QUORL_FUZZ_TARGET);
  static_assert(kTarget != nullptr, "there is a target of that name");
  fuzz::run(*kTarget, {reinterpret_cast<const char*>(data), size});
  return 0;
}
