// When files were changed.
#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace host {

// In nanoseconds since 1970: the last change of the bytes, and of anything about the file.
struct FileTimes {
  std::int64_t modified = 0;
  std::int64_t changed = 0;

  bool operator==(const FileTimes& other) const = default;
};

inline FileTimes timesOf(const struct stat& status) {
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  const auto nanoseconds = [](const timespec& time) {
    return std::int64_t{time.tv_sec} * kNanoseconds + std::int64_t{time.tv_nsec};
  };
#ifdef __APPLE__
  return {nanoseconds(status.st_mtimespec), nanoseconds(status.st_ctimespec)};
#else
  return {nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
#endif
}

}  // namespace host
