#include "run/temporary_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "system/signals.h"

namespace host {
namespace {

constexpr std::string_view kPrefix = ".quorl-js-";

// Removes the number that text begins with. Returns nothing, with text as it was, if there is none.
template <typename Number>
std::optional<Number> takeNumber(std::string_view& text) {
  Number number{};
  if (text.empty() || text.front() == '-') return std::nullopt;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

// Whether the name is that of a temporary file whose process is gone.
bool isStale(std::string_view name) {
  if (!name.starts_with(kPrefix)) return false;
  name.remove_prefix(kPrefix.size());
  const std::optional<pid_t> process = takeNumber<pid_t>(name);
  if (!process || !name.starts_with('-')) return false;
  name.remove_prefix(1);
  const bool isOurs = takeNumber<unsigned>(name) && name.empty();
  return isOurs && ::kill(*process, 0) != 0 && errno == ESRCH;
}

}  // namespace

TemporaryFile makeTemporaryFile(int directory) {
  const SignalsHeld held;
  // A process with the same number, on another machine or before this one, may have left a file.
  for (unsigned attempt = 0;; ++attempt) {
    const std::string name =
        std::string(kPrefix) + std::to_string(::getpid()) + "-" + std::to_string(attempt);
    const int file =
        ::openat(directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) noteTemporaryFile(directory, name);
    if (file >= 0 || errno != EEXIST) return {name, file};
  }
}

int finishTemporaryFile(int directory, const TemporaryFile& file, const std::string& name,
                        int error) {
  const SignalsHeld held;
  if (error == 0 && ::renameat(directory, file.name.c_str(), directory, name.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) ::unlinkat(directory, file.name.c_str(), 0);
  forgetTemporaryFile();
  return error;
}

void dropTemporaryFile(int directory, const TemporaryFile& file) {
  const SignalsHeld held;
  ::unlinkat(directory, file.name.c_str(), 0);
  forgetTemporaryFile();
}

void removeStaleTemporaryFiles(int directory) {
  const int listing = ::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (listing < 0) return;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(listing), ::closedir);
  if (!entries) {
    ::close(listing);
    return;
  }
  while (const dirent* const entry = ::readdir(entries.get())) {
    if (isStale(entry->d_name)) ::unlinkat(directory, entry->d_name, 0);
  }
}

}  // namespace host
