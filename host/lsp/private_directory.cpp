#include "lsp/private_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

#include "system/failure.h"
#include "system/io.h"
#include "system/signals.h"

namespace host::lsp {
namespace {

constexpr std::string_view kNameStart = "quorl-js-lsp-";
constexpr std::size_t kMaxExtensionBytes = 32;

// An editor's name for a file may end in anything.
bool isPlainExtension(std::string_view extension) {
  return extension.size() <= kMaxExtensionBytes &&
         std::all_of(extension.begin(), extension.end(), [](char byte) {
           return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                  (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' || byte == '+';
         });
}

int openDirectory(const std::string& path) {
  return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

std::vector<std::string> namesIn(const std::string& path) {
  std::vector<std::string> names;
  DIR* const directory = ::opendir(path.c_str());
  if (directory == nullptr) return names;
  while (const dirent* const entry = ::readdir(directory)) names.emplace_back(entry->d_name);
  ::closedir(directory);
  return names;
}

// Removes the directory if it is ours and its owner has ended without.
void removeIfLeft(const std::string& path) {
  const int directory = openDirectory(path);
  if (directory < 0) return;
  struct stat status {};
  const bool isOurs = ::fstat(directory, &status) == 0 && status.st_uid == ::geteuid() &&
                      (status.st_mode & 0777) == 0700;
  if (isOurs && ::flock(directory, LOCK_EX | LOCK_NB) == 0) {
    for (const std::string& name : namesIn(path)) {
      if (name != "." && name != "..") ::unlinkat(directory, name.c_str(), 0);
    }
    ::rmdir(path.c_str());
  }
  ::close(directory);
}

void removeAllLeft(const std::string& parent) {
  for (const std::string& name : namesIn(parent)) {
    if (!name.starts_with(kNameStart)) continue;
    std::string path = parent;
    removeIfLeft(path.append("/").append(name));
  }
}

// Whether the path still leads to the open directory.
bool isAt(int directory, const std::string& path) {
  struct stat open {};
  struct stat found {};
  return ::fstat(directory, &open) == 0 && ::lstat(path.c_str(), &found) == 0 &&
         open.st_ino == found.st_ino && open.st_dev == found.st_dev;
}

}  // namespace

PrivateDirectory::PrivateDirectory() {
  removeAllLeft(temporaryParent());
  make();
}

PrivateDirectory::~PrivateDirectory() {
  const SignalsHeld held;
  removeFile();
  ::rmdir(path_.c_str());
  forgetTemporaryDirectory();
  ::close(lock_);
}

// Between the making and the lock another server may take the directory for one that was left, so
// it is made again if it is gone by then.
void PrivateDirectory::make() {
  const std::string parent = temporaryParent();
  do {
    const SignalsHeld held;
    if (lock_ >= 0) ::close(std::exchange(lock_, -1));
    path_ = parent + "/" + std::string(kNameStart) + "XXXXXX";
    if (::mkdtemp(path_.data()) == nullptr) {
      throw systemFailure("temporary directory in " + parent, errno);
    }
    noteTemporaryDirectory(path_, path_);
    lock_ = openDirectory(path_);
    if (lock_ < 0 && errno != ENOENT) throw systemFailure(path_, errno);
    if (lock_ >= 0) ::flock(lock_, LOCK_EX);
  } while (lock_ < 0 || !isAt(lock_, path_));
}

std::string PrivateDirectory::write(std::string_view text, std::string_view extension) {
  removeFile();
  if (!isAt(lock_, path_)) make();  // somebody has tidied up
  std::string name = path_ + "/text";
  if (!extension.empty() && isPlainExtension(extension)) name.append(".").append(extension);
  {
    const SignalsHeld held;
    file_ = name;
    noteTemporaryDirectory(path_, file_);
  }
  const int file = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) throw systemFailure(file_, errno);
  const int writeError = writeAll(file, text);
  const int closeError = closeWritten(file);
  if (writeError != 0 || closeError != 0) {
    throw systemFailure(file_, writeError != 0 ? writeError : closeError);
  }
  return file_;
}

void PrivateDirectory::removeFile() {
  if (!file_.empty()) ::unlink(std::exchange(file_, {}).c_str());
}

}  // namespace host::lsp
