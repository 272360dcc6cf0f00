// What workers write to standard error while a progress line is on the terminal. It goes through a
// pipe, so that the line can be erased before it is printed.
#pragma once

#include <string>

namespace host {

class StderrRelay {
 public:
  // Unless isWanted, and where the system has no pipe to give, workers write to standard error
  // themselves.
  explicit StderrRelay(bool isWanted);
  StderrRelay(const StderrRelay&) = delete;
  StderrRelay& operator=(const StderrRelay&) = delete;
  ~StderrRelay();

  int writeEnd() const { return writeEnd_; }  // negative without a pipe
  int readEnd() const { return readEnd_; }    // the same

  // Returns the whole lines that have come or, with all, everything. Does not wait.
  std::string take(bool all);

 private:
  int readEnd_ = -1;
  int writeEnd_ = -1;
  std::string held_;
};

}  // namespace host
