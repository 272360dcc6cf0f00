// What the module writes to standard error while it parses a file. It is kept aside, so that the
// user gets one line with the name of the file instead of many without.
#pragma once

#include <string>

namespace host {

// Made by the parent before the fork, so that it can read what a worker wrote before it died. Where
// the system gives no file for it, standard error stays as it is.
class CapturedErrors {
 public:
  CapturedErrors();
  CapturedErrors(const CapturedErrors&) = delete;
  CapturedErrors& operator=(const CapturedErrors&) = delete;
  ~CapturedErrors();

  // In the worker, around each file: standard error leads here, and then where it led before.
  void begin();
  void end();

  // What was written since this was last called, in a line such as "3 warnings: TEXT"; empty if
  // nothing was. Of texts that differ it has the first.
  std::string take();

 private:
  int file_ = -1;
  int before_ = -1;  // a copy of what standard error led to
};

}  // namespace host
