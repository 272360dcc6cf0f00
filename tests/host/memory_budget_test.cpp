// Memory limits of control groups, read from directories laid out as the kernel lays them out.

#include "system/memory_budget.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

TEST(CgroupMemoryLimit, IsTheSmallestOfTheGroupsAProcessIsIn) {
  struct Row {
    const char* why;
    std::string membership;
    std::vector<std::pair<std::string, std::string>> files;
    std::uint64_t limit;
  };
  const std::string v1Unlimited = "9223372036854771712\n";
  const std::vector<Row> rows = {
      {"no control groups", "", {}, 0},
      {"version 2", "0::/a\n", {{"a/memory.max", "1000\n"}}, 1000},
      {"version 2, no limit", "0::/a\n", {{"a/memory.max", "max\n"}}, 0},
      {"version 2, a smaller limit above",
       "0::/a/b/c\n",
       {{"a/b/c/memory.max", "3000\n"}, {"a/b/memory.max", "max\n"}, {"a/memory.max", "2000\n"}},
       2000},
      {"version 2, a larger limit above",
       "0::/a/b\n",
       {{"a/b/memory.max", "3000\n"}, {"a/memory.max", "4000\n"}},
       3000},
      {"version 2, a limit beside", "0::/a\n", {{"b/memory.max", "1000\n"}}, 0},
      {"version 2, the root of a container", "0::/\n", {{"memory.max", "1000\n"}}, 1000},
      {"version 2, a group outside of the container",
       "0::/../b\n",
       {{"memory.max", "1000\n"}, {"b/memory.max", "10\n"}},
       1000},
      {"version 2 beside version 1", "0::/a\n", {{"unified/a/memory.max", "1000\n"}}, 1000},
      {"version 1", "4:memory:/a\n", {{"memory/a/memory.limit_in_bytes", "1000\n"}}, 1000},
      {"version 1, no limit",
       "4:memory:/a\n",
       {{"memory/a/memory.limit_in_bytes", v1Unlimited},
        {"memory/memory.limit_in_bytes", v1Unlimited}},
       0},
      {"version 1, controllers mounted together",
       "4:cpu,memory,pids:/a\n",
       {{"memory/a/memory.limit_in_bytes", "1000\n"}},
       1000},
      {"version 1, another controller",
       "4:memoryless,cpu:/a\n",
       {{"memory/a/memory.limit_in_bytes", "1000\n"}},
       0},
      {"version 1, a path of the host in a container",
       "4:memory:/docker/0123\n",
       {{"memory/memory.limit_in_bytes", "1000\n"}},
       1000},
      {"both versions",
       "4:memory:/a\n0::/b\n",
       {{"memory/a/memory.limit_in_bytes", "2000\n"}, {"b/memory.max", "1000\n"}},
       1000},
      {"a colon in a name", "0::/a:b\n", {{"a:b/memory.max", "1000\n"}}, 1000},
      {"lines of another form", "x\n0:\n0::/a\n", {{"a/memory.max", "1000\n"}}, 1000},
      {"a limit that is no number", "0::/a\n", {{"a/memory.max", "1000x\n"}}, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    const support::TempDir own;
    const fs::path root = own.path("root");
    for (const auto& [name, text] : row.files) {
      fs::create_directories((root / name).parent_path());
      std::ofstream(root / name) << text;
    }
    std::ofstream(own.path("membership")) << row.membership;
    EXPECT_EQ(host::cgroupMemoryLimit(own.path("membership"), root.string()), row.limit);
  }
}

TEST(MemoryBudget, IsTheMachinesUnlessItsGroupHasLess) {
  const auto machine = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
                       static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  const std::uint64_t group = host::cgroupMemoryLimit("/proc/self/cgroup", "/sys/fs/cgroup");
  EXPECT_EQ(host::memoryBudget(), group == 0 ? machine : std::min(machine, group));
}

}  // namespace
