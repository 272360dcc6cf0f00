// Time as the parent of workers measures it for their deadlines.
#pragma once

#include <algorithm>
#include <chrono>

namespace host {

// A worker ends by its own timer at its time limit. So much later its parent kills it: time enough
// for the longest steps of a few suspensions.
inline constexpr std::chrono::seconds kTimeGrace{2};

// Counts the time between calls of now, but of each gap no more than kLongestStep: in a longer one
// the parent was suspended, perhaps with its workers, or waited for the reader of its output. Both
// make a deadline late, never early. To be read at least that often.
class AwakeClock {
 public:
  using Time = std::chrono::microseconds;  // since the clock was made

  static constexpr std::chrono::milliseconds kLongestStep{600};

  Time now() {
    const auto read = std::chrono::steady_clock::now();
    const auto step = std::chrono::duration_cast<Time>(read - lastRead_);
    lastRead_ = read;
    time_ += std::min<Time>(step, kLongestStep);
    return time_;
  }

 private:
  std::chrono::steady_clock::time_point lastRead_ = std::chrono::steady_clock::now();
  Time time_{0};
};

}  // namespace host
