// The real module behind one that misbehaves if the text of a file asks for it, for tests of the
// language server, which gives files names of its own.
//
// Each call adds the line "PROCESS PATH" to the file that FRAGILE_PLUGIN_LOG names.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "plugin/plugin_api.h"

#define EXPORTED __attribute__((visibility("default")))

namespace {

void* realModule() {
  static void* const module = ::dlopen(QUORL_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) std::abort();
  return module;
}

void log(const char* path) {
  const char* const name = std::getenv("FRAGILE_PLUGIN_LOG");
  if (name != nullptr) std::ofstream(name, std::ios::app) << ::getpid() << " " << path << "\n";
}

void hang() {
  while (true) ::pause();
}

// Writes to each pipe.
void spoilPipes() {
  const std::string bytes(1000, 'x');
  for (int descriptor = 3; descriptor < 64; ++descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode)) {
      [[maybe_unused]] const auto written = ::write(descriptor, bytes.data(), bytes.size());
    }
  }
}

void grow() {
  constexpr std::size_t kBytes = std::size_t{70} << 20U;
  static char* volatile block;
  block = static_cast<char*>(std::malloc(kBytes));
  if (block != nullptr) std::memset(block, 'x', kBytes);
}

struct Misdeed {
  std::string_view word;
  void (*commit)();
};

constexpr std::array kMisdeeds = {
    Misdeed{"MISDEED crash", [] { ::_exit(7); }},
    Misdeed{"MISDEED throw", [] { throw std::runtime_error("it broke"); }},
    Misdeed{"MISDEED hang", hang},
    Misdeed{"MISDEED spoil", spoilPipes},
    Misdeed{"MISDEED grow", grow},
    Misdeed{"MISDEED print", [] { std::puts("by the module"); }},
};

void misbehave(const char* path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  for (const Misdeed& misdeed : kMisdeeds) {
    if (text.find(misdeed.word) != std::string::npos) misdeed.commit();
  }
}

}  // namespace

extern "C" {

EXPORTED const char* ParseJS(const char* path, const char* defines) {
  log(path);
  misbehave(path);
  static const auto parse = reinterpret_cast<decltype(&ParseJS)>(::dlsym(realModule(), "ParseJS"));
  return parse(path, defines);
}

EXPORTED void CleanupJS() {}

EXPORTED const char* Info() { return "fragile plug-in\n"; }

}  // extern "C"
