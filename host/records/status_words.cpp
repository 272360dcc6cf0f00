#include "records/status_words.h"

#include <array>
#include <cstddef>

namespace host {
namespace {

constexpr std::array<std::string_view, 7> kWords = {
    kAnsweredWord, kEmptyWord, "failed", "crashed", "timed-out", "out-of-memory", "too-large"};
static_assert(kWords.size() == static_cast<std::size_t>(FileStatus::kTooLarge) + 1);

}  // namespace

std::string_view statusWord(FileStatus status) { return kWords[static_cast<std::size_t>(status)]; }

}  // namespace host
