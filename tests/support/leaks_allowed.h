// While alive, LeakSanitizer ignores allocations: for memory that others keep, or that is kept by
// contract and is no longer reachable.
#pragma once

#include "support/sanitized.h"

#ifdef QUORL_TEST_IS_SANITIZED
#include <sanitizer/lsan_interface.h>
#endif

namespace support {

class LeaksAllowed {
 public:
  LeaksAllowed(const LeaksAllowed&) = delete;
  LeaksAllowed& operator=(const LeaksAllowed&) = delete;
#ifdef QUORL_TEST_IS_SANITIZED
  LeaksAllowed() { __lsan_disable(); }
  ~LeaksAllowed() { __lsan_enable(); }
#else
  LeaksAllowed() {}  // not defaulted, or the compiler reports an unused variable
  ~LeaksAllowed() {}
#endif
};

}  // namespace support
