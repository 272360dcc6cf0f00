// What bounds the time of workers. The module is one that stops where a test wants it to.

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "formats/format.h"
#include "sources/input_list.h"
#include "system/failure.h"
#include "workers/awake_clock.h"
#include "workers/file_limits.h"
#include "workers/plugin_version.h"
#include "workers/start_retry.h"
#include "workers/worker_pool.h"

namespace {

using host::AwakeClock;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(LimitText, IsInTheLargestUnitThatFits) {
  constexpr std::uint64_t kMebi = std::uint64_t{1} << 20U;
  EXPECT_EQ(host::sizeText(0), "0 bytes");
  EXPECT_EQ(host::sizeText(1023), "1023 bytes");
  EXPECT_EQ(host::sizeText(1024), "1K");
  EXPECT_EQ(host::sizeText(1025), "1025 bytes");
  EXPECT_EQ(host::sizeText(256 * kMebi), "256M");
  EXPECT_EQ(host::sizeText(1024 * kMebi), "1G");
  EXPECT_EQ(host::sizeText(1536 * kMebi), "1536M");
  EXPECT_EQ(host::timeText(seconds(60)), "60 s");
  EXPECT_EQ(host::timeText(milliseconds(1500)), "1.5 s");
  EXPECT_EQ(host::timeText(microseconds(10)), "0.00001 s");
}

TEST(AwakeClock, CountsNoMoreThanItsLongestStepOfAPause) {
  AwakeClock clock;
  std::this_thread::sleep_for(AwakeClock::kLongestStep + milliseconds(1));
  EXPECT_EQ(clock.now(), AwakeClock::kLongestStep);
  std::this_thread::sleep_for(milliseconds(1));
  EXPECT_GT(clock.now(), AwakeClock::kLongestStep);
}

TEST(StartRetry, PausesLongerEachTimeAndGivesUpAfterFiveAttempts) {
  host::StartRetry retry;
  AwakeClock::Time now{0};
  EXPECT_TRUE(retry.isDue(now));
  EXPECT_FALSE(retry.isPending());
  for (const int pause : {10, 50, 200, 1000, 1000}) {
    EXPECT_FALSE(retry.isExhausted());
    retry.noteFailure(now);
    EXPECT_TRUE(retry.isPending());
    EXPECT_FALSE(retry.isDue(now + milliseconds(pause) - microseconds(1)));
    now += milliseconds(pause);
    EXPECT_TRUE(retry.isDue(now));
  }
  EXPECT_TRUE(retry.isExhausted());
  retry.noteSuccess();
  EXPECT_FALSE(retry.isExhausted());
  EXPECT_FALSE(retry.isPending());
}

class StoppedWorkers : public testing::Test {
 protected:
  StoppedWorkers() {
    inputs_.all = {{"a", host::InputKind::kFile, "", 0}};
    inputs_.reportCount = 1;
    inputs_.fileCount = 1;
    task_.plugin = ODD_PLUGIN_PATH;
    task_.timeBesidesFiles = seconds(1);
    task_.inputs = &inputs_;
    task_.format = host::findFormat("raw");
    task_.diagnostics = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  }
  StoppedWorkers(const StoppedWorkers&) = delete;
  StoppedWorkers& operator=(const StoppedWorkers&) = delete;
  ~StoppedWorkers() override {
    ::close(task_.diagnostics);
    ::unsetenv("ODD_PLUGIN_STOPS_AT_LOAD");
    ::unsetenv("ODD_PLUGIN_STOPS_AT_END");
  }

  const host::Idle idle_{10, -1, [] {}};
  host::Inputs inputs_;
  host::WorkerTask task_;
};

template <typename Call>
std::string failureOf(Call call) {
  try {
    call();
  } catch (const host::Failure& failure) {
    return failure.what();
  }
  return "none";
}

TEST_F(StoppedWorkers, AreKilledWhileTheyLoadTheModule) {
  ::setenv("ODD_PLUGIN_STOPS_AT_LOAD", "1", 1);
  host::WorkerPool pool(task_, 1, false);
  EXPECT_EQ(failureOf([&] { pool.waitFor(0, idle_); }),
            "cannot load the plug-in: not loaded after 1 s");
  EXPECT_EQ(failureOf([&] { host::askVersion(task_); }),
            "cannot load the plug-in: not loaded after 1 s");
}

TEST_F(StoppedWorkers, AreKilledWhenTheyDoNotEnd) {
  ::setenv("ODD_PLUGIN_STOPS_AT_END", "1", 1);
  host::WorkerPool pool(task_, 1, false);
  EXPECT_EQ(pool.waitFor(0, idle_).text, "[\na|\n]\n");
  EXPECT_TRUE(pool.finish(idle_));
  EXPECT_EQ(host::askVersion(task_).text, "odd plug-in (Address: 0x1)\n");
}

}  // namespace
