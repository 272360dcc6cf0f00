#include "view/view.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/argument_parser.h"
#include "cli/option_table.h"
#include "cli/run_options.h"
#include "index/item_frame.h"
#include "run/batch.h"
#include "run/command_help.h"
#include "run/diagnostics.h"
#include "run/exit_status.h"
#include "run/output.h"
#include "sources/input_list.h"
#include "sources/name_list.h"
#include "system/failure.h"
#include "system/messages.h"
#include "system/platform.h"
#include "system/text_parts.h"
#include "view/index_source.h"
#include "view/page.h"
#include "view/page_data.h"
#include "view/source_bytes.h"

namespace host {
namespace {

constexpr std::size_t kLargePage = std::size_t{50} << 20;

// What does not say how files are read.
constexpr std::array<std::string_view, 6> kPageOptions = {"--index",   "--output",     "--all",
                                                          "--sources", "--no-sources", "--quiet"};

struct ViewOptions {
  RunOptions run;
  std::vector<std::string> names;  // of files and directories
  std::optional<std::string> index;
  bool keepsAllItems = false;
  view::SourceChoice sources = view::SourceChoice::kIfSmall;
};

// Where the structure comes from: files, or an index that has been made of them.
void readInputs(const ArgumentParser& arguments, ViewOptions& options) {
  options.names = arguments.operands();
  options.index = arguments.valueOf("--index");
  if (options.index) {
    if (!options.names.empty()) throw arguments.failure("--index: not with FILE");
    for (const Option& option : kView.options) {
      const bool isOfPage =
          std::find(kPageOptions.begin(), kPageOptions.end(), option.name) != kPageOptions.end();
      if (!isOfPage && arguments.isGiven(option.name)) {
        throw arguments.failure(std::string(option.name) + ": not with --index");
      }
    }
    options.run.quiet = arguments.isGiven("--quiet");
    return;
  }
  readInputOptions(arguments, options.run);
  readRunningOptions(arguments, options.run);
  if (options.names.empty() && !options.run.list) throw arguments.failure("no FILE given");
  if (options.run.list) {
    std::vector<std::string> listed = readNameList(*options.run.list, options.run.listNameEnd);
    std::move(listed.begin(), listed.end(), std::back_inserter(options.names));
  }
}

ViewOptions readOptions(const ArgumentParser& arguments) {
  ViewOptions options;
  readInputs(arguments, options);
  options.keepsAllItems = arguments.isGiven("--all");
  if (arguments.isGiven("--sources")) options.sources = view::SourceChoice::kAlways;
  if (arguments.isGiven("--no-sources")) {
    if (arguments.isGiven("--sources")) throw arguments.failure("--no-sources: not with --sources");
    options.sources = view::SourceChoice::kNever;
  }
  options.run.outputFile = arguments.valueOf("--output");
  if (options.run.outputFile == "-") options.run.outputFile.reset();
  if (!options.run.outputFile && terminalWidth(STDOUT_FILENO) != 0) {
    throw arguments.failure("standard output is a terminal; give the page a name with -o");
  }
  return options;
}

void addFile(const Input& input, const std::string& frame, view::PageData& page) {
  index::FileRow row = index::rowOfBadFrame(input.path);
  const bool isSound = index::isSoundFrame(frame);
  index::ItemFrameReader reader(frame);
  if (isSound) reader.takeFile(row);
  page.addFile(
      input.path, row,
      [&reader, isSound](index::ItemRow& item) {
        return isSound && reader.takeItem(item) == index::ItemFrameReader::State::kItem;
      },
      view::sourceBytes(input.textPath(), row.size, row.hash));
}

bool addFiles(const ViewOptions& options, view::PageData& page) {
  Diagnostics diagnostics(options.run.diagnostics);
  const Inputs inputs = findInputs(options.names, options.run.walkRules,
                                   {.file = options.run.outputFile,
                                    .output = STDOUT_FILENO,
                                    .diagnosticsFile = diagnostics.file(),
                                    .diagnostics = -1,
                                    .directory = ""});
  diagnostics.begin();
  WorkerTask task = commonTask(options.run, diagnostics);
  task.inputs = &inputs;
  task.format = &index::kFrameFormat;
  task.findsOmissions = true;
  task.keepsSources = true;
  const auto take = [&page](const Input& input, const FileResult& result) {
    addFile(input, result.text, page);
  };
  return answerFiles(task, options.run, diagnostics, {.take = take});
}

}  // namespace

int runView(int argc, const char* const* argv) {
  const ArgumentParser arguments(kView, argc, argv);
  if (arguments.isHelpWanted()) return printHelp(kView);
  const ViewOptions options = readOptions(arguments);
  Output output(options.run.outputFile);
  view::PageData data(options.keepsAllItems, options.sources);
  bool isGood = true;
  if (options.index) {
    view::addIndex(*options.index, data);
  } else {
    isGood = addFiles(options, data);
  }
  const std::string page = view::makePage(data.finish());
  if (page.size() > kLargePage && !options.run.quiet) {
    printMessage("the page has " + std::to_string(page.size() >> 20) +
                 " MB, which a browser may take long to open");
  }
  output.begin();
  output.write(page);
  output.close();
  return isGood ? kSuccess : kFileFailed;
}

}  // namespace host
