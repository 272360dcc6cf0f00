// What workers write to standard error while a line of progress is on the terminal: it goes through
// a pipe, so that the line can be taken away before.
#pragma once

#include <string>

namespace host {

class StderrRelay {
 public:
  // Unless it is wanted, and where the system has no pipe to give, workers write to standard error
  // themselves.
  explicit StderrRelay(bool isWanted);
  StderrRelay(const StderrRelay&) = delete;
  StderrRelay& operator=(const StderrRelay&) = delete;
  ~StderrRelay();

  int writeEnd() const { return writeEnd_; }  // negative without a pipe
  int readEnd() const { return readEnd_; }    // the same

  // The whole lines that have come, or with all what there is; does not wait.
  std::string take(bool all);

 private:
  int readEnd_ = -1;
  int writeEnd_ = -1;
  std::string held_;
};

}  // namespace host
