// The end of a run by SIGINT, SIGQUIT, SIGTERM or SIGHUP. The workers are killed, a half-written
// file is removed, and the program ends by the signal itself, as shells expect; SIGQUIT dumps core.
// A signal that was ignored when the program was started stays ignored.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <string>

namespace host {

void endRunOnSignals();

// Undoes that in a worker, which leaves SIGINT and SIGQUIT, typed at a terminal and sent to all its
// processes, to its parent.
void endWorkerOnSignals();

// While it lives the signals wait: what is noted below must agree with what there is.
class SignalsHeld {
 public:
  SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld();

 private:
  sigset_t before_;
};

void noteWorker(pid_t worker);
void forgetWorker(pid_t worker);

// One at a time. The name is that of a file in the directory, whose descriptor stays open.
void noteTemporaryFile(int directory, const std::string& name);
void forgetTemporaryFile();

// The same for a directory with one file in it, both by their paths.
void noteTemporaryDirectory(const std::string& directory, const std::string& file);
void forgetTemporaryDirectory();

// Ends this process by SIGPIPE, as one ends that does not care where it writes to.
[[noreturn]] void endByBrokenPipe();

// Whether a line that is not to stay is on the terminal behind standard error.
void notePassingLine(bool isThere);

// Takes the line of a terminal away on which the cursor stands.
inline constexpr char kEraseLine[] = "\r\x1b[K";

}  // namespace host
