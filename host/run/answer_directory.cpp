#include "run/answer_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "run/answer_name.h"
#include "system/failure.h"
#include "system/io.h"
#include "system/signals.h"

namespace host {
namespace {

constexpr std::string_view kTemporaryPrefix = ".quorl-js-";

struct TemporaryFile {
  std::string name;
  int descriptor;  // negative if it could not be made; errno tells why
};

TemporaryFile makeTemporaryFile(int directory) {
  const SignalsHeld held;
  // A process with the same number, on another machine or before this one, may have left a file.
  for (unsigned attempt = 0;; ++attempt) {
    const std::string name =
        std::string(kTemporaryPrefix) + std::to_string(::getpid()) + "-" + std::to_string(attempt);
    const int file =
        ::openat(directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) noteTemporaryFile(directory, name);
    if (file >= 0 || errno != EEXIST) return {name, file};
  }
}

// Gives 0, or the number of the first error.
int fill(const TemporaryFile& file, std::string_view text) {
  const int writeError = writeAll(file.descriptor, text);
  const int closeError = closeWritten(file.descriptor);
  return writeError != 0 ? writeError : closeError;
}

// Gives 0, or the number of the error for which there is no such file.
int finish(int directory, const TemporaryFile& file, const std::string& name, int error) {
  const SignalsHeld held;
  if (error == 0 && ::renameat(directory, file.name.c_str(), directory, name.c_str()) != 0) {
    error = errno;
  }
  if (error != 0) ::unlinkat(directory, file.name.c_str(), 0);
  forgetTemporaryFile();
  return error;
}

int writeWhole(int directory, const std::string& name, std::string_view text) {
  // Another machine that starts on the same directory may take the file for a stale one.
  constexpr int kAttempts = 3;
  int error = ENOENT;
  for (int attempt = 0; attempt < kAttempts && error == ENOENT; ++attempt) {
    const TemporaryFile file = makeTemporaryFile(directory);
    if (file.descriptor < 0) return errno;
    error = finish(directory, file, name, fill(file, text));
  }
  return error;
}

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
  if (!name.starts_with(kTemporaryPrefix)) return false;
  name.remove_prefix(kTemporaryPrefix.size());
  const std::optional<pid_t> process = takeNumber<pid_t>(name);
  if (!process || !name.starts_with('-')) return false;
  name.remove_prefix(1);
  const bool isOurs = takeNumber<unsigned>(name) && name.empty();
  return isOurs && ::kill(*process, 0) != 0 && errno == ESRCH;
}

void removeStaleFiles(int directory) {
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

// Answer names are ASCII.
char toUpper(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

std::string folded(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), toUpper);
  return name;
}

}  // namespace

bool foldsCase(int directory) {
  const TemporaryFile file = makeTemporaryFile(directory);
  if (file.descriptor < 0) return false;  // writing answers will fail, and tell why
  ::close(file.descriptor);
  const bool isFound = ::faccessat(directory, folded(file.name).c_str(), F_OK, 0) == 0;
  const SignalsHeld held;
  ::unlinkat(directory, file.name.c_str(), 0);
  forgetTemporaryFile();
  return isFound;
}

AnswerDirectory::AnswerDirectory(const std::string& path, std::string_view extension,
                                 bool (*probe)(int directory))
    : path_(path),
      extension_(extension),
      directory_(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const std::string subject = "output directory " + path;
  if (directory_ < 0) throw systemFailure(subject, errno);
  if (::faccessat(directory_, ".", W_OK | X_OK, AT_EACCESS) != 0) {
    const int error = errno;
    ::close(directory_);
    throw systemFailure(subject, error);
  }
  removeStaleFiles(directory_);
  foldsCase_ = probe(directory_);
}

AnswerDirectory::~AnswerDirectory() { ::close(directory_); }

std::optional<std::string> AnswerDirectory::otherOwner(std::string_view sourceFile) {
  if (!foldsCase_) return std::nullopt;
  std::string name = answerName(sourceFile, extension_);
  const auto [owner, isNew] =
      owners_.try_emplace(folded(name), Owner{name, std::string(sourceFile)});
  if (owner->second.answerName == name) return std::nullopt;
  return owner->second.sourceFile;
}

void AnswerDirectory::remove(std::string_view sourceFile) const {
  const std::string name = answerName(sourceFile, extension_);
  if (::unlinkat(directory_, name.c_str(), 0) != 0 && errno != ENOENT) {
    throw systemFailure("answer file " + path_ + "/" + name, errno);
  }
}

void AnswerDirectory::write(std::string_view sourceFile, std::string_view answer) const {
  const std::string name = answerName(sourceFile, extension_);
  const int error = writeWhole(directory_, name, answer);
  if (error != 0) throw systemFailure("answer file " + path_ + "/" + name, error);
}

}  // namespace host
