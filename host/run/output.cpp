#include "run/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "system/failure.h"
#include "system/file_paths.h"
#include "system/io.h"
#include "system/platform.h"

namespace host {

Output::Output(std::optional<std::string> file) : file_(std::move(file)) {
  if (!file_) {
    if (::fcntl(STDOUT_FILENO, F_GETFD) < 0) throw systemFailure(subject_, errno);
    return;
  }
  subject_ = *file_;
  struct stat status {};
  const bool isThere = ::stat(file_->c_str(), &status) == 0;
  if (isThere && S_ISDIR(status.st_mode)) throw systemFailure(subject_, EISDIR);
  if (isThere && !S_ISREG(status.st_mode)) return;
  if (isThere) mode_ = status.st_mode & 07777;
  if (isThere && ::faccessat(AT_FDCWD, file_->c_str(), W_OK, AT_EACCESS) != 0) {
    throw systemFailure(subject_, errno);
  }
  // Replace or make the target of a link, and keep the link.
  const std::filesystem::path path = behindLinks(*file_);
  name_ = path.filename().string();
  const std::string parent = path.has_parent_path() ? path.parent_path().string() : ".";
  if (name_.empty()) throw systemFailure(subject_, ENOENT);
  directory_ = ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory_ >= 0) directory_ = outOfTheWay(directory_);
  if (directory_ < 0) throw systemFailure(subject_, errno);
}

Output::~Output() {
  if (temporary_) finishTemporaryFile(directory_, *temporary_, name_, ECANCELED);
  if (directory_ >= 0) ::close(directory_);
}

void Output::begin() {
  if (!file_) return;
  if (directory_ >= 0) {
    openTemporaryFile();
  } else {
    leadTo(::open(file_->c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
  }
}

void Output::openTemporaryFile() {
  removeStaleTemporaryFiles(directory_);
  const TemporaryFile file = makeTemporaryFile(directory_);
  if (file.descriptor < 0) throw systemFailure(subject_, errno);
  temporary_ = file;
  if (mode_ != 0) ::fchmod(file.descriptor, mode_);
  leadTo(file.descriptor);
}

// Descriptor 1 becomes a copy of the other, which is closed.
void Output::leadTo(int descriptor) {
  const int file = descriptor < 0 ? descriptor : outOfTheWay(descriptor);
  if (file < 0 || ::dup2(file, STDOUT_FILENO) < 0) throw systemFailure(subject_, errno);
  ::close(file);
}

void Output::write(std::string_view text) { check(writeAll(STDOUT_FILENO, text)); }

void Output::check(int errorNumber) const {
  if (errorNumber == EPIPE) throw BrokenPipe();
  if (errorNumber != 0) throw systemFailure(subject_, errorNumber);
}

void Output::checkReader() const {
  if (isAbandoned(STDOUT_FILENO)) throw BrokenPipe();
}

void Output::close() {
  const int error = closeWritten(STDOUT_FILENO);
  if (!temporary_) {
    check(error);
    return;
  }
  check(finishTemporaryFile(directory_, *std::exchange(temporary_, std::nullopt), name_, error));
}

}  // namespace host
