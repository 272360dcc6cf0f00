#include "lsp/source_reading.h"

#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/temp_dir.h"
#include "system/failure.h"

namespace {

using host::lsp::ReadSource;
using host::lsp::SourceReading;

// 2,000 lines of 16 bytes or so: enough for a thread.
std::string functions() {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "function f() {}\n";
  return text;
}

// Reads until the thread is faster once.
std::unique_ptr<ReadSource> readAhead(const std::string& path) {
  for (int attempt = 0; attempt < 1000; ++attempt) {
    SourceReading reading(path, true);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::unique_ptr<ReadSource> source = reading.finish();
    if (!source || source->script) return source;
  }
  return nullptr;
}

TEST(SourceReading, ReadsAScriptAhead) {
  const support::TempDir directory;
  const std::unique_ptr<ReadSource> source = readAhead(directory.write("a.js", functions()));
  ASSERT_TRUE(source);
  EXPECT_EQ(source->text, functions());
  EXPECT_EQ(source->script->lines.count(), 2001);
  EXPECT_EQ(source->script->lines.text(2000), "function f() {}");
}

TEST(SourceReading, ReadsTheTextAloneOtherwise) {
  const support::TempDir directory;
  for (const bool readsAhead : {false, true}) {
    for (const std::string name : {"small.js", "large.css"}) {
      const std::string text = name == "small.js" ? "let a;" : functions();
      const std::unique_ptr<ReadSource> source =
          SourceReading(directory.write(name, text), readsAhead).finish();
      ASSERT_TRUE(source) << name;
      EXPECT_EQ(source->text, text);
      EXPECT_FALSE(source->script);
    }
  }
  const std::unique_ptr<ReadSource> source =
      SourceReading(directory.write("large.js", functions()), false).finish();
  ASSERT_TRUE(source);
  EXPECT_FALSE(source->script);
}

TEST(SourceReading, MayBeGivenUp) {
  const support::TempDir directory;
  const std::string path = directory.write("a.js", functions());
  for (int i = 0; i < 20; ++i) const SourceReading reading(path, true);
  EXPECT_EQ(SourceReading(path, true).finish()->text, functions());
}

TEST(SourceReading, MayFail) {
  const support::TempDir directory;
  EXPECT_FALSE(SourceReading(directory.path("gone.js"), true).finish());
  EXPECT_THROW(SourceReading(directory.path("."), true).finish(), host::Failure);
}

}  // namespace
