// The place of texts that are not saved: the module reads files only.
#pragma once

#include <string>
#include <string_view>

namespace host::lsp {

// A directory that nobody else may enter, with one file at a time in it. It goes with this object,
// with a signal that ends the program, and, after a kill, when the next one is made: a lock tells
// those that are in use.
class PrivateDirectory {
 public:
  PrivateDirectory();  // throws Failure
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;
  ~PrivateDirectory();

  // Writes the text to a file with that extension and returns its path. Throws Failure.
  std::string write(std::string_view text, std::string_view extension);
  void removeFile();

  int lock() const { return lock_; }

 private:
  void make();

  std::string path_;
  std::string file_;
  int lock_ = -1;
};

}  // namespace host::lsp
