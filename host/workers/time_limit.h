// The time limit that a worker sets itself. The parent keeps the time as well, and kills: a process
// that is stopped, or waits in the kernel, runs no timer of its own.
#pragma once

#include <chrono>

namespace host {

// After so long SIGALRM kills this process, whatever it is doing. 0 takes the limit back.
void limitTime(std::chrono::microseconds time);

}  // namespace host
