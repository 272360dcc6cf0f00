// Whether the tests are built with AddressSanitizer, which has its own allocator, makes frames
// larger and needs several times the memory.
#pragma once

#ifdef __SANITIZE_ADDRESS__
#define QUORL_TEST_IS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORL_TEST_IS_SANITIZED 1
#endif
#endif
