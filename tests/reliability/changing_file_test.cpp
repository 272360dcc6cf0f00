// A file that somebody else writes while it is parsed. The answer is that to the bytes that the
// reads gave, whatever the file held before and holds by then, or an error text.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "answer_check.h"
#include "reliability/files.h"
#include "reliability/parse.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 3> kNames{"a.js", "a.html", "a.txt"};

// A text of that many bytes that makes few records, so that parsing it often takes little memory.
std::string textOf(std::size_t bytes, std::string_view statement) {
  std::string text = "<p id=\"a\">\n";
  while (text.size() < bytes) {
    text.append(statement).append("\n/* ").append(4'000, '*').append(" */\n");
  }
  text.resize(bytes - 1);
  return text + "\n";
}

// Larger than what is read first of any file, smaller than that, and gone after one look.
const std::array<std::string, 3>& versions() {
  static const std::array<std::string, 3> kVersions{textOf(90'000, "function one(a) { return a; }"),
                                                    textOf(6'000, "let two = 'b';"), "three;\n"};
  return kVersions;
}

class ChangingFile : public testing::Test {
 protected:
  ChangingFile() { fs::current_path(folder_.path(".")); }
  ~ChangingFile() override { fs::current_path(before_); }

  const fs::path before_ = fs::current_path();
  const support::TempDir folder_;
};

// Something that is done to a file in the middle of a run, and the bytes that are read all the same
// if at bytes of the file were read before.
struct Change {
  const char* name;
  void (*apply)(const support::TempDir& folder, const std::string& path);
  std::string (*whatIsRead)(const std::string& old, std::size_t at);
};

constexpr std::string_view kNew = "let written = 'anew';\n";

// All but what has been read is that of the other text, which takes the place of the old one.
std::string splice(const std::string& old, const std::string& other, std::size_t at) {
  return old.substr(0, at) + (at < other.size() ? other.substr(at) : "");
}

std::string longText() { return textOf(200'000, kNew); }

constexpr std::array<Change, 6> kChanges{
    {{"cut to nothing",
      [](const support::TempDir&, const std::string& path) { fs::resize_file(path, 0); },
      [](const std::string& old, std::size_t at) { return old.substr(0, at); }},
     {"cut to a tenth",
      [](const support::TempDir&, const std::string& path) {
        fs::resize_file(path, fs::file_size(path) / 10);
      },
      [](const std::string& old, std::size_t at) {
        return old.substr(0, std::max(at, old.size() / 10));
      }},
     {"rewritten shorter",
      [](const support::TempDir& folder, const std::string& path) { folder.write(path, kNew); },
      [](const std::string& old, std::size_t at) { return splice(old, std::string(kNew), at); }},
     {"rewritten longer",
      [](const support::TempDir& folder, const std::string& path) {
        folder.write(path, longText());
      },
      [](const std::string& old, std::size_t at) { return splice(old, longText(), at); }},
     {"replaced",
      [](const support::TempDir& folder, const std::string& path) {
        fs::rename(folder.write("other", kNew), path);
      },
      [](const std::string& old, std::size_t) { return old; }},
     {"removed", [](const support::TempDir&, const std::string& path) { fs::remove(path); },
      [](const std::string& old, std::size_t) { return old; }}}};

constexpr std::size_t kBytesARead = 1'000;

struct ChangedRun {
  std::string answer;
  std::size_t bytesBefore = 0;  // the change, of the file
  std::size_t reads = 0;
};

// Parses the file, which is changed right before the read of that number.
ChangedRun parseChanging(const support::TempDir& folder, const std::string& path,
                         const Change& change, std::size_t number) {
  ChangedRun run;
  const auto arm = [&] {
    reliability::files = {};
    reliability::files.isWatched = true;
    reliability::files.read = [&](std::size_t each, std::size_t bytes) {
      if (each == number) change.apply(folder, path);
      const std::size_t allowed = std::min(kBytesARead, bytes);
      if (each < number) run.bytesBefore += allowed;
      return static_cast<ssize_t>(allowed);
    };
  };
  const auto disarm = [&] {
    run.reads = reliability::files.reads;
    reliability::files = {};
  };
  run.answer = reliability::parse(path, nullptr, arm, disarm).value_or("(null)");
  return run;
}

TEST_F(ChangingFile, IsReadUpToTheChangeAndFromThereOnAsItIsThen) {
  const std::string& old = versions()[0];
  std::size_t changes = 0;
  for (const Change& change : kChanges) {
    for (const char* const path : kNames) {
      for (std::size_t number = 0; number < old.size() / kBytesARead; number += 7) {
        SCOPED_TRACE(testing::Message() << path << " " << change.name << " at read " << number);
        folder_.write(path, old);
        const ChangedRun run = parseChanging(folder_, path, change, number);
        ASSERT_GT(run.reads, number);
        ASSERT_LE(run.bytesBefore, number * kBytesARead);
        folder_.write(path, change.whatIsRead(old, run.bytesBefore));
        ASSERT_EQ(run.answer, reliability::parse(path));
        ++changes;
      }
    }
  }
  EXPECT_EQ(changes, kChanges.size() * kNames.size() * 13);
}

// Counts what is done to the file, in memory that two processes share.
class SharedCount {
 public:
  SharedCount() {
    void* const memory = mmap(nullptr, sizeof(std::atomic<std::size_t>), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    count_ = new (memory) std::atomic<std::size_t>(0);
  }
  SharedCount(const SharedCount&) = delete;
  SharedCount& operator=(const SharedCount&) = delete;
  ~SharedCount() { munmap(count_, sizeof(*count_)); }

  std::atomic<std::size_t>& operator*() const { return *count_; }

 private:
  std::atomic<std::size_t>* count_;
};

// What the other process does, in turn, as long as it lives.
void changeOnce(const support::TempDir& folder, const char* path, std::size_t number) {
  const std::string& version = versions()[number % versions().size()];
  switch (number / versions().size() % 5) {
    case 0:  // in place: it is empty for a moment
      folder.write(path, version);
      return;
    case 1:
      fs::rename(folder.write("other", version), path);
      return;
    case 2:
      fs::resize_file(path, fs::file_size(path) / 2);
      return;
    case 3: {  // in place, a bit at a time, and shorter only at the end
      std::FILE* const file = std::fopen(path, "r+");
      std::setvbuf(file, nullptr, _IOFBF, 512);
      std::fwrite(version.data(), 1, version.size(), file);
      std::fclose(file);
      fs::resize_file(path, version.size());
      return;
    }
    default:
      fs::remove(path);
      folder.write(path, version);
  }
}

class Changer {
 public:
  Changer(const support::TempDir& folder, const char* path) {
    child_ = fork();
    if (child_ != 0) return;
    try {
      for (std::size_t i = 0;; ++i) {
        changeOnce(folder, path, i);
        ++*count_;
      }
    } catch (...) {
      _exit(1);
    }
  }
  Changer(const Changer&) = delete;
  Changer& operator=(const Changer&) = delete;
  ~Changer() {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }

  // Waits until the file was changed again; false if nobody is left to do it.
  bool waitForChange() {
    const std::size_t before = *count_;
    while (*count_ == before) {
      siginfo_t ended{};
      waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOHANG | WNOWAIT);
      if (child_ < 0 || ended.si_pid != 0) return false;
      sched_yield();
    }
    return true;
  }

 private:
  SharedCount count_;
  pid_t child_ = -1;
};

TEST_F(ChangingFile, ByAnotherProcessGivesRecordsOrAnErrorText) {
  constexpr std::size_t kRounds = 1'000;
  for (const char* const path : kNames) {
    SCOPED_TRACE(path);
    folder_.write(path, versions()[0]);
    const std::string noFile = std::string("[{\"error\": \"Could not open file: ") + path + "\"}]";
    const std::string empty = std::string("[{\"error\": \"File is empty: ") + path + "\"}]";
    const int lastLine = static_cast<int>(versions()[0].size()) + 1;
    std::size_t records = 0;
    Changer changer(folder_, path);
    for (std::size_t round = 0; round < kRounds; ++round) {
      ASSERT_TRUE(changer.waitForChange());
      const std::string answer = reliability::parse(path).value_or("(null)");
      if (answer == noFile || answer == empty) continue;
      ASSERT_EQ(fuzz::checkAnswer(answer, path, lastLine).fault, "") << answer;
      ++records;
    }
    EXPECT_GT(records, 0U);
    std::printf("%s: %zu rounds, %zu of them with records\n", path, kRounds, records);
  }
}

}  // namespace
