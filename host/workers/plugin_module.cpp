#include "workers/plugin_module.h"

#include <dlfcn.h>

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <cstdint>
#endif

#include <filesystem>
#include <system_error>

#include "system/failure.h"

namespace host {
namespace {

#ifdef __APPLE__
constexpr const char* kModuleFile = "quorljs.bundle/Contents/MacOS/quorljs";
#else
constexpr const char* kModuleFile = "quorljs.so";
#endif

// The executable's real place: a symbolic link to the program does not bring the module along.
std::filesystem::path executablePath() {
#ifdef __APPLE__
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  std::string path(size, '\0');
  _NSGetExecutablePath(path.data(), &size);
  return std::filesystem::canonical(path.c_str());
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

template <typename EntryPoint>
EntryPoint entryPoint(void* module, const std::string& path, const char* name) {
  void* const symbol = ::dlsym(module, name);
  if (symbol == nullptr) throw Failure(path + ": no entry point " + name);
  return reinterpret_cast<EntryPoint>(symbol);
}

}  // namespace

std::string findPlugin() {
  const auto directory = executablePath().parent_path();
  const auto beside = directory / kModuleFile;
  const auto installed = directory.parent_path() / "lib" / "quorl-js" / kModuleFile;
  for (const auto& path : {beside, installed}) {
    std::error_code unreadable;
    if (std::filesystem::exists(path, unreadable)) return path.string();
  }
  throw Failure("no plug-in: neither " + beside.string() + " nor " + installed.string() +
                " exists");
}

std::string pluginPath(const std::optional<std::string>& named) {
  return named ? *named : findPlugin();
}

PluginModule::PluginModule(const std::string& path) {
  const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
  // The C library declares dlopen free of exceptions, which ends the process if the module throws
  // when it is loaded. Through a volatile pointer the compiler does not know.
  void* (*volatile const open)(const char*, int) = &::dlopen;
  void* const module = open(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw Failure(std::string("cannot load the plug-in: ") + ::dlerror());
  parseJs_ = entryPoint<decltype(&ParseJS)>(module, path, "ParseJS");
  cleanupJs_ = entryPoint<decltype(&CleanupJS)>(module, path, "CleanupJS");
  info_ = entryPoint<decltype(&Info)>(module, path, "Info");
}

}  // namespace host
