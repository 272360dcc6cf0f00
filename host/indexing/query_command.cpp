// "quorl-js query".

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "cli/run_options.h"
#include "cli/suggestion.h"
#include "cli/value_parsers.h"
#include "formats/item_lines.h"
#include "index/index_reader.h"
#include "index/name_pattern.h"
#include "index/schema.h"
#include "index/search.h"
#include "indexing/answer_formats.h"
#include "indexing/commands.h"
#include "run/command_help.h"
#include "run/output.h"
#include "sources/globs.h"
#include "system/failure.h"
#include "system/messages.h"
#include "system/platform.h"
#include "system/text_parts.h"

namespace host {
namespace {

using index::IndexReader;
using index::NameMatch;
using index::Query;
using indexing::Answer;

constexpr int kFound = 0;
constexpr int kNoneFound = 1;
constexpr std::size_t kWriteBytes = std::size_t{64} * 1024;

struct NameOption {
  std::string_view name;
  NameMatch match;
};
constexpr std::array kNameOptions = {
    NameOption{"--name", NameMatch::kExact}, NameOption{"--prefix", NameMatch::kPrefix},
    NameOption{"--contains", NameMatch::kContains}, NameOption{"--regex", NameMatch::kRegex}};

struct QueryOptions {
  Query query;
  std::unique_ptr<index::NamePattern> pattern;
  std::unique_ptr<Globs> globs;
  std::string atPath;  // as given
  std::vector<std::string> indexes;
  std::optional<unsigned> limit;
  bool isCount = false;
  std::string format = "outline";
  FormatSettings settings;
};

void readNameOption(const ArgumentParser& arguments, QueryOptions& options) {
  for (const auto& [name, match] : kNameOptions) {
    if (!arguments.isGiven(name)) continue;
    if (options.query.nameMatch != NameMatch::kAny) {
      throw arguments.failure(std::string(name) +
                              ": not with another of --name, --prefix, --contains and --regex");
    }
    options.query.nameMatch = match;
    options.query.name = arguments.valueOf(name).value_or("");
  }
  if (options.query.nameMatch == NameMatch::kRegex) {
    options.pattern = std::make_unique<index::NamePattern>(options.query.name);
    options.query.pattern = options.pattern.get();
  }
}

void readKinds(const ArgumentParser& arguments, QueryOptions& options) {
  if (!arguments.isGiven("--kind")) return;
  const std::vector<std::string_view> words = outline::kindWords();
  outline::KindSet kinds;
  for (const std::string& value : arguments.valuesOf("--kind")) {
    for (const std::string_view word : partsOf(value, ',')) {
      const auto found = std::find(words.begin(), words.end(), word);
      if (found == words.end()) throw arguments.invalidValue("--kind", word);
      kinds.set(static_cast<std::size_t>(found - words.begin()));
    }
  }
  options.query.kinds = kinds;
}

void readPlace(const ArgumentParser& arguments, QueryOptions& options) {
  if (const std::optional<std::string> place = arguments.valueOf("--at")) {
    const std::size_t colon = place->rfind(':');
    unsigned line = 0;
    if (colon == std::string::npos || colon == 0 ||
        !parseNumber(std::string_view(*place).substr(colon + 1), line)) {
      throw Failure("--at: invalid value '" + *place + "'; use FILE:LINE such as src/a.js:12");
    }
    options.atPath = place->substr(0, colon);
    options.query.atLine = line;
  }
  if (arguments.isGiven("--path")) {
    const std::vector<std::string> globs = arguments.valuesOf("--path");
    for (const std::string& glob : globs) {
      if (!Globs::isUsable(glob)) throw arguments.invalidValue("--path", glob);
    }
    options.globs = std::make_unique<Globs>(globs);
    options.query.paths = options.globs.get();
  }
  options.query.inside = arguments.valueOf("--inside");
  options.query.text = arguments.valueOf("--text");
}

QueryOptions readOptions(const ArgumentParser& arguments) {
  QueryOptions options;
  options.indexes = arguments.operands();
  if (options.indexes.empty()) throw arguments.failure("no INDEX given");
  readNameOption(arguments, options);
  readKinds(arguments, options);
  readPlace(arguments, options);
  if (const std::optional<std::string> limit = arguments.valueOf("--limit")) {
    unsigned number = 0;
    if (!parseNumber(*limit, number)) throw arguments.invalidValue("--limit", *limit);
    options.limit = number;
  }
  options.isCount = arguments.isGiven("--count");
  options.format = arguments.valueOf("--format").value_or(options.format);
  if (!indexing::makeAnswerFormat(options.format, options.settings)) {
    throw arguments.invalidValue("--format", options.format);
  }
  options.settings.color = isColorWanted(readColor(arguments));
  options.settings.width = terminalWidth(STDOUT_FILENO);
  options.settings.escapeControlBytes = options.settings.width != 0;
  return options;
}

// What an index may call the file: as given, or seen from the folder that its paths start from.
std::vector<std::string> namesInIndex(const std::string& path, const IndexReader& known) {
  namespace fs = std::filesystem;
  const std::string plain = fs::path(path).lexically_normal().string();
  std::vector<std::string> names = {path, plain, "./" + plain};
  std::error_code error;
  const fs::path here = fs::current_path(error);
  const std::vector<std::string> folder = known.meta("folder");
  if (error || folder.empty()) return names;
  const fs::path absolute = (here / path).lexically_normal();
  const std::string relative = absolute.lexically_relative(folder.front()).string();
  names.insert(names.end(), {relative, "./" + relative, absolute.string()});
  return names;
}

// An index with what it has found.
struct Source {
  explicit Source(const std::string& path) : reader(path) {}

  const std::string& pathOf(std::int64_t file) {
    const auto [entry, isNew] = paths.try_emplace(file);
    if (isNew) entry->second = reader.pathOf(file);
    return entry->second;
  }

  IndexReader reader;
  std::unordered_map<std::int64_t, std::string> paths;
};

struct Hit {
  const std::string* path;
  std::size_t source;
  index::Match match;
};

bool isBefore(const Hit& a, const Hit& b) {
  if (a.match.isExact != b.match.isExact) return a.match.isExact;
  if (a.path != b.path) {
    if (const int order = a.path->compare(*b.path); order != 0) return order < 0;
  }
  if (a.source != b.source) return a.source < b.source;
  return a.match.item < b.match.item;
}

class QueryRun {
 public:
  explicit QueryRun(QueryOptions options) : options_(std::move(options)) {}

  int run() {
    // All are opened first: nothing is to be printed if one of them is no index.
    for (const std::string& path : options_.indexes) {
      sources_.push_back(std::make_unique<Source>(path));
    }
    for (std::size_t number = 0; number < sources_.size(); ++number) search(number);
    const std::size_t count =
        std::min<std::size_t>(hits_.size(), options_.limit.value_or(UINT_MAX));
    Output output;
    if (options_.isCount) {
      output.write(std::to_string(count) + "\n");
    } else {
      // Of those behind the limit the order does not matter.
      std::partial_sort(hits_.begin(), hits_.begin() + static_cast<std::ptrdiff_t>(count),
                        hits_.end(), isBefore);
      write(count, output);
    }
    output.close();
    return hits_.empty() ? kNoneFound : kFound;
  }

 private:
  void search(std::size_t number) {
    Source& source = *sources_[number];
    if (options_.query.atLine) {
      options_.query.atPaths = namesInIndex(options_.atPath, source.reader);
    }
    for (const index::Match& match : index::Search(source.reader, options_.query).run()) {
      hits_.push_back({&source.pathOf(index::fileOf(match.item)), number, match});
    }
  }

  void write(std::size_t count, Output& output) {
    if (count == 0 && options_.format != "json") return;
    const auto format = indexing::makeAnswerFormat(options_.format, options_.settings);
    std::string text;
    format->begin(text);
    std::size_t level = 0;
    for (std::size_t number = 0; number < count; ++number) {
      const Hit& hit = hits_[number];
      const bool isDeeper = options_.query.atLine && number > 0 &&
                            hits_[number - 1].source == hit.source &&
                            *hits_[number - 1].path == *hit.path;
      level = isDeeper ? level + 1 : 0;
      format->add(answerOf(hit, level), text);
      if (text.size() < kWriteBytes) continue;
      output.write(text);
      text.clear();
    }
    format->end(text);
    output.write(text);
  }

  Answer answerOf(const Hit& hit, std::size_t level) {
    IndexReader& reader = sources_[hit.source]->reader;
    Answer answer;
    answer.path = *hit.path;
    answer.level = level;
    answer.found = reader.item(hit.match.item);
    if (options_.format == "outline" || options_.format == "vimgrep") return answer;
    for (auto outer = reader.parentOf(hit.match.item); outer; outer = reader.parentOf(*outer)) {
      outline::Item item = reader.item(*outer).item;
      if (!answer.around && !item.name.empty()) answer.around = item;
      if (!isTag(item)) continue;
      answer.tag = std::move(item);
      break;
    }
    return answer;
  }

  QueryOptions options_;
  std::vector<std::unique_ptr<Source>> sources_;
  std::vector<Hit> hits_;
};

}  // namespace

int runQuery(int argc, const char* const* argv) {
  const ArgumentParser arguments(kQuery, argc, argv);
  if (arguments.isHelpWanted()) return printHelp(kQuery);
  return QueryRun(readOptions(arguments)).run();
}

}  // namespace host
