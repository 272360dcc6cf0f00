#include "formats/tag_path.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace host {

std::string pathFrom(std::string_view folder, std::string_view path) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path file = path;
  if (std::find(file.begin(), file.end(), "..") != file.end()) {
    const fs::path parent = fs::canonical(file.parent_path(), error);
    if (!error) file = parent / file.filename();
  }
  if (file.is_relative()) file = fs::current_path(error) / file;
  const fs::path relative = file.lexically_normal().lexically_relative(folder);
  return error || relative.empty() ? std::string(path) : relative.string();
}

}  // namespace host
