// While it lives, what is allocated is no leak to LeakSanitizer: for what others keep, or what is
// kept by contract and can no longer be reached.
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
  LeaksAllowed() {}  // not defaulted: a variable of the type is no unused one
  ~LeaksAllowed() {}
#endif
};

}  // namespace support
