// The steps of a run one by one, each on the text that it gets in a run; earlier steps are not
// timed.
//
// usage: bench_kernels TEXTS ROUNDS [--benchmark_...]
//
// A benchmark is named STEP/ROUTE and reads that route's whole text.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "builder/character_scanner.h"
#include "builder/scope_wrappers.h"
#include "builder/script_content.h"
#include "cleaner/cleaner.h"
#include "detect/declarations.h"
#include "detect/flow.h"
#include "detect/module_patterns.h"
#include "detect/statement.h"
#include "formats/format.h"
#include "html/html_structure.h"
#include "outline/omissions.h"
#include "outline/outline.h"
#include "plugin/plugin_api.h"
#include "plugin/source_file.h"
#include "records/file_report.h"
#include "records/record_pass.h"
#include "refine/inline_functions.h"
#include "refine/qualified_names.h"
#include "refine/tidying.h"
#include "report.h"
#include "text/parts_list.h"
#include "tree/object_branch.h"

namespace bench {
namespace {

struct Text {
  std::string path;
  std::string raw;
  std::string cleaned;
};

using Step = std::function<void(Sample&, const Text&)>;

void clean(std::string& text) {
  std::vector<std::string> defines;
  cleaner::clean(text, {}, defines);
}

// ---- reading and cleaning

void read(Sample& sample, const Text& text) {
  addTime(sample, [&] { benchmark::DoNotOptimize(plugin::readSourceFile(text.path)); });
}

void cleanAll(Sample& sample, const Text& text) {
  std::string copy = text.raw;
  addTime(sample, [&] { clean(copy); });
}

void removePageComments(Sample& sample, const Text& text) {
  std::string copy = text.raw;
  addTime(sample, [&] { cleaner::removePageComments(copy); });
}

std::string withoutPageComments(const Text& text) {
  std::string copy = text.raw;
  cleaner::removePageComments(copy);
  std::replace(copy.begin(), copy.end(), '\t', ' ');
  std::replace(copy.begin(), copy.end(), '\r', '\n');
  return copy;
}

void stripComments(Sample& sample, const Text& text) {
  std::string copy = withoutPageComments(text);
  addTime(sample, [&] { cleaner::stripComments(copy); });
}

void simulatePreprocessor(Sample& sample, const Text& text) {
  std::string copy = withoutPageComments(text);
  cleaner::stripComments(copy);
  std::vector<std::string> defines;
  addTime(sample, [&] { cleaner::simulatePreprocessor(copy, {}, defines); });
}

// ---- questions, each asked about every line of the cleaned text

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    lines.push_back(line);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return lines;
}

void splitIntoParts(Sample& sample, const Text& text) {
  const std::vector<std::string_view> lines = linesOf(text.cleaned);
  addTime(sample, [&] {
    std::vector<text::Part> parts;
    for (const std::string_view line : lines) {
      parts.clear();
      text::splitIntoParts(line, parts);
      benchmark::DoNotOptimize(parts.data());
    }
  });
}

template <typename Question>
Step ask(Question question) {
  return [question](Sample& sample, const Text& text) {
    const std::vector<std::string_view> lines = linesOf(text.cleaned);
    addTime(sample, [&] {
      detect::Statement statement;
      for (const std::string_view line : lines) {
        statement.reset(line);
        benchmark::DoNotOptimize(question(statement));
      }
    });
  };
}

bool asksAll(const detect::Statement& statement) {
  return detect::isLogic(statement) || detect::isImport(statement) || detect::isLoop(statement) ||
         detect::isFunction(statement) || detect::isVariable(statement) ||
         detect::isReturn(statement) || detect::isClass(statement) ||
         detect::isInvokedFunction(statement);
}

// ---- trees; nothing is freed, since the process ends with the sample

ObjectBranch* makeRoot(const Text& text) {
  currentIndex = 0;
  ObjectBranch* const root = tree::makeNode();
  root->branchType = kBranchFilePath;
  root->branchTypeAsString = "filepath";
  root->contents = "file";
  root->filePath = text.path;
  return root;
}

// Adds the scope wrappers of a route. Their texts decide how far the walk for classes descends.
ObjectBranch* makeScope(ObjectBranch* root, const Text& text, std::string title) {
  ObjectBranch* const scope =
      builder::addScope(root, kBranchNamespace, "namespace", "namespace", {}, text.path);
  return builder::addScope(scope, kBranchClass, "class", std::move(title), {}, text.path);
}

using Build = void (*)(const Text&, ObjectBranch* root, detect::AnswerTable&);

void buildScript(const Text& text, ObjectBranch* root, detect::AnswerTable& answers) {
  builder::parseScriptFile(text.cleaned, root, text.path, answers);
}

void buildPage(const Text& text, ObjectBranch* root, detect::AnswerTable& answers) {
  html::parseStructure(text.cleaned, makeScope(root, text, "HTMLDocument"), text.path, 0, answers);
}

void scan(const Text& text, ObjectBranch* root, detect::AnswerTable&) {
  std::string scanned;
  ObjectBranch* const scope = makeScope(root, text, "class GlobalScope");
  builder::scanCharacters(text.cleaned, root, scope, true, scanned);
}

void buildOther(const Text& text, ObjectBranch* root, detect::AnswerTable& answers) {
  scan(text, root, answers);
  refine::generateInlineFunctions(root, answers);
}

Step building(Build build) {
  return [build](Sample& sample, const Text& text) {
    ObjectBranch* const root = makeRoot(text);
    detect::AnswerTable answers(currentIndex);
    addTime(sample, [&] { build(text, root, answers); });
    sample.nodes = currentIndex;
  };
}

template <typename Pass>
Step passing(Build before, Pass pass) {
  return [before, pass](Sample& sample, const Text& text) {
    ObjectBranch* const root = makeRoot(text);
    detect::AnswerTable answers(currentIndex);
    before(text, root, answers);
    addTime(sample, [&] { pass(root); });
    sample.nodes = currentIndex;
  };
}

// As in a run, with tidying as part of the same walk.
Step recording(Build before, bool removesBraceOnlyNodes) {
  return [before, removesBraceOnlyNodes](Sample& sample, const Text& text) {
    ObjectBranch* const root = makeRoot(text);
    detect::AnswerTable answers(currentIndex);
    before(text, root, answers);
    const refine::TreeTidier tidier(refine::appendAllDefines(root, {}), removesBraceOnlyNodes);
    records::MallocText answer;
    std::size_t size = 0;
    addTime(sample, [&] {
      records::RecordText records = records::generate(root, answers, tidier);
      size = records.view().size();
      answer = std::move(records).take().text;
    });
    sample.recordBytes = static_cast<double>(size);
    sample.nodes = currentIndex;
  };
}

// ---- what the program makes of the answer; the module runs outside the measured time

void makeOutline(Sample& sample, const Text& text) {
  const std::string answer = ParseJS(text.path.c_str(), nullptr);
  sample.recordBytes = static_cast<double>(answer.size());
  addTime(sample, [&] { benchmark::DoNotOptimize(host::outline::makeOutline(text.raw, answer)); });
}

void findOmissions(Sample& sample, const Text& text) {
  const std::string answer = ParseJS(text.path.c_str(), nullptr);
  sample.recordBytes = static_cast<double>(answer.size());
  addTime(sample,
          [&] { benchmark::DoNotOptimize(host::outline::findOmissions(text.raw, answer)); });
}

Step writing(const char* format, bool ranges) {
  return [format, ranges](Sample& sample, const Text& text) {
    const std::string answer = ParseJS(text.path.c_str(), nullptr);
    sample.recordBytes = static_cast<double>(answer.size());
    const host::FileReport report{.path = text.path, .answer = answer, .source = text.raw};
    host::FormatSettings settings;
    settings.ranges = ranges;
    std::string out;
    addTime(sample, [&] { host::findFormat(format)->file(report, settings, out); });
    benchmark::DoNotOptimize(out.data());
  };
}

// ---- which steps run on which routes

struct Kernel {
  const char* name;
  std::vector<std::string> routes;
  Step step;
};

std::vector<Kernel> kernels() {
  const std::vector<std::string> all = {"script", "page", "c", "markdown"};
  const std::vector<std::string> script = {"script"};
  const std::vector<std::string> page = {"page"};
  const std::vector<std::string> other = {"c", "markdown"};
  const auto splitLeaves = [](ObjectBranch* root) { GenerateInlineFunctions(root, true); };
  return {
      {"read", all, read},
      {"clean", all, cleanAll},
      {"clean-page-comments", all, removePageComments},
      {"clean-script-comments", all, stripComments},
      {"clean-directives", all, simulatePreprocessor},
      {"parts", all, splitIntoParts},
      {"ask-logic", script, ask(detect::isLogic)},
      {"ask-loop", script, ask(detect::isLoop)},
      {"ask-import", script, ask(detect::isImport)},
      {"ask-function", script, ask(detect::isFunction)},
      {"ask-function-name", script, ask(detect::functionNameOf)},
      {"ask-variable", script, ask(detect::isVariable)},
      {"ask-return", script, ask(detect::isReturn)},
      {"ask-class", script, ask(detect::isClass)},
      {"ask-invoked", script, ask(detect::isInvokedFunction)},
      {"ask-component", script,
       ask([](const detect::Statement& line) { return detect::isWebComponent(line.text()); })},
      {"ask-module", script,
       ask([](const detect::Statement& line) { return detect::modulePattern(line.text()); })},
      {"ask-in-turn", script, ask(asksAll)},
      {"script-content", script, building(buildScript)},
      {"page-structure", page, building(buildPage)},
      {"scanner", other, building(scan)},
      {"split-leaves", other, passing(scan, splitLeaves)},
      {"class-nodes", script, passing(buildScript, ExpandClassnames)},
      {"class-nodes", page, passing(buildPage, ExpandClassnames)},
      {"class-nodes", other, passing(buildOther, ExpandClassnames)},
      {"brace-nodes", script, passing(buildScript, RemoveBraceOnlyNodes)},
      {"brace-nodes", page, passing(buildPage, RemoveBraceOnlyNodes)},
      {"records", script, recording(buildScript, true)},
      {"records", page, recording(buildPage, true)},
      {"records", other, recording(buildOther, false)},
      {"outline", all, makeOutline},
      {"omissions", all, findOmissions},
      {"write-ndjson", all, writing("ndjson", false)},
      {"write-ranges", all, writing("ndjson", true)},
      {"write-outline", all, writing("outline", false)},
      {"write-ctags", all, writing("ctags", false)},
      {"write-etags", all, writing("etags", false)},
  };
}

// Returns the route's text, read only once.
const Text& textOf(const std::filesystem::path& texts, const std::string& route) {
  static std::vector<std::pair<std::string, std::unique_ptr<Text>>> known;
  for (const auto& [name, text] : known) {
    if (name == route) return *text;
  }
  auto text = std::make_unique<Text>();
  text->path = filesOf(texts / "runs" / route / "whole").at(0);
  text->raw = readFile(text->path);
  text->cleaned = text->raw;
  clean(text->cleaned);
  return *known.emplace_back(route, std::move(text)).second;
}

int run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 3) {
    std::cerr << "usage: bench_kernels TEXTS ROUNDS [--benchmark_...]\n";
    return 2;
  }
  for (const Kernel& kernel : kernels()) {
    for (const std::string& route : kernel.routes) {
      const Text& text = textOf(argv[1], route);
      const auto measure = [step = kernel.step, &text](Sample& sample) {
        sample.sourceBytes = static_cast<double>(text.raw.size());
        step(sample, text);
      };
      registerBenchmark(kernel.name + ("/" + route), {{"", measure}}, std::atoi(argv[2]));
    }
  }
  runRegistered();
  return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  try {
    return bench::run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "bench_kernels: " << error.what() << "\n";
    return 1;
  }
}
