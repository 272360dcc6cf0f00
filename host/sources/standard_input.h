// The text of standard input, kept in a file for the module, which reads files only.
#pragma once

#include <cstdint>
#include <string>

namespace host {

class StandardInputCopy {
 public:
  // Reads standard input to its end into a file that ends in the same name as the path, in a
  // directory of its own that nobody else may enter. With a limit other than 0, what is more than a
  // byte above it is not read. Removes what killed runs of the same user left. Throws Failure.
  StandardInputCopy(const std::string& path, std::uint64_t limit);
  StandardInputCopy(const StandardInputCopy&) = delete;
  StandardInputCopy& operator=(const StandardInputCopy&) = delete;
  ~StandardInputCopy();  // removes both; a signal that ends the run does, too

  const std::string& path() const { return file_; }

 private:
  void makeDirectory();

  std::string directory_;
  int lock_ = -1;  // the open directory, locked so that no other run takes it for a stale one
  std::string file_;
};

}  // namespace host
