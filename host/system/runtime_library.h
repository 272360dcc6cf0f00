// A shared library that is loaded at run time, where it is needed.
#pragma once

#include <string>

namespace host {

class RuntimeLibrary {
 public:
  // Loads the library, which stays for the life of the process. Throws Failure if it cannot be
  // loaded.
  explicit RuntimeLibrary(const char* name);

  // Sets a pointer to the function of that name. Throws Failure if the library has none.
  template <typename Function>
  void find(const char* function, Function& pointer) const {
    pointer = reinterpret_cast<Function>(symbol(function));
  }

 private:
  void* symbol(const char* name) const;
  [[noreturn]] void failWithReason() const;

  std::string name_;
  void* handle_;
};

}  // namespace host
