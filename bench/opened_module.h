// A module that is opened at run time, so that an older one can be measured too.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

class OpenedModule {
 public:
  // Throws std::runtime_error. The module stays open for the life of the process.
  explicit OpenedModule(const std::string& path);

  // The answer, which stays valid. Throws std::runtime_error for an error answer.
  const char* parse(const std::string& file) const;

  // How many nodes the last run made.
  std::int32_t nodeCount() const { return *nextId_; }

 private:
  const char* (*parse_)(const char* filePath, const char* defines);
  const std::int32_t* nextId_;
};

}  // namespace bench
