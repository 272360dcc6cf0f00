// "quorl-js status".

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "index/index_reader.h"
#include "indexing/commands.h"
#include "indexing/file_changes.h"
#include "indexing/index_build.h"
#include "indexing/recorded_options.h"
#include "run/command_help.h"
#include "run/exit_status.h"
#include "run/output.h"
#include "system/display_text.h"
#include "system/failure.h"
#include "system/text_parts.h"

namespace host {
namespace {

using index::IndexReader;
using index::KnownFile;

constexpr int kChanged = 1;
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::string firstOf(const std::vector<std::string>& values) {
  return values.empty() ? std::string() : values.front();
}

std::string counted(std::int64_t number, const std::string& one) {
  return withCommas(number) + " " + one + (number == 1 ? "" : "s");
}

std::string timeText(std::int64_t nanoseconds) {
  const std::time_t seconds = nanoseconds / kNanoseconds;
  std::tm parts{};
  std::array<char, 64> text{};
  ::gmtime_r(&seconds, &parts);
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts);
  return text.data();
}

// "3 minutes ago".
std::string ageText(std::int64_t nanoseconds) {
  struct Unit {
    std::int64_t seconds;
    const char* name;
  };
  constexpr std::array kUnits = {Unit{86400, "day"}, Unit{3600, "hour"}, Unit{60, "minute"},
                                 Unit{1, "second"}};
  const std::int64_t seconds = nanoseconds / kNanoseconds;
  for (const auto& [length, name] : kUnits) {
    if (seconds >= length) return counted(seconds / length, name) + " ago";
  }
  return "just now";
}

class Report {
 public:
  void add(const std::string& key, const std::string& value) {
    text_.append(key).append(std::max<std::size_t>(kColumns, key.size() + 1) - key.size(), ' ');
    text_.append(onOneLine(value)).append("\n");
  }

  // A file of which something is to be said.
  void addFile(const char* what, const std::string& path) { add(what, path); }

  const std::string& text() const { return text_; }

 private:
  static constexpr std::size_t kColumns = 10;

  std::string text_;
};

void reportContents(const IndexReader& known, const std::vector<KnownFile>& files, Report& report) {
  std::int64_t items = 0;
  std::int64_t bytes = 0;
  std::map<std::string, std::int64_t> statuses;
  for (const KnownFile& file : files) {
    items += file.items;
    bytes += file.size;
    ++statuses[file.status];
  }
  std::string counts = withCommas(static_cast<std::int64_t>(files.size()));
  char before = ' ';
  for (const auto& [status, count] : statuses) {
    counts.append(before == ' ' ? " (" : ", ").append(withCommas(count)).append(" " + status);
    before = ',';
  }
  if (before == ',') counts += ")";
  report.add("files", counts);
  report.add("items", withCommas(items));
  report.add("bytes", withCommas(bytes) + " of source");
  const std::int64_t written = indexing::writtenAt(known);
  report.add("written", timeText(written) + ", " + ageText(indexing::wallClock() - written));
  report.add("tool", firstOf(known.meta("tool")));
  if (const std::string folder = firstOf(known.meta("folder")); !folder.empty()) {
    report.add("folder", folder);
    const std::vector<std::string> arguments = known.meta("argument");
    const std::vector<std::string_view> words(arguments.begin(), arguments.end());
    report.add("options", joined(words, " "));
    report.add("last run", "read " + firstOf(known.meta("read")) + ", kept " +
                               firstOf(known.meta("kept")) + ", removed " +
                               firstOf(known.meta("removed")));
  }
}

// Returns whether there are any.
bool reportChanges(const IndexReader& known, std::vector<KnownFile> files, Report& report) {
  const std::string path = std::filesystem::absolute(known.database().name()).string();
  const indexing::Sources sources = indexing::recordedSources(known);
  const std::string reason = indexing::reasonToReadAll(known, indexing::originOf(sources.options));
  if (!reason.empty()) report.add("outdated", reason);
  const indexing::FileChanges changes = indexing::findChanges(
      {std::move(files), indexing::writtenAt(known)},
      indexing::inputsFor(sources.names, sources.options.walkRules, path), sources.options);
  bool areAny = !reason.empty();
  for (const Input& input : changes.inputs.all) {
    if (input.kind == InputKind::kPassedOver) continue;
    report.addFile(changes.ids.contains(input.path) ? "changed" : "new", input.path);
    areAny = true;
  }
  for (const KnownFile& file : changes.gone) {
    report.addFile("gone", file.path);
    areAny = true;
  }
  return areAny;
}

}  // namespace

int runStatus(int argc, const char* const* argv) {
  const ArgumentParser arguments(kStatus, argc, argv);
  if (arguments.isHelpWanted()) return printHelp(kStatus);
  if (arguments.operands().size() != 1) throw arguments.failure("one INDEX is needed");
  const IndexReader known(arguments.operands().front());
  std::vector<KnownFile> files = known.files();
  Report report;
  reportContents(known, files, report);
  bool hasChanged = false;
  if (known.meta("argument").empty()) {
    report.add("changes", "unknown: the index was built from ndjson, which has no times of files");
  } else {
    hasChanged = reportChanges(known, std::move(files), report);
  }
  Output output;
  output.write(report.text());
  output.close();
  return hasChanged ? kChanged : kSuccess;
}

}  // namespace host
