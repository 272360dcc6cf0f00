// The shards are read twice: first to learn where each file's lines stand and that nothing is
// missing, then to write them. What is kept between is a few dozen bytes a file, whatever its size.
#include "merge/merge.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "merge/line_reader.h"
#include "merge/shard.h"
#include "run/command_help.h"
#include "run/exit_status.h"
#include "run/output.h"
#include "sources/name_list.h"
#include "system/failure.h"
#include "system/file_paths.h"

namespace host {
namespace {

constexpr std::size_t kWriteBytes = std::size_t{256} * 1024;
constexpr std::size_t kNoPlace = static_cast<std::size_t>(-1);

struct MergeOptions {
  bool help = false;
  std::vector<std::string> shards;
  std::optional<std::string> list;
  NameEnd listNameEnd = NameEnd::kLineFeed;
  std::optional<std::string> outputFile;
};

void checkIsNotList(const std::string& file, const std::string& list) {
  if (isSameFile(file, list == "-" ? "/dev/stdin" : list)) {
    throw Failure(file + ": is the list and the output");
  }
}

void checkIsNoShard(const std::string& file, const std::vector<std::string>& shards) {
  for (const std::string& shard : shards) {
    std::error_code unseen;
    if (std::filesystem::equivalent(file, shard, unseen)) {
      throw Failure(file + ": is also a SHARD");
    }
  }
}

MergeOptions readOptions(int argc, const char* const* argv) {
  const ArgumentParser arguments(kMerge, argc, argv);
  MergeOptions options;
  options.help = arguments.isHelpWanted();
  if (options.help) return options;
  options.shards = arguments.operands();
  options.list = arguments.valueOf("--files-from");
  if (arguments.isGiven("--null")) options.listNameEnd = NameEnd::kNul;
  options.outputFile = outputFileOf(arguments);
  if (options.shards.empty()) throw arguments.failure("no SHARD given");
  if (options.outputFile) {
    checkIsNoShard(*options.outputFile, options.shards);
    if (options.list) checkIsNotList(*options.outputFile, *options.list);
  }
  return options;
}

// Where the lines of a file stand. One without bytes is still to be found.
struct Place {
  std::size_t shard = 0;
  std::uint64_t offset = 0;
  std::uint64_t bytes = 0;
};

// The names that are asked for, each with the first of its places that is still to be filled.
class NameOrder {
 public:
  explicit NameOrder(std::vector<std::string> names)
      : names_(std::move(names)), placeAfter_(names_.size(), kNoPlace) {
    firstPlaces_.reserve(names_.size());
    for (std::size_t place = names_.size(); place-- > 0;) {
      const auto [entry, isNew] = firstPlaces_.try_emplace(names_[place], place);
      if (!isNew) placeAfter_[place] = std::exchange(entry->second, place);
    }
  }

  // The place of a file that is called that; kNoPlace when there is none, or none any more.
  std::size_t take(std::string_view name) {
    const auto entry = firstPlaces_.find(name);
    if (entry == firstPlaces_.end() || entry->second == kNoPlace) return kNoPlace;
    return std::exchange(entry->second, placeAfter_[entry->second]);
  }

  const std::vector<std::string>& names() const { return names_; }

 private:
  std::vector<std::string> names_;
  std::vector<std::size_t> placeAfter_;  // the next place of the same name
  std::unordered_map<std::string_view, std::size_t> firstPlaces_;
};

struct Plan {
  std::vector<Place> places;  // in the order of the output
  std::string version;
  bool allAreGood = true;
};

// Follows a message on a name that is missing on one side.
std::string lineEndHint(const NameOrder& order) {
  const bool hasLineEnds =
      std::any_of(order.names().begin(), order.names().end(),
                  [](const std::string& name) { return name.ends_with('\r'); });
  return hasLineEnds ? std::string("; lines of the list ") + kLineEndHint : "";
}

void checkAllAreThere(const Plan& plan, const NameOrder& order, const std::string& list) {
  std::size_t missing = 0;
  std::size_t first = 0;
  for (std::size_t place = plan.places.size(); place-- > 0;) {
    if (plan.places[place].bytes > 0) continue;
    ++missing;
    first = place;
  }
  if (missing == 0) return;
  throw Failure(std::to_string(missing) + (missing == 1 ? " file" : " files") + " of list " + list +
                (missing == 1 ? " is" : " are") + " in no SHARD; the first is " +
                order.names()[first] + lineEndHint(order));
}

Plan readShards(const MergeOptions& options) {
  std::optional<NameOrder> order;
  if (options.list) order.emplace(readNameList(*options.list, options.listNameEnd));
  Plan plan;
  if (order) plan.places.resize(order->names().size());
  for (std::size_t shard = 0; shard < options.shards.size(); ++shard) {
    LineReader lines(options.shards[shard]);
    readShard(lines, plan.version, [&](const ShardFile& file) {
      plan.allAreGood = plan.allAreGood && file.isGood;
      const Place found{shard, file.offset, file.bytes};
      if (!order) {
        plan.places.push_back(found);
        return;
      }
      const std::size_t place = order->take(file.path);
      if (place == kNoPlace) {
        throw Failure(lines.path() + ": not in list " + *options.list +
                      ", or not as often as in the SHARDs: " + file.path + lineEndHint(*order));
      }
      plan.places[place] = found;
    });
    // With a list, checkAllAreThere reports missing files by name.
    if (!order && lines.offset() == 0) throw Failure(lines.path() + ": empty, not even a header");
  }
  if (order) checkAllAreThere(plan, *order, *options.list);
  if (plan.version.empty()) plan.version = QUORL_VERSION;  // an empty list, and no header
  return plan;
}

// The output in large writes.
class MergedOutput {
 public:
  explicit MergedOutput(Output& output) : output_(output) {}

  std::string& buffer() { return buffer_; }

  void flushIfLarge() {
    if (buffer_.size() >= kWriteBytes) flush();
  }

  void flush() {
    output_.write(buffer_);
    buffer_.clear();
  }

 private:
  Output& output_;
  std::string buffer_;
};

// The line with another number behind "file":.
void appendRenumbered(std::string& out, std::string_view line, std::size_t number,
                      const std::string& shard) {
  for (const std::string_view start : {kRecordLineStart, kFileLineStart}) {
    if (!line.starts_with(start)) continue;
    out += start;
    appendNumber(out, number);
    out.append(line.substr(std::min(line.find(',', start.size()), line.size()))).append("\n");
    return;
  }
  throw Failure(shard + ": changed while it was read");
}

void writePlan(const Plan& plan, const std::vector<std::string>& shards, Output& standardOutput) {
  MergedOutput output(standardOutput);
  appendNdjsonHeader(output.buffer(), plan.version, plan.places.size());
  std::optional<LineReader> lines;  // one shard at a time is open: there may be thousands
  std::size_t opened = kNoPlace;
  for (std::size_t number = 0; number < plan.places.size(); ++number) {
    const Place& place = plan.places[number];
    if (place.shard != opened) {
      lines.emplace(shards[place.shard]);
      opened = place.shard;
    }
    lines->seek(place.offset, place.bytes);
    std::string_view line;
    while (lines->next(line)) {
      appendRenumbered(output.buffer(), line, number, lines->path());
      output.flushIfLarge();
    }
    const bool isWhole = lines->offset() == place.offset + place.bytes;
    if (!isWhole) throw Failure(lines->path() + ": changed while it was read");
  }
  output.flush();
}

}  // namespace

int runMerge(int argc, const char* const* argv) {
  const MergeOptions options = readOptions(argc, argv);
  if (options.help) return printHelp(kMerge);
  Output output(options.outputFile);
  const Plan plan = readShards(options);
  output.begin();
  writePlan(plan, options.shards, output);
  output.close();
  return plan.allAreGood ? kSuccess : kFileFailed;
}

}  // namespace host
