// One measurement in a process of its own. A run's tree stays allocated for the life of the
// process, so runs in one process would pile up memory and each would start in a different state. A
// forked child starts with fresh memory, as a host's first run does, and pays for touching it.
#pragma once

#include <functional>

namespace bench {

struct Sample {
  double wallSeconds = 0;
  double cpuSeconds = 0;   // user and system
  double sourceBytes = 0;  // bytes read
  double recordBytes = 0;  // bytes written
  double nodes = 0;        // nodes that stay allocated
  double peakBytes = 0;    // resident memory above what the child started with
};

// Returns what work fills in, run in a child whose standard output and standard error go nowhere. A
// child that fails ends the program.
Sample sampleInChild(const std::function<void(Sample&)>& work);

// Adds the time that work takes to the sample.
void addTime(Sample& sample, const std::function<void()>& work);

}  // namespace bench
