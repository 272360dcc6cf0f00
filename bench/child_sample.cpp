#include "child_sample.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>

namespace bench {
namespace {

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

double cpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double residentBytes() {
  double whole = 0;
  double resident = 0;
  std::ifstream("/proc/self/statm") >> whole >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

double peakResidentBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024;
}

[[noreturn]] void runChild(const std::function<void(Sample&)>& work, int pipe) {
  try {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    const int messages = dup(STDERR_FILENO);
    dup2(nowhere, STDERR_FILENO);
    Sample sample;
    const double before = residentBytes();
    try {
      work(sample);
    } catch (const std::exception& error) {
      dprintf(messages, "%s\n", error.what());
      _exit(1);
    }
    sample.peakBytes = std::max(0.0, peakResidentBytes() - before);
    _exit(write(pipe, &sample, sizeof sample) == sizeof sample ? 0 : 1);
  } catch (...) {
    _exit(1);
  }
}

}  // namespace

Sample sampleInChild(const std::function<void(Sample&)>& work) {
  int ends[2];
  if (pipe(ends) != 0) fail("pipe");
  const pid_t child = fork();
  if (child < 0) fail("fork");
  if (child == 0) runChild(work, ends[1]);
  close(ends[1]);
  Sample sample;
  const ssize_t got = read(ends[0], &sample, sizeof sample);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (status != 0 || got != sizeof sample) {
    std::fputs("a measured child failed\n", stderr);
    std::exit(1);
  }
  return sample;
}

void addTime(Sample& sample, const std::function<void()>& work) {
  const double cpuBefore = cpuSeconds();
  const auto before = std::chrono::steady_clock::now();
  work();
  const auto after = std::chrono::steady_clock::now();
  sample.cpuSeconds += cpuSeconds() - cpuBefore;
  sample.wallSeconds += std::chrono::duration<double>(after - before).count();
}

}  // namespace bench
