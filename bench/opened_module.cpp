#include "opened_module.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

#include "plugin/plugin_api.h"

namespace bench {
namespace {

template <typename Symbol>
Symbol find(void* module, const char* name) {
  void* const symbol = dlsym(module, name);
  if (symbol == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<Symbol>(symbol);
}

}  // namespace

OpenedModule::OpenedModule(const std::string& path) {
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  parse_ = find<decltype(&ParseJS)>(module, "ParseJS");
  nextId_ = find<const std::int32_t*>(module, "currentIndex");
}

const char* OpenedModule::parse(const std::string& file) const {
  const char* const answer = parse_(file.c_str(), nullptr);
  if (answer == nullptr || std::strncmp(answer, "[\n", 2) != 0) {
    throw std::runtime_error(file + " was not read");
  }
  return answer;
}

}  // namespace bench
