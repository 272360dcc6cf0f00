#include "workers/time_limit.h"

#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

// A signal that comes this late waited while the process was suspended, as by Ctrl-Z.
constexpr std::chrono::milliseconds kLate{250};

// What the handler reads.
std::atomic<std::int64_t> timeLimit = 0;  // in microseconds
std::atomic<std::int64_t> expiry = 0;     // in the clock's units
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

void startTimer(std::chrono::microseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  itimerval timer{};
  timer.it_value.tv_sec = static_cast<decltype(timer.it_value.tv_sec)>(seconds.count());
  timer.it_value.tv_usec = static_cast<decltype(timer.it_value.tv_usec)>((time - seconds).count());
  expiry = (Clock::now() + time).time_since_epoch().count();
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

// How long the process was suspended is not known, so it gets its whole time again. Only calls that
// are safe in a handler.
void endUnlessLate(int number) {
  const int error = errno;
  if (Clock::now().time_since_epoch() - Clock::duration(expiry) > kLate) {
    startTimer(std::chrono::microseconds(timeLimit));
  } else {
    std::signal(number, SIG_DFL);
    std::raise(number);  // is delivered when this function returns
  }
  errno = error;
}

}  // namespace

void limitTime(std::chrono::microseconds time) {
  if (time.count() != 0) {
    timeLimit = time.count();
    struct sigaction action {};
    action.sa_handler = endUnlessLate;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGALRM, &action, nullptr);
  }
  startTimer(time);
}

}  // namespace host
