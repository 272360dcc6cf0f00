// Prints what every whole-file case answers and writes: for each case, in the order of their names,
// a line with its name, the diagnostic lines and the answer. Whoever runs it compares.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <type_traits>

#include "plugin/plugin_api.h"
#include "whole_file/case_files.h"

// The machine that this is built for is the one that was asked for.
#ifdef QUORL_POINTER_BITS
static_assert(8 * sizeof(void*) == QUORL_POINTER_BITS);
static_assert(std::is_signed_v<char> == QUORL_CHAR_IS_SIGNED);
#endif

int main() {
  try {
    for (const whole_file::CaseFile& file : whole_file::loadCases()) {
      std::filesystem::current_path(file.folder);
      std::printf("%s\n", file.name.c_str());
      const char* const answer =
          ParseJS(file.input.c_str(), file.defines ? file.defines->c_str() : nullptr);
      if (answer == nullptr) throw std::runtime_error("no memory in " + file.name);
      std::fputs(answer, stdout);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "case_printer: %s\n", error.what());
    return 1;
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
