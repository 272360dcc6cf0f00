#include "program_runner.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "child_process.h"

namespace host_test {
namespace {

int temporaryFile() {
  std::string name = "/tmp/quorl-js-test-XXXXXX";
  const int file = checked(::mkstemp(name.data()), "mkstemp");
  ::unlink(name.c_str());
  checked(::fcntl(file, F_SETFD, FD_CLOEXEC), "fcntl");
  return file;
}

std::string readFromStart(int file) {
  checked(static_cast<int>(::lseek(file, 0, SEEK_SET)), "lseek");
  return readToEnd(file);
}

// Both ends of what the program sees as file descriptor 1.
Channel openChannel(StandardOutput kind) {
  Channel channel;
  if (kind == StandardOutput::kFile) {
    channel.programEnd = temporaryFile();
    channel.ourEnd = checked(::fcntl(channel.programEnd, F_DUPFD_CLOEXEC, 0), "fcntl");
  } else if (kind == StandardOutput::kFullDisk) {
    channel.programEnd = checked(::open("/dev/full", O_WRONLY | O_CLOEXEC), "open /dev/full");
  } else if (kind != StandardOutput::kClosed) {
    channel = makePipe();
    if (kind == StandardOutput::kNonBlockingPipe) {
      checked(::fcntl(channel.programEnd, F_SETFL, O_NONBLOCK), "fcntl");
    } else if (kind == StandardOutput::kAbandonedPipe) {
      ::close(channel.ourEnd);
      channel.ourEnd = kNoDescriptor;
    }
  }
  return channel;
}

std::string shown(const std::string& text) {
  std::string result;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '\n') {
      result += "\\n\n    ";
    } else if (code < 0x20 || code >= 0x7f) {
      std::array<char, 5> escape;
      std::snprintf(escape.data(), escape.size(), "\\x%02x", code);
      result += escape.data();
    } else {
      result += byte;
    }
  }
  return result;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << "status " << outcome.status << "\n  standard output:\n    " << shown(outcome.out)
                << "\n  standard error:\n    " << shown(outcome.err);
}

testing::AssertionResult isOutcome(const Outcome& expected, const Outcome& found) {
  if (found == expected) return testing::AssertionSuccess();
  const auto [place, other] =
      std::mismatch(expected.out.begin(), expected.out.end(), found.out.begin(), found.out.end());
  const auto same = static_cast<std::size_t>(place - expected.out.begin());
  constexpr std::size_t kBefore = 40;
  constexpr std::size_t kShown = 120;
  const auto cut = [&](const Outcome& outcome) {
    const std::size_t start = same - std::min(same, kBefore);
    return Outcome{outcome.status, outcome.out.substr(start, kShown), outcome.err};
  };
  return testing::AssertionFailure()
         << "standard output is the same up to byte " << same << " of " << expected.out.size()
         << "; shown from there, with some bytes before\nexpected " << cut(expected) << "\nfound ("
         << found.out.size() << " bytes) " << cut(found);
}

Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   StandardOutput standardOutput) {
  const ProgramWords words(program, arguments);
  const Channel out = openChannel(standardOutput);
  const int err = temporaryFile();
  const pid_t child = checked(::fork(), "fork");
  if (child == 0) becomeProgram(words.argv(), out.programEnd, err);
  if (out.programEnd != kNoDescriptor) ::close(out.programEnd);

  Outcome outcome;
  if (standardOutput == StandardOutput::kBrokenOffPipe) {
    outcome.out = readSome(out.ourEnd);
    ::close(out.ourEnd);
  } else if (standardOutput != StandardOutput::kFile && out.ourEnd != kNoDescriptor) {
    outcome.out = readToEnd(out.ourEnd);
  }
  outcome.status = waitFor(child);
  if (standardOutput == StandardOutput::kFile) outcome.out = readFromStart(out.ourEnd);
  outcome.err = readFromStart(err);
  return outcome;
}

}  // namespace host_test
