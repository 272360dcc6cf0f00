// How much memory a run may use in all.
#pragma once

#include <cstdint>
#include <string>

namespace host {

// The machine's memory or, if that is smaller, the limit of this process's control group, in bytes.
// 0 where neither is known.
std::uint64_t memoryBudget();

// The smallest memory limit of the control groups that membership lists, in the format of
// /proc/self/cgroup, and of the groups above them; 0 if there is none. root is where the groups are
// mounted: version 2 directly or in "unified", version 1 in "memory".
std::uint64_t cgroupMemoryLimit(const std::string& membership, const std::string& root);

}  // namespace host
