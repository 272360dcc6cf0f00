// When to try again to start a worker: the system may be short of processes or memory for a moment.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>

#include "workers/awake_clock.h"

namespace host {

class StartRetry {
 public:
  bool isDue(AwakeClock::Time now) const { return now >= next_; }

  // Whether the last attempt failed.
  bool isPending() const { return failures_ != 0; }

  // Whether so many attempts in a row failed that another is not worth waiting for.
  bool isExhausted() const { return failures_ >= kAttempts; }

  void noteFailure(AwakeClock::Time now) {
    next_ = now + kPauses[failures_ < kPauses.size() ? failures_ : kPauses.size() - 1];
    ++failures_;
  }

  void noteSuccess() { *this = {}; }

 private:
  static constexpr std::size_t kAttempts = 5;
  static constexpr std::array<std::chrono::milliseconds, kAttempts - 1> kPauses = {
      std::chrono::milliseconds(10), std::chrono::milliseconds(50), std::chrono::milliseconds(200),
      std::chrono::milliseconds(1000)};

  std::size_t failures_ = 0;
  AwakeClock::Time next_{0};
};

}  // namespace host
