#include "system/runtime_library.h"

#include <dlfcn.h>

#include "system/failure.h"

namespace host {

RuntimeLibrary::RuntimeLibrary(const char* name)
    : name_(name), handle_(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) failWithReason();
}

void* RuntimeLibrary::symbol(const char* name) const {
  void* const found = ::dlsym(handle_, name);
  if (found == nullptr) failWithReason();
  return found;
}

void RuntimeLibrary::failWithReason() const {
  throw Failure("cannot load " + name_ + ": " + ::dlerror());
}

}  // namespace host
