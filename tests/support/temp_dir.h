// A temporary directory, removed with its contents at the end of the test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <unistd.h>

namespace support {

class TempDir {
 public:
  TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "quorl-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    root_ = name;
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  std::string path(const std::string& name) const { return root_ + "/" + name; }

  // Writes bytes unchanged to the file of that name and returns its path.
  std::string write(const std::string& name, std::string_view bytes) const {
    std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path(name));
    return path(name);
  }

 private:
  std::string root_;
};

// While alive, relative paths begin at that directory. Block sizes do not depend then on where the
// machine has its temporary files.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::filesystem::path& directory) {
    std::filesystem::current_path(directory);
  }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;
  ~WorkingDirectory() { std::filesystem::current_path(before_); }

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
};

}  // namespace support
