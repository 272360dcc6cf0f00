// A plug-in module for tests of hosts. It answers what a test can foresee byte by byte, does what
// the real module does seldom or never, and writes to standard output in every way there is.
//
// The path chooses the answer; any path that is not listed is answered by the records text
// "[\nPATH|DEFINES\n]\n". Some paths end the process instead, or come to no end.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "plugin/plugin_api.h"

#define EXPORTED __attribute__((visibility("default")))

namespace {

constexpr std::size_t kBigAnswerBytes = 3'000'000;  // far more than a pipe holds

// Writes three lines, the last of which stays in C's buffer.
void makeNoise() {
  std::cout << "by iostream" << std::endl;
  const std::string_view line = "by descriptor\n";
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, line.data(), line.size());
  std::fputs("by stdio\n", stdout);
}

constexpr std::size_t kBlockBytes = std::size_t{4} << 20U;
constexpr int kKeptBlocks = 80;        // 320 MiB
constexpr int kGreediestBlocks = 512;  // 2 GiB: what a machine can spare, should nothing stop it

// By a signal that no sanitizer gets between.
void crash() { ::kill(::getpid(), SIGKILL); }

// Makes the file, so that a test sees how far this process is. Gives false if it is there already.
bool leaveMark(const char* name) {
  const int file = ::open(name, O_WRONLY | O_CREAT | O_EXCL, 0600);
  if (file >= 0) ::close(file);
  return file >= 0;
}

void stop() { ::kill(::getpid(), SIGSTOP); }

void stopIfToldBy(const char* variable) {
  if (std::getenv(variable) != nullptr) stop();
}

// Counts how often the module was loaded, and crashes at each time from the one given on to the
// other.
void crashAtSomeLoads() {
  const char* const first = std::getenv("ODD_PLUGIN_FIRST_BAD_LOAD");
  const char* const last = std::getenv("ODD_PLUGIN_LAST_BAD_LOAD");
  if (first == nullptr || last == nullptr) return;
  int number = 1;
  while (!leaveMark(("load-" + std::to_string(number)).c_str())) ++number;
  if (number >= std::atoi(first) && number <= std::atoi(last)) crash();
}

// Speaks when the module is loaded and when the process ends.
struct Talker {
  Talker() {
    std::puts("loaded");
    stopIfToldBy("ODD_PLUGIN_STOPS_AT_LOAD");
    crashAtSomeLoads();
    const char* const what = std::getenv("ODD_PLUGIN_THROWS_AT_LOAD");
    if (what != nullptr && *what == '\0') throw 7;
    if (what != nullptr) throw std::runtime_error(what);
  }
  ~Talker() {
    std::puts("unloaded");
    stopIfToldBy("ODD_PLUGIN_STOPS_AT_END");
  }
} talker;

void takeMemory(int blocks) {
  for (int count = 0; count < blocks; ++count) {
    // Seen by nobody, the block would be optimised away.
    static char* volatile latest;
    latest = new char[kBlockBytes];
    std::fill_n(latest, kBlockBytes, 'x');
  }
}

void floodStandardOutput() {
  const std::string block(kBlockBytes, 'x');
  for (int count = 0; count < 64; ++count) std::fputs(block.c_str(), stdout);
}

// Writes to each pipe that is not one of the standard streams.
void spoilPipes() {
  const std::string bytes(1000, 'x');
  for (int descriptor = 3; descriptor < 64; ++descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode)) {
      [[maybe_unused]] const auto written = ::write(descriptor, bytes.data(), bytes.size());
    }
  }
}

rlim_t addressSpaceLimit() {
  rlimit limit{};
  ::getrlimit(RLIMIT_AS, &limit);
  return limit.rlim_cur;
}

std::string addressSpace() {
  const rlim_t limit = addressSpaceLimit();
  return limit == RLIM_INFINITY ? "unlimited" : std::to_string(limit);
}

// Half as much again as the limit under which this was asked for the first time: less than two
// shares of the memory, more than one.
std::size_t moreThanAShare() {
  if (leaveMark("limit")) std::ofstream("limit") << addressSpaceLimit();
  rlim_t first = 0;
  std::ifstream("limit") >> first;
  return static_cast<std::size_t>(first) / 2 * 3;
}

void takeMoreThanAShare() {
  static char* volatile block;
  block = new char[moreThanAShare()];
  delete[] block;
}

void crashWithinAShare() {
  static void* volatile block;
  block = std::malloc(moreThanAShare());
  if (block == nullptr) crash();
  std::free(block);
}

// The processes that this one's parent has started and not yet seen the end of.
std::string siblings() {
  const std::string parent = std::to_string(::getppid());
  std::ifstream children("/proc/" + parent + "/task/" + parent + "/children");
  int count = 0;
  for (std::string child; children >> child;) ++count;
  return std::to_string(count);
}

void appendTo(const char* file) { std::ofstream(file, std::ios::app) << 'x'; }

constexpr int kFloodLines = 20'000;

void floodStandardError() {
  const std::string line = std::string(99, 'e') + "\n";
  for (int count = 0; count < kFloodLines; ++count) std::fputs(line.c_str(), stderr);
}

void warnWithoutEnd() {
  const std::string line = "x\n";
  for (int count = 0; count < 10'000'000; ++count) {
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0) return;
  }
}

// Then it neither ends nor says anything.
void closePipes() {
  for (int descriptor = 3; descriptor < 64; ++descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode)) ::close(descriptor);
  }
  floodStandardError();
  while (true) ::pause();
}

void waitFor(const char* file) {
  while (!std::filesystem::exists(file)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

void hang() {
  leaveMark("hanging");
  while (true) ::pause();
}

// Leaves a process that has all that is open here, and notes it.
void leaveOrphan() {
  const pid_t orphan = ::fork();
  if (orphan == 0) {
    while (true) ::pause();
  }
  std::ofstream("orphans", std::ios::app) << orphan << '\n';
  ::_exit(7);
}

struct Misdeed {
  std::string_view path;
  void (*commit)();
};

constexpr std::array kMisdeeds = {
    Misdeed{"crash", crash},
    Misdeed{"crash-once",
            [] {
              if (leaveMark("crashed")) crash();
            }},
    Misdeed{"exit", [] { ::_exit(7); }},
    Misdeed{"exit-once",
            [] {
              if (leaveMark("exited")) ::_exit(7);
            }},
    Misdeed{"throw", [] { throw std::runtime_error("it broke"); }},
    Misdeed{"throw-number", [] { throw 7; }},
    Misdeed{"throw-memory", [] { throw std::bad_alloc(); }},
    Misdeed{"throw-once",
            [] {
              if (leaveMark("thrown")) throw std::runtime_error("not now");
            }},
    Misdeed{"throw-at-exit", [] { std::atexit([] { throw std::runtime_error("too late"); }); }},
    Misdeed{"stop", stop},
    Misdeed{"stop-once",
            [] {
              if (leaveMark("stopped")) stop();
            }},
    Misdeed{"close-pipes", closePipes},
    Misdeed{"over-share", takeMoreThanAShare},
    Misdeed{"over-share-alone", takeMoreThanAShare},
    Misdeed{"crash-within-share", crashWithinAShare},
    Misdeed{"grow", [] { appendTo("grow"); }},
    Misdeed{"grow-once",
            [] {
              if (leaveMark("grown")) appendTo("grow-once");
            }},
    Misdeed{"wait",
            [] {
              leaveMark("waiting");
              waitFor("go");
            }},
    Misdeed{"wait-for-load-7", [] { waitFor("load-7"); }},
    Misdeed{"hang", hang},
    Misdeed{"hang\x1b[2J\n", hang},
    Misdeed{"hang-once",
            [] {
              if (leaveMark("hung")) hang();
            }},
    Misdeed{"slow", [] { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }},
    Misdeed{"hog", [] { takeMemory(kGreediestBlocks); }},
    Misdeed{"keep", [] { takeMemory(kKeptBlocks); }},
    Misdeed{"flood-stdout", floodStandardOutput},
    Misdeed{"flood-stderr", floodStandardError},
    Misdeed{"warnings",
            [] { std::fputs("Warning: an odd tag\n\nWarning: an odd tag\nan odd tag\n", stderr); }},
    Misdeed{"mixed-warnings", [] { std::fputs("one\x1b\ntwo", stderr); }},
    Misdeed{"long-warning", [] { std::fputs(std::string(100'000, 'w').c_str(), stderr); }},
    Misdeed{"last-words",
            [] {
              std::fputs("farewell\n", stderr);
              crash();
            }},
    Misdeed{"endless-warnings", warnWithoutEnd},
    Misdeed{"orphan", leaveOrphan},
    Misdeed{"spoil", spoilPipes},
};

void misbehave(std::string_view path) {
  for (const Misdeed& misdeed : kMisdeeds) {
    if (misdeed.path == path) misdeed.commit();
  }
}

std::string answer;

}  // namespace

extern "C" {

EXPORTED const char* ParseJS(const char* path, const char* defines) {
  const std::string_view name = path;
  if (name.ends_with("/stay")) {
    leaveMark("staying");
    while (true) ::pause();
  }
  misbehave(name);
  if (name == "no-memory") return nullptr;
  if (name == "no-memory-once" && leaveMark("asked")) return nullptr;
  if (name == "error") {
    answer = R"([{"error": "it\'s \"odd\": x"}])";
  } else if (name == "control-bytes") {
    answer = "[{\"error\": \"\x01 \x1b[31mred\x7f \t\r\n caf\xc3\xa9 \xff\"}]";
  } else if (name == "cut-error") {
    answer = R"([{"error": "no end)";
  } else if (name == "object") {
    answer = R"({ "error": "Invalid root node" })";
  } else if (name == "empty-array") {
    answer = "[]";
  } else if (name == "no-text") {
    answer = "";
  } else if (name == "no-records") {
    answer = "[\n]\n";
  } else if (name == "process") {
    answer = "[\n" + std::to_string(::getpid()) + "\n]\n";
  } else if (name == "over-share-alone") {
    answer = "[\n" + siblings() + "\n]\n";
  } else if (name == "address-space") {
    answer = "[\n" + addressSpace() + "\n]\n";
  } else if (name == "bad-alloc") {
    answer = R"([{"error": "Parser exception: std::bad_alloc"}])";
  } else if (name == "no-node") {
    answer = R"([{"error": "Parser exception: Memory allocation failed for ObjectBranch"}])";
  } else if (name == "big-by") {
    std::ofstream("process") << ::getpid();
    answer = "[\n" + std::string(kBigAnswerBytes, 'x') + "\n]\n";
  } else if (name == "big") {
    answer = "[\n" + std::string(kBigAnswerBytes, 'x') + "\n]\n";
  } else {
    if (name == "noisy") makeNoise();
    if (name == "warning") std::fputs("a warning of the module\n", stderr);
    answer = "[\n" + std::string(path) + "|" + (defines == nullptr ? "null" : defines) + "\n]\n";
  }
  return answer.c_str();
}

EXPORTED void CleanupJS() { std::puts("cleaned up"); }

#ifndef ODD_PLUGIN_LACKS_INFO
EXPORTED const char* Info() {
  if (std::getenv("ODD_PLUGIN_HANGS") != nullptr) hang();
  return std::getenv("ODD_PLUGIN_HAS_NO_MEMORY") == nullptr ? "odd plug-in (Address: 0x1)\n"
                                                            : nullptr;
}
#endif

}  // extern "C"
