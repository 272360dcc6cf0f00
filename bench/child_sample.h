// One measurement in a process of its own. A run's tree stays allocated for the life of the
// process, so that runs in one process would pile up memory and find it in ever other states. Here
// each one is made in a forked child, which ends with it: it finds fresh memory, as a host's first
// run does, and pays for touching it.
#pragma once

#include <functional>

namespace bench {

struct Sample {
  double wallSeconds = 0;
  double cpuSeconds = 0;   // user and system
  double sourceBytes = 0;  // read
  double recordBytes = 0;  // written
  double nodes = 0;        // that stay allocated
  double peakBytes = 0;    // of resident memory, above what the child began with
};

// What work fills in, in a child whose standard output and standard error lead nowhere. A child
// that fails ends the program.
Sample sampleInChild(const std::function<void(Sample&)>& work);

// Adds the time that work takes.
void addTime(Sample& sample, const std::function<void()>& work);

}  // namespace bench
