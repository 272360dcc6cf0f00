// Answers as files of their own, in one directory.
#pragma once

#include <string>
#include <string_view>

namespace host {

class AnswerDirectory {
 public:
  // Throws Failure when the path is no directory that files can be made in.
  explicit AnswerDirectory(const std::string& path);
  AnswerDirectory(const AnswerDirectory&) = delete;
  AnswerDirectory& operator=(const AnswerDirectory&) = delete;
  ~AnswerDirectory();

  const std::string& path() const { return path_; }

  // Makes the answer file of the source file, in place of one from before. It appears complete or,
  // with a Failure, not at all. Temporary files have names with a leading dot, as no answer has.
  void write(std::string_view sourceFile, std::string_view answer) const;

 private:
  std::string path_;
  int directory_;
};

}  // namespace host
