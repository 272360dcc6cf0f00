#include "system/file_paths.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "system/failure.h"

namespace host {

namespace fs = std::filesystem;

std::string behindLinks(const std::string& path) {
  constexpr int kMaxLinks = 40;  // as many as Linux follows
  fs::path result = path;
  std::error_code unseen;
  for (int links = 0; fs::is_symlink(result, unseen); ++links) {
    if (links == kMaxLinks) throw systemFailure(path, ELOOP);
    result = result.parent_path() / fs::read_symlink(result, unseen);
  }
  return result.string();
}

bool isSameFile(const std::string& path, const std::string& other) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::exists(status)) {
    return fs::is_regular_file(status) && fs::equivalent(path, other, error) && !error;
  }
  const auto whole = [&error](const std::string& each) {
    return fs::weakly_canonical(fs::absolute(behindLinks(each), error), error);
  };
  return whole(path) == whole(other);
}

}  // namespace host
