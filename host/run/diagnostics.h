// Where the module's diagnostic lines go: file descriptor 1 of a worker.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "system/failure.h"

namespace host {

class Diagnostics {
 public:
  // where: "none", "stderr", or the file to write.
  explicit Diagnostics(std::string where) : where_(std::move(where)) {}
  Diagnostics(const Diagnostics&) = delete;
  Diagnostics& operator=(const Diagnostics&) = delete;
  ~Diagnostics();

  // Makes or empties the file, which is as it was when the run cannot begin. Throws Failure when it
  // cannot be opened.
  void begin();

  int descriptor() const { return descriptor_; }  // from begin on
  const std::string& where() const { return where_; }

  // What to throw when they could not be written.
  Failure failure() const;

  // Whether anybody wants them.
  bool areKept() const { return where_ != "none"; }

  // The file to write, if it is one that the user named.
  std::optional<std::string> file() const {
    return areKept() && where_ != "stderr" ? std::optional(where_) : std::nullopt;
  }

 private:
  std::string where_;
  int descriptor_ = -1;
};

}  // namespace host
