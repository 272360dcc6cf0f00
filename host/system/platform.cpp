#include "system/platform.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#ifdef __linux__
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <csignal>
#else
#include <sys/event.h>
#endif

#include <algorithm>
#include <array>
#include <cstdlib>
#include <thread>

namespace host {
namespace {

constexpr unsigned kUsualWidth = 80;

#ifdef __linux__
constexpr int kPipeBytes = 1 << 20;
#endif

#ifdef __APPLE__
constexpr std::uint64_t kMaxrssUnit = 1;
#else
constexpr std::uint64_t kMaxrssUnit = 1024;
#endif

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kReservesAddressSpace = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kReservesAddressSpace = true;
#else
constexpr bool kReservesAddressSpace = false;
#endif
#else
constexpr bool kReservesAddressSpace = false;
#endif

}  // namespace

unsigned availableCores() {
#ifdef __linux__
  cpu_set_t cores;
  if (::sched_getaffinity(0, sizeof cores, &cores) == 0) {
    return static_cast<unsigned>(std::max(CPU_COUNT(&cores), 1));
  }
#endif
  return std::max(std::thread::hardware_concurrency(), 1U);
}

#ifdef __linux__

int watchProcess(pid_t process) { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); }

#else

int watchProcess(pid_t process) {
  const int queue = ::kqueue();
  if (queue < 0) return -1;
  ::fcntl(queue, F_SETFD, FD_CLOEXEC);
  struct kevent end {};
  EV_SET(&end, process, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
  if (::kevent(queue, &end, 1, nullptr, 0, nullptr) == 0) return queue;
  ::close(queue);
  return -1;
}

#endif

std::uint64_t machineMemory() {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long pageBytes = ::sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageBytes <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageBytes);
}

std::uint64_t openFileLimit() {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  return limit.rlim_cur;
}

void endWithParent([[maybe_unused]] pid_t parent) {
#ifdef __linux__
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);  // it ended before the request
#endif
}

std::uint64_t peakMemory() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_maxrss) * kMaxrssUnit;
}

void limitMemory(std::uint64_t bytes) {
  if (kReservesAddressSpace) return;
  rlimit limit{};
  ::getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = std::min(static_cast<rlim_t>(bytes), limit.rlim_cur);
  ::setrlimit(RLIMIT_AS, &limit);
}

#ifdef __GLIBC__

void keepFreedMemory() {
  // The first is as far as glibc raises it by itself, from which it drops at times.
  constexpr int kBlockBytes = 32 << 20;
  ::mallopt(M_MMAP_THRESHOLD, kBlockBytes);
  ::mallopt(M_TRIM_THRESHOLD, 4 * kBlockBytes);
  // A second thread has a heap of its own, or one would often wait for the other.
  ::mallopt(M_ARENA_MAX, 2);
}

void extendHeap(std::size_t bytes) {
  // Each below the size that the C library maps by itself, all below that which it gives back.
  constexpr std::size_t kBlockBytes = std::size_t{16} << 20U;
  constexpr std::size_t kMaxBlocks = 7;
  const auto pageBytes = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  // Not a vector: what it takes from the heap would lie behind the blocks.
  std::array<void*, kMaxBlocks> blocks{};
  std::size_t count = 0;
  for (; bytes > 0 && count < kMaxBlocks; bytes -= std::min(bytes, kBlockBytes)) {
    const std::size_t size = std::min(bytes, kBlockBytes);
    void* const block = std::malloc(size);
    if (block == nullptr) break;
    blocks[count++] = block;
    const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(block) % pageBytes;
    ::madvise(static_cast<char*>(block) - before, before + size, MADV_HUGEPAGE);
  }
  // From the last on, so that each joins the free end of the heap.
  while (count > 0) std::free(blocks[--count]);
}

void fetchHeap([[maybe_unused]] std::size_t bytes) {
#ifdef MADV_POPULATE_WRITE
  const auto pageBytes = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  const std::size_t freeBytes = ::mallinfo2().keepcost;
  char* const begin = static_cast<char*>(::sbrk(0)) - freeBytes;
  const std::uintptr_t before = reinterpret_cast<std::uintptr_t>(begin) % pageBytes;
  ::madvise(begin - before, before + std::min(bytes, freeBytes), MADV_POPULATE_WRITE);
#endif
}

#else

void keepFreedMemory() {}
void extendHeap(std::size_t /*bytes*/) {}
void fetchHeap(std::size_t /*bytes*/) {}

#endif

void widenPipe([[maybe_unused]] int descriptor) {
#ifdef __linux__
  ::fcntl(descriptor, F_SETPIPE_SZ, kPipeBytes);
#endif
}

bool isAbandoned(int descriptor) {
  pollfd end{descriptor, 0, 0};
  return ::poll(&end, 1, 0) > 0 && (end.revents & (POLLERR | POLLHUP)) != 0;
}

unsigned terminalWidth(int descriptor) {
  if (::isatty(descriptor) == 0) return 0;
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
  return size.ws_col;
}

}  // namespace host
