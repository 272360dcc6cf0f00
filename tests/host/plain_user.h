// Runs of the program by a user whom a directory can keep out, whoever runs the tests.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"

namespace host_test {

// The user who runs the tests, or nobody in root's place.
class PlainUser {
 public:
  // Gives the user what is in the current directory, and that itself.
  PlainUser() {
    if (!isRoot_) return;
    own(".");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) own(entry.path());
  }

  // Why the user cannot run the program with the odd module, say because they lie where only root
  // gets; nothing if the user can.
  std::string whyNot() const {
    const std::string command = R"([ -x "$1" ] && [ -r "$2" ])";
    const Outcome found =
        runWords({"/bin/sh", "-c", command, "sh", QUORL_JS_PATH, ODD_PLUGIN_PATH});
    if (found.status == 0) return {};
    return "nothing keeps root out, and another user cannot run the program: " + found.err;
  }

  Outcome runOdd(const Words& arguments) const {
    Words words = {QUORL_JS_PATH, "--plugin", ODD_PLUGIN_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return runWords(words);
  }

 private:
  static constexpr uid_t kNobody = 65534;

  void own(const std::filesystem::path& path) const {
    EXPECT_EQ(::lchown(path.c_str(), kNobody, kNobody), 0) << path;
  }

  Outcome runWords(Words words) const {
    const std::string nobody = std::to_string(kNobody);
    if (isRoot_) {
      words.insert(words.begin(),
                   {"setpriv", "--reuid=" + nobody, "--regid=" + nobody, "--clear-groups"});
    }
    return runProgram("/usr/bin/env", words);
  }

  const bool isRoot_ = ::geteuid() == 0;
};

}  // namespace host_test
