// The defines of a run, which a host gives as text with a name a line: a whole call of ParseJS held
// against the plain reading, and the same names as those that conditions know. The first byte picks
// the name of the file. The defines follow, up to a NUL byte as in C; all behind it is the file.
#include "defines.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "answer_check.h"
#include "cleaner/cleaner.h"
#include "harness.h"
#include "plugin/exported_data.h"
#include "plugin/plugin_api.h"
#include "reference/plain_cleaner.h"
#include "reference/plain_run.h"
#include "run_nodes.h"
#include "support/temp_dir.h"
#include "targets.h"

namespace fuzz {
namespace {

// Mentions names in conditions, for defines that come without a file.
constexpr std::string_view kText =
    "#ifdef A\nlet a = 1;\n#elif B\n#ifndef C\nfunction f(c) {\n#endif\n}\n#else\n#if (B)\n"
    "import d from 'd';\n#endif\n#endif\nlet e;\n";

// What a call leaves besides its nodes.
struct Call {
  std::string answer;
  Printed printed;
  std::string leftInChunk;
  std::int32_t nextId = 0;
  std::int32_t count = 0;
  bool operator==(const Call&) const = default;
};

Call callWith(const std::string& path, const char* defines) {
  Call call;
  call.printed = printedBy([&] {
    const char* const answer = ParseJS(path.c_str(), defines);
    call.answer = answer == nullptr ? "(null)" : answer;
  });
  call.leftInChunk = chunk;
  call.nextId = currentIndex;
  call.count = objectCount;
  return call;
}

Call plainCallWith(const std::string& path, const std::string& text, const std::string& defines) {
  Call call;
  const reference::Run run = reference::parseJS(path, text, defines, call.leftInChunk);
  call.answer = run.answer;
  call.printed = {run.printed, warningsOf(run.strayTags)};
  call.nextId = currentIndex;
  call.count = objectCount;
  return call;
}

void testCall(const std::string& name, const std::string& text, const std::string& defines) {
  static const support::TempDir kFolder;
  const std::string path = kFolder.write(name, text);
  const Call call = callWith(path, defines.c_str());
  if (defines.empty()) require(callWith(path, nullptr) == call, "no defines are as empty ones");
  std::filesystem::remove(path);  // to write over it would be far slower
  CleanupJS();

  const Call plain = plainCallWith(path, text, defines);
  require(call.answer == plain.answer, "the answer is that of the rules");
  require(call.printed == plain.printed, "what is printed follows the rules");
  require(call == plain, "the run leaves what the rules say");
  const auto lines = std::count_if(text.begin(), text.end(),
                                   [](char byte) { return byte == '\n' || byte == '\r'; });
  const AnswerCheck check = checkAnswer(call.answer, path, static_cast<int>(lines) + 1);
  require(check.fault.empty(), check.fault);
}

// A condition that knows the names, of which a line may be empty here.
void testNames(const std::string& text, const std::string& defines) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at <= defines.size();) {
    const std::size_t end = std::min(defines.find('\n', at), defines.size());
    names.push_back(defines.substr(at, end - at));
    at = end + 1;
  }
  const reference::Simulated plain = reference::cleanText(text, names, names);
  std::vector<std::string> found = names;
  std::string cleaned;
  const Printed printed = printedBy([&] { cleaned = Cleaner().CleanText(text, names, found); });
  require(cleaned == plain.text, "text goes by the rules");
  require(found == plain.defines, "the names that directives mention");
  require(printed == Printed{plain.report, ""}, "only long directives are reported");
}

}  // namespace

void testDefines(std::string_view input) {
  if (input.empty()) return;
  const std::size_t pick = static_cast<unsigned char>(input.front());
  const std::string_view rest = input.substr(1);
  const std::string defines(rest.substr(0, rest.find('\0')));
  const std::string_view file = rest.substr(std::min(defines.size() + 1, rest.size()));
  const std::string text(file.empty() ? kText : file);
  testCall(std::string(kDefinesNames[pick % kDefinesNames.size()]), text, defines);
  testNames(text, defines);
}

}  // namespace fuzz
