// What useLargePages does to a process, in one that ends with the test.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "platform.h"

namespace {

#ifdef __GLIBC__

constexpr std::size_t kMebibyte = std::size_t{1} << 20U;

std::uintptr_t heapEnd() { return reinterpret_cast<std::uintptr_t>(::sbrk(0)); }

// The flags of the mapping that holds the address; see proc(5).
std::string mappingFlags(std::uintptr_t address) {
  std::ifstream mappings("/proc/self/smaps");
  bool isIt = false;
  for (std::string line; std::getline(mappings, line);) {
    std::istringstream words(line);
    std::uintptr_t start = 0;
    std::uintptr_t end = 0;
    char dash = 0;
    if (words >> std::hex >> start >> dash >> end && dash == '-') {
      isIt = start <= address && address < end;
    } else if (isIt && line.starts_with("VmFlags:")) {
      return line + " ";
    }
  }
  return "";
}

void expectHeapOf64() {
  const std::uintptr_t before = heapEnd();
  host::useLargePages(64 * kMebibyte);
  const std::uintptr_t grown = heapEnd();
  EXPECT_GE(grown - before, 64 * kMebibyte);
  EXPECT_LT(grown - before, 67 * kMebibyte);

  char* const text = static_cast<char*>(std::malloc(48 * kMebibyte));
  ASSERT_NE(text, nullptr);
  std::memset(text, 'x', 48 * kMebibyte);
  const auto address = reinterpret_cast<std::uintptr_t>(text);
  EXPECT_GT(address, before - kMebibyte);
  EXPECT_LT(address + 48 * kMebibyte, grown);
  if (std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled")) {
    EXPECT_NE(mappingFlags(address + 24 * kMebibyte).find(" hg "), std::string::npos);
  }

  std::free(text);
  EXPECT_EQ(heapEnd(), grown) << "memory was given back";
}

// 2 counts memory that is only reserved.
int memoryPolicy() {
  int policy = 0;
  std::ifstream("/proc/sys/vm/overcommit_memory") >> policy;
  return policy;
}

TEST(LargePagesDeathTest, AreAskedForAtOnceAndKept) {
  if (memoryPolicy() == 2) GTEST_SKIP() << "none are taken where the system counts reserved memory";
  EXPECT_EXIT(
      {
        expectHeapOf64();
        std::_Exit(HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
      },
      testing::ExitedWithCode(EXIT_SUCCESS), "");
}

#endif

}  // namespace
