// "quorl-js index".

#include <optional>
#include <string>
#include <vector>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "index/index_file.h"
#include "index/index_reader.h"
#include "indexing/commands.h"
#include "indexing/index_build.h"
#include "indexing/recorded_options.h"
#include "run/command_help.h"
#include "run/exit_status.h"
#include "system/failure.h"
#include "system/messages.h"

namespace host {
namespace {

using index::IndexFile;
using index::IndexReader;
using indexing::Sources;

// The index that is there, if it can be built upon.
struct Known {
  std::optional<IndexReader> reader;
  bool isOlder = false;
};

void openKnown(const IndexFile& file, Known& known) {
  if (!file.exists()) return;
  known.isOlder = index::isOlderIndex(file.path(), file.name());
  if (!known.isOlder) known.reader.emplace(file.path(), file.name());
}

bool update(IndexFile& file, const ArgumentParser& arguments) {
  Known known;
  openKnown(file, known);
  const bool isFirst = arguments.operands().size() > 1 || arguments.isGiven("--files-from");
  if (!isFirst) {
    if (!known.reader)
      throw arguments.failure("no FILE given, and no " + file.name() + " to bring up to date");
    indexing::checkNoneIsRecorded(arguments);
  }
  const Sources sources = isFirst ? indexing::sourcesOf(arguments)
                                  : indexing::recordedSources(*known.reader, arguments);
  const indexing::Origin origin = indexing::originOf(sources.options);
  indexing::KnownFiles files;
  std::string reason = known.isOlder ? "of an older format" : "";
  if (known.reader) {
    reason = indexing::reasonToReadAll(*known.reader, origin);
    // Paths that start from another folder are those of other files.
    const std::vector<std::string> folder = known.reader->meta("folder");
    if (reason.empty() && folder != std::vector{sources.folder}) {
      reason = "built in another folder";
    }
    if (reason.empty()) {
      files = {known.reader->files(), indexing::writtenAt(*known.reader)};
    }
  }
  const bool isSameRecord = known.reader && known.reader->meta("argument") == sources.arguments;
  known.reader.reset();
  if (!reason.empty()) printMessage(file.name() + ": " + reason + "; every file is read again");
  return indexing::updateIndex(file, sources, origin, std::move(files), isSameRecord);
}

bool build(IndexFile& file, const std::vector<std::string>& shards) {
  Known known;
  openKnown(file, known);  // which refuses a file that is no index
  known.reader.reset();
  return indexing::buildFromShards(file, shards);
}

}  // namespace

int runIndex(int argc, const char* const* argv) {
  const ArgumentParser arguments(kIndex, argc, argv);
  if (arguments.isHelpWanted()) return printHelp(kIndex);
  const std::vector<std::string>& operands = arguments.operands();
  if (operands.empty()) throw arguments.failure("no INDEX given");
  const bool isFromShards = arguments.isGiven("--from-ndjson");
  if (isFromShards && operands.size() == 1) throw arguments.failure("no SHARD given");
  if (isFromShards) indexing::checkNoneIsRecorded(arguments);
  IndexFile file(operands.front(),
                 arguments.isGiven("--no-wait") ? index::IfLocked::kFail : index::IfLocked::kWait);
  const bool isGood =
      isFromShards ? build(file, {operands.begin() + 1, operands.end()}) : update(file, arguments);
  return isGood ? kSuccess : kFileFailed;
}

}  // namespace host
