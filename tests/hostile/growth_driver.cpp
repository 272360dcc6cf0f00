// Parses one hostile text once, for a counter of instructions to watch from outside.
//
//   growth_driver --list                 prints the names of the texts
//   growth_driver NAME BYTES             makes the text, writes it to a file and parses that
//   growth_driver NAME BYTES --baseline  does the same, but parses an empty line instead
//   growth_driver NAME BYTES --outline   parses the text and makes its outline
//
// The baseline takes what a program and a run cost whatever the text is. That of an outline is the
// parsing of its text.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

#include "hostile/generators.h"
#include "outline/outline.h"
#include "plugin/plugin_api.h"
#include "support/redirected.h"
#include "support/temp_dir.h"

namespace {

const hostile::Generator& generatorNamed(std::string_view name) {
  const auto list = hostile::generators();
  const auto found = std::find_if(list.begin(), list.end(),
                                  [name](const auto& each) { return each.name == name; });
  if (found == list.end()) throw std::runtime_error("no text of the name " + std::string(name));
  return *found;
}

std::size_t parseSize(std::string_view digits) {
  std::size_t size = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, size);
  if (error != std::errc() || stop != end || size == 0) {
    throw std::runtime_error("no number of bytes: " + std::string(digits));
  }
  return size;
}

enum class Work { kText, kEmptyLine, kOutline };

void run(std::string_view name, std::string_view size, Work work) {
  const hostile::Generator& generator = generatorNamed(name);
  const support::TempDir directory;
  // Both are written in either case, so that the counts differ by the parsing alone.
  const std::string extension = generator.extension;
  const std::string source = generator.generate(parseSize(size));
  const std::string text = directory.write("text" + extension, source);
  const std::string emptyLine = directory.write("line" + extension, "\n");
  const std::string& path = work == Work::kEmptyLine ? emptyLine : text;
  const char* answer = nullptr;
  {
    const support::Redirected output(STDOUT_FILENO, "/dev/null", O_WRONLY);
    const support::Redirected errors(STDERR_FILENO, "/dev/null", O_WRONLY);
    answer = ParseJS(path.c_str(), nullptr);
  }
  // An error answer would be a count of something else.
  if (answer == nullptr || !std::string_view(answer).starts_with("[\n")) {
    throw std::runtime_error(answer == nullptr ? "no answer" : answer);
  }
  if (work == Work::kOutline) host::outline::makeOutline(source, answer);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 2 && std::string_view(argv[1]) == "--list") {
      for (const hostile::Generator& each : hostile::generators()) std::puts(each.name);
    } else if (argc == 3) {
      run(argv[1], argv[2], Work::kText);
    } else if (argc == 4 && std::string_view(argv[3]) == "--baseline") {
      run(argv[1], argv[2], Work::kEmptyLine);
    } else if (argc == 4 && std::string_view(argv[3]) == "--outline") {
      run(argv[1], argv[2], Work::kOutline);
    } else {
      std::fputs("usage: growth_driver --list | NAME BYTES [--baseline | --outline]\n", stderr);
      return 2;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "growth_driver: %s\n", error.what());
    return 1;
  }
  return 0;
}
