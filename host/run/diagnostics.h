// Where the module's diagnostic lines go: file descriptor 1 of a worker.
#pragma once

#include <string>

#include "system/failure.h"

namespace host {

class Diagnostics {
 public:
  // where: "none", "stderr", or the file to write. Throws Failure when it cannot be opened.
  explicit Diagnostics(const std::string& where);
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;
  ~Diagnostics();

  // Empties the file, which still holds what was in it when the run cannot begin.
  void begin() const;

  int descriptor() const { return descriptor_; }
  const std::string& where() const { return where_; }

  // What to throw when they could not be written.
  Failure failure() const;

  // Whether anybody wants them.
  bool areKept() const { return where_ != "none"; }

 private:
  std::string where_;
  int descriptor_;
};

}  // namespace host
