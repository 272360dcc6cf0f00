#include "lsp/private_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using host::lsp::PrivateDirectory;

class PrivateDirectories : public testing::Test {
 protected:
  void SetUp() override { ::setenv("TMPDIR", parent_.path("").c_str(), 1); }
  void TearDown() override { ::unsetenv("TMPDIR"); }

  std::vector<fs::path> entries() const {
    return {fs::directory_iterator(parent_.path("")), fs::directory_iterator()};
  }

  static std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static unsigned modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 0777U;
  }

  // A process that makes one, with a file in it, and is killed.
  static void leaveOne() {
    const pid_t child = ::fork();
    if (child == 0) {
      PrivateDirectory directory;
      directory.write("x", "js");
      ::raise(SIGKILL);
    }
    int state = 0;
    ::waitpid(child, &state, 0);
    EXPECT_TRUE(WIFSIGNALED(state));
  }

 private:
  support::TempDir parent_;
};

TEST_F(PrivateDirectories, HoldOneFileForNobodyElse) {
  {
    PrivateDirectory directory;
    const std::string path = directory.write("a\n", "js");
    EXPECT_TRUE(path.ends_with("/text.js"));
    EXPECT_EQ(contents(path), "a\n");
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(fs::path(path).parent_path()), 0700U);
    const std::string other = directory.write("b", "");
    EXPECT_TRUE(other.ends_with("/text"));
    EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(directory.write("c", "../x").ends_with("/text"));
    EXPECT_TRUE(directory.write("c", std::string(33, 'x')).ends_with("/text"));
    directory.removeFile();
    EXPECT_TRUE(fs::is_empty(fs::path(path).parent_path()));
  }
  EXPECT_TRUE(entries().empty());
}

TEST_F(PrivateDirectories, ThatWereLeftGoWithTheNextStart) {
  leaveOne();
  leaveOne();
  ASSERT_EQ(entries().size(), 1U);  // the second removed the first
  const PrivateDirectory inUse;
  ASSERT_EQ(entries().size(), 1U);
  const PrivateDirectory another;
  EXPECT_EQ(entries().size(), 2U);
}

TEST_F(PrivateDirectories, OfOthersStay) {
  const char* const parent = std::getenv("TMPDIR");
  fs::create_directory(fs::path(parent) / "quorl-js-lsp-open");
  fs::permissions(fs::path(parent) / "quorl-js-lsp-open", fs::perms::all);
  std::ofstream(fs::path(parent) / "quorl-js-lsp-file") << "x";
  { const PrivateDirectory directory; }
  EXPECT_EQ(entries().size(), 2U);
}

TEST_F(PrivateDirectories, AreMadeAgainWhenTheyAreGone) {
  PrivateDirectory directory;
  for (const fs::path& path : entries()) fs::remove_all(path);
  EXPECT_EQ(contents(directory.write("a", "js")), "a");
}

}  // namespace
