#include "system/memory_budget.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "system/platform.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// Version 1 writes "no limit" as the largest multiple of the page size below 2^63.
constexpr std::uint64_t kUnlimited = std::uint64_t{1} << 62U;

std::uint64_t smallerLimit(std::uint64_t one, std::uint64_t other) {
  if (one == 0 || other == 0) return std::max(one, other);
  return std::min(one, other);
}

// 0 for "max", for a limit that is none, and for a file that is not there.
std::uint64_t limitIn(const fs::path& file) {
  std::string word;
  std::ifstream(file) >> word;
  std::uint64_t limit = 0;
  const char* const end = word.data() + word.size();
  const auto [parsed, error] = std::from_chars(word.data(), end, limit);
  return error == std::errc() && parsed == end && limit < kUnlimited ? limit : 0;
}

// A group's limit holds for all groups below it. In a container the group's own directory may be
// missing: its path is the host's, while root is the container's group.
std::uint64_t smallestLimit(const fs::path& root, std::string_view group, const char* file) {
  std::uint64_t smallest = limitIn(root / file);
  fs::path directory = root;
  for (const fs::path& part : fs::path(group).relative_path()) {
    if (part == "..") break;  // a group outside of what is mounted here
    directory /= part;
    smallest = smallerLimit(smallest, limitIn(directory / file));
  }
  return smallest;
}

struct Membership {
  std::string_view controllers;  // separated by commas; none for version 2
  std::string_view group;
};

// Of a line such as "4:memory:/a/b".
std::optional<Membership> parseMembership(std::string_view line) {
  const std::size_t first = line.find(':');
  const std::size_t second = line.find(':', first + 1);
  if (first == std::string_view::npos || second == std::string_view::npos) return std::nullopt;
  return Membership{line.substr(first + 1, second - first - 1), line.substr(second + 1)};
}

bool includesMemory(std::string_view controllers) {
  return ("," + std::string(controllers) + ",").find(",memory,") != std::string::npos;
}

}  // namespace

std::uint64_t cgroupMemoryLimit(const std::string& membership, const std::string& root) {
  std::uint64_t smallest = 0;
  std::ifstream lines(membership);
  for (std::string line; std::getline(lines, line);) {
    const std::optional<Membership> found = parseMembership(line);
    if (!found) continue;
    if (found->controllers.empty()) {
      for (const char* const mount : {"", "unified"}) {
        smallest = smallerLimit(smallest,
                                smallestLimit(fs::path(root) / mount, found->group, "memory.max"));
      }
    } else if (includesMemory(found->controllers)) {
      smallest = smallerLimit(smallest, smallestLimit(fs::path(root) / "memory", found->group,
                                                      "memory.limit_in_bytes"));
    }
  }
  return smallest;
}

std::uint64_t memoryBudget() {
  return smallerLimit(machineMemory(), cgroupMemoryLimit("/proc/self/cgroup", "/sys/fs/cgroup"));
}

}  // namespace host
