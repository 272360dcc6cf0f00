// The fuzz targets. Each is a function over arbitrary bytes, from libFuzzer or from the program
// that replays files, and asserts what must hold for any bytes.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace fuzz {

void testScript(std::string_view input);
void testPage(std::string_view input);
void testScanner(std::string_view input);
void testCleaner(std::string_view input);
void testTokeniser(std::string_view input);
void testRecordWriter(std::string_view input);
void testRecordReader(std::string_view input);
void testDefines(std::string_view input);
void testOutline(std::string_view input);
void testLsp(std::string_view input);

struct Target {
  std::string_view name;
  void (*test)(std::string_view input);
};
inline constexpr std::array<Target, 10> kTargets{{{"script", testScript},
                                                  {"page", testPage},
                                                  {"scanner", testScanner},
                                                  {"cleaner", testCleaner},
                                                  {"tokeniser", testTokeniser},
                                                  {"record_writer", testRecordWriter},
                                                  {"record_reader", testRecordReader},
                                                  {"defines", testDefines},
                                                  {"outline", testOutline},
                                                  {"lsp", testLsp}}};

// Returns the target of that name, or null.
constexpr const Target* findTarget(std::string_view name) {
  const auto* const found = std::find_if(kTargets.begin(), kTargets.end(),
                                         [name](const Target& each) { return each.name == name; });
  return found == kTargets.end() ? nullptr : found;
}

// Runs one test and destroys the nodes that it allocated.
void run(const Target& target, std::string_view input);

}  // namespace fuzz
