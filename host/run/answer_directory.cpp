#include "run/answer_directory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "run/answer_name.h"
#include "system/failure.h"
#include "system/io.h"
#include "system/signals.h"

namespace host {
namespace {

struct TemporaryFile {
  std::string name;
  int descriptor;  // negative if it could not be made; errno tells why
};

TemporaryFile makeTemporaryFile(int directory) {
  const SignalsHeld held;
  // A process with the same number, on another machine or before this one, may have left a file.
  for (unsigned attempt = 0;; ++attempt) {
    const std::string name =
        ".quorl-js-" + std::to_string(::getpid()) + "-" + std::to_string(attempt);
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
  const TemporaryFile file = makeTemporaryFile(directory);
  if (file.descriptor < 0) return errno;
  return finish(directory, file, name, fill(file, text));
}

}  // namespace

AnswerDirectory::AnswerDirectory(const std::string& path, std::string_view extension)
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
}

AnswerDirectory::~AnswerDirectory() { ::close(directory_); }

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
