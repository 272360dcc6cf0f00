// Compares the reading of a file, which queries its size and reads large blocks, with a plain
// stream.
#include "plugin/source_file.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "reference/plain_run.h"
#include "support/temp_dir.h"

namespace {

void expectPlainReading(const support::TempDir& directory, std::size_t size) {
  std::mt19937 random(static_cast<unsigned>(size));
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; i += 1 + random() % 50) bytes[i] = static_cast<char>(random());
  const std::string path = directory.write("a.js", bytes);
  const std::optional<std::string> text = plugin::readSourceFile(path);
  ASSERT_TRUE(text == reference::readFile(path)) << size;
  ASSERT_TRUE(text == bytes) << size;
  std::filesystem::remove(path);
}

TEST(SourceFilePlainReading, OfManySizes) {
  const support::TempDir directory;
  for (std::size_t size = 0; size <= 300; ++size) expectPlainReading(directory, size);
  for (std::size_t power = 512; power <= 4'194'304; power *= 2)
    for (std::size_t size = power - 2; size <= power + 2; ++size)
      expectPlainReading(directory, size);
}

}  // namespace
