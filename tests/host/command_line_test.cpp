// What the program makes of its arguments, and its help and version. Where a run goes on, the
// module is one whose answers are known byte by byte.

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"

namespace {

namespace fs = std::filesystem;
using host_test::joined;
using host_test::Outcome;
using host_test::Words;
using host_test::writeFile;
using Arguments = host_test::QuorlJs;
using Help = host_test::QuorlJs;
using Version = host_test::QuorlJs;

constexpr const char* kMergeHint = "quorl-js merge --help";

TEST_F(Arguments, ReachTheModuleByteForByte) {
  struct Row {
    const char* why;
    Words arguments;
    std::string out;
  };
  const std::vector<Row> rows = {
      {"a define", {"--defines", "A", "f"}, "[\nf|A\n]\n"},
      {"joined to its option", {"--defines=A", "f"}, "[\nf|A\n]\n"},
      {"options behind the files", {"f", "--defines", "A"}, "[\nf|A\n]\n"},
      {"one value an option: the rest are files",
       {"--defines", "A", "f", "g"},
       "[\nf|A\n]\n[\ng|A\n]\n"},
      {"in their order, for every file, one a line",
       {"f", "--defines", "B", "g", "--defines=A", "--defines", "B"},
       "[\nf|B\nA\nB\n]\n[\ng|B\nA\nB\n]\n"},
      {"an empty define", {"--defines", "", "f"}, "[\nf|\n]\n"},
      {"an empty define takes its line",
       {"--defines", "", "--defines", "A", "--defines", "", "f"},
       "[\nf|\nA\n\n]\n"},
      {"an empty joined define", {"--defines=", "f"}, "[\nf|\n]\n"},
      {"empty joined defines", {"--defines=", "--defines=A", "f"}, "[\nf|\nA\n]\n"},
      {"a define that looks like an option", {"--defines", "-x", "f"}, "[\nf|-x\n]\n"},
      {"a define that is an option", {"--defines", "--version", "f"}, "[\nf|--version\n]\n"},
      {"a define that is its own option", {"--defines", "--defines=", "f"}, "[\nf|--defines=\n]\n"},
      {"a define that is the end of options", {"--defines", "--", "f"}, "[\nf|--\n]\n"},
      {"an equals sign", {"--defines", "A=1", "f"}, "[\nf|A=1\n]\n"},
      {"a second equals sign", {"--defines=A=1", "f"}, "[\nf|A=1\n]\n"},
      {"an equals sign at the end", {"--defines=A=", "f"}, "[\nf|A=\n]\n"},
      {"commas", {"--defines", "A,B", "f"}, "[\nf|A,B\n]\n"},
      {"brackets", {"--defines", "[A,B]", "f"}, "[\nf|[A,B]\n]\n"},
      {"joined brackets", {"--defines=[A,B]", "f"}, "[\nf|[A,B]\n]\n"},
      {"braces", {"--defines", "{}", "f"}, "[\nf|{}\n]\n"},
      {"the argument reader's own separator", {"--defines", "%%", "f"}, "[\nf|%%\n]\n"},
      {"blanks", {"--defines", " A ", "f"}, "[\nf| A \n]\n"},
      {"quotes", {"--defines", "\"A\"'", "f"}, "[\nf|\"A\"'\n]\n"},
      {"a line feed", {"--defines", "A\nB", "f"}, "[\nf|A\nB\n]\n"},
      {"bytes from 0x80 up", {"--defines", "\xff\xc3\x28", "f"}, "[\nf|\xff\xc3\x28\n]\n"},
      {"a file in brackets", {"[a,b]"}, "[\n[a,b]|\n]\n"},
      {"several files in brackets",
       {"[a,b]", "[]", "[c]"},
       "[\n[a,b]|\n]\n[\n[]|\n]\n[\n[c]|\n]\n"},
      {"a file with blanks", {" a b "}, "[\n a b |\n]\n"},
      {"a file with quotes", {"a\"b'c\\"}, "[\na\"b'c\\|\n]\n"},
      {"a file with a line feed", {"a\nb"}, "[\na\nb|\n]\n"},
      {"a file with bytes from 0x80 up", {"\xff\xfe.js"}, "[\n\xff\xfe.js|\n]\n"},
      {"a file without a name", {""}, "[\n|\n]\n"},
      {"a file with an equals sign", {"a=b", "c="}, "[\na=b|\n]\n[\nc=|\n]\n"},
      {"a file called as in the usage text",
       {"FILE", "--defines=", "f"},
       "[\nFILE|\n]\n[\nf|\n]\n"},
      {"a slash does not open an option", {"/f"}, "[\n/f|\n]\n"},
      {"a hyphen is a file", {"-"}, "[\n-|\n]\n"},
      {"a hyphen opens a file name behind --", {"--", "-f"}, "[\n-f|\n]\n"},
      {"an option is a file behind --", {"--", "--help"}, "[\n--help|\n]\n"},
      {"an option with a value is a file behind --",
       {"--", "--defines=", "--defines", "f"},
       "[\n--defines=|\n]\n[\n--defines|\n]\n[\nf|\n]\n"},
      {"-- is a file behind --", {"--", "--"}, "[\n--|\n]\n"},
      {"files before and behind --", {"f", "--", "-g", "h"}, "[\nf|\n]\n[\n-g|\n]\n[\nh|\n]\n"},
      {"an option twice", {"--recursive", "--recursive", "f"}, "[\nf|\n]\n"},
      {"a define that is a short option", {"--defines", "-0", "f"}, "[\nf|-0\n]\n"},
      {"a short option is a file behind --", {"--", "-0"}, "[\n-0|\n]\n"},
      {"-- behind a define", {"--defines", "A", "--", "-f"}, "[\n-f|A\n]\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.why) + ": " + joined(row.arguments));
    EXPECT_EQ(runOdd(row.arguments), (Outcome{0, row.out, ""}));
  }
}

TEST_F(Arguments, ThatCannotBeFollowedAreRefused) {
  struct Row {
    Words arguments;
    std::string message;
    std::string hint = "quorl-js --help";
  };
  const std::vector<Row> rows = {
      {{}, "no FILE given"},
      {{"--"}, "no FILE given"},
      {{"--defines", "f"}, "no FILE given"},
      {{"--diagnostics", "lines"}, "no FILE given"},
      {{"--bogus"}, "unknown option --bogus"},
      {{"f", "-o"}, "--output: FILE is missing"},
      {{"f", "-rqo"}, "--output: FILE is missing"},
      {{"f", "--output"}, "--output: FILE is missing"},
      {{"f", "--jobs"}, "--jobs: N is missing"},
      {{"f", "--defines", "-o", "-j"}, "--jobs: N is missing"},
      {{"f", "--quiet=1"}, "--quiet: takes no value"},
      {{"f", "--help=yes"}, "--help: takes no value"},
      {{"f", "-xr"}, "unknown option -xr"},
      {{"f", "-rx"}, "unknown option -rx"},
      {{"merge", "f", "-o"}, "--output: FILE is missing", kMergeHint},
      {{"merge", "f", "--files-from=a", "--null=yes"}, "--null: takes no value", kMergeHint},
      {{"f", "--bogus=1", "--other"}, "unknown option --bogus=1"},
      {{"f", "-x", "--", "-y"}, "unknown option -x"},
      {{"--version", "--bogus"}, "unknown option --bogus"},
      {{"--a\x1b\nb"}, "unknown option --a\\x1b\\x0ab"},
      {{"--null-terminated", "f"}, "unknown option --null-terminated"},
      {{"--recursive"}, "no FILE given"},
      {{"-r"}, "no FILE given"},
      {{"-o", "f"}, "no FILE given"},
      {{"f", "-o", "out", "--out-dir", "."}, "--output: not with --out-dir"},
      {{"f", "--stdin", "g"}, "--stdin: not with FILE or --files-from"},
      {{"--out-dir", "f"}, "no FILE given"},
      {{"--caf\xc3\xa9"}, "unknown option --caf\xc3\xa9"},
      {{"merge"}, "no SHARD given", kMergeHint},
      {{"merge", "--"}, "no SHARD given", kMergeHint},
      {{"merge", "--files-from=list"}, "no SHARD given", kMergeHint},
      {{"merge", "--files-from", "f"}, "no SHARD given", kMergeHint},
      {{"merge", "--bogus"}, "unknown option --bogus", kMergeHint},
      {{"merge", "-q", "f"}, "unknown option -q", kMergeHint},
      {{"merge", "f", "--bogus=1", "--other"}, "unknown option --bogus=1", kMergeHint},
      {{"merge", "f", "-x", "--", "-y"}, "unknown option -x", kMergeHint},
      {{"merge", "--recursive", "f"}, "unknown option --recursive", kMergeHint},
      {{"merge", "--generate", "man"}, "unknown option --generate", kMergeHint},
      {{"merge", "--version"}, "unknown option --version", kMergeHint},
      {{"merge", "--a\x1b\nb"}, "unknown option --a\\x1b\\x0ab", kMergeHint},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    EXPECT_EQ(run(row.arguments),
              (Outcome{2, "", "quorl-js: " + row.message + "; see " + row.hint + "\n"}));
    EXPECT_FALSE(fs::exists("lines"));  // nothing is opened for a run that does not start
  }
}

// How these are worded is the argument reader's affair.
TEST_F(Arguments, ThatDoNotGoTogetherAreRefusedInOneLine) {
  struct Row {
    Words arguments;
    std::string told;
    std::string hint = "quorl-js --help";
  };
  const std::vector<Row> rows = {
      {{"f", "--defines"}, "defines"},
      {{"f", "--plugin"}, "plugin"},
      {{"f", "--diagnostics"}, "diagnostics"},
      {{"f", "--help=yes"}, "help"},
      {{"f", "--version=no"}, "version"},
      {{"f", "--recursive=yes"}, "recursive"},
      {{"f", "--files-from"}, "files-from"},
      {{"f", "--out-dir"}, "out-dir"},
      {{"f", "--hidden"}, "--hidden requires --recursive"},
      {{"f", "--node-modules"}, "--node-modules requires --recursive"},
      {{"f", "-0"}, "--null requires --files-from"},
      {{"f", "--null"}, "--null requires --files-from"},
      {{"f", "--no-ignore"}, "--no-ignore requires --recursive"},
      {{"f", "--binary"}, "--binary requires --recursive"},
      {{"f", "--include=*"}, "--include requires --recursive"},
      {{"f", "--exclude=*"}, "--exclude requires --recursive"},
      {{"merge", "f", "--help=yes"}, "help", kMergeHint},
      {{"merge", "f", "--files-from=a", "--null=yes"}, "null", kMergeHint},
      {{"merge", "f", "--files-from"}, "files-from", kMergeHint},
      {{"merge", "f", "-0"}, "--null requires --files-from", kMergeHint},
      {{"merge", "f", "--null"}, "--null requires --files-from", kMergeHint},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    const Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind("quorl-js: ", 0), 0U) << outcome;
    EXPECT_NE(outcome.err.find(row.told), std::string::npos) << outcome;
    const std::string end = "; see " + row.hint + "\n";
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome;
    EXPECT_EQ(outcome.err.find(end), outcome.err.size() - end.size()) << outcome;
  }
}

TEST_F(Arguments, ThatAreMistypedGetASuggestion) {
  struct Row {
    Words arguments;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"--recursve", "f"}, "unknown option --recursve; did you mean --recursive?"},
      {{"--define", "A", "f"}, "unknown option --define; did you mean --defines?"},
      {{"--Defines", "A", "f"}, "unknown option --Defines; did you mean --defines?"},
      {{"-recursive", "f"}, "unknown option -recursive; did you mean --recursive?"},
      {{"-defines", "A", "f"}, "unknown option -defines; did you mean --defines?"},
      {{"f", "--fromat=json"}, "unknown option --fromat=json; did you mean --format?"},
      {{"merge", "--file-from", "a", "f"},
       "unknown option --file-from; did you mean --files-from?"},
      {{"f", "--format", "jsno"},
       "--format: invalid value 'jsno'; did you mean json? (one of raw, json, ndjson, columns, "
       "tree, outline, ctags, etags)"},
      {{"f", "--format=JSON"},
       "--format: invalid value 'JSON'; did you mean json? (one of raw, json, ndjson, columns, "
       "tree, outline, ctags, etags)"},
      {{"f", "--format=xml"},
       "--format: invalid value 'xml' (one of raw, json, ndjson, columns, tree, outline, ctags, "
       "etags)"},
      {{"f", "--format="},
       "--format: invalid value '' (one of raw, json, ndjson, columns, tree, outline, ctags, "
       "etags)"},
      {{"f", "--color=Always"},
       "--color: invalid value 'Always'; did you mean always? (one of auto, always, never)"},
      {{"f", "--color=yes"}, "--color: invalid value 'yes' (one of auto, always, never)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    EXPECT_EQ(run(row.arguments), (Outcome{2, "", "quorl-js: " + row.message + "\n"}));
  }
}

TEST_F(Arguments, WithLabelsThatAreNoneAreRefused) {
  const std::string labels =
      " (one of filepath, namespace, class, function, logic, loop, classvar, line, define, "
      "preprocessor, htmlelement, link, container, error)\n";
  for (const char* format : {"json", "ndjson", "tree", "raw"}) {
    EXPECT_EQ(
        run({"f", "--only=functions", "--format", format}),
        (Outcome{2, "",
                 "quorl-js: --only: invalid value 'functions'; did you mean function?" + labels}));
    EXPECT_EQ(run({"f", "--only=line,,loop", "--format", format}),
              (Outcome{2, "", "quorl-js: --only: invalid value ''" + labels}));
    EXPECT_EQ(run({"f", "--only=", "--format", format}),
              (Outcome{2, "", "quorl-js: --only: invalid value ''" + labels}));
  }
}

TEST_F(Arguments, ThatMeanNothingToTheFormatAreRefused) {
  struct Row {
    Words arguments;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"--depth=1"}, "--depth: not with --format raw; use --format json, ndjson, tree or outline"},
      {{"--only=line"},
       "--only: not with --format raw; use --format json, ndjson, columns, tree, outline, ctags or "
       "etags"},
      {{"--only=line", "--format=raw"},
       "--only: not with --format raw; use --format json, ndjson, columns, tree, outline, ctags or "
       "etags"},
      {{"--times"}, "--times: not with --format raw; use --format json, ndjson or columns"},
      {{"--times", "--format=tree"},
       "--times: not with --format tree; use --format json, ndjson or columns"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(joined(row.arguments));
    Words arguments = row.arguments;
    arguments.emplace_back("f");
    EXPECT_EQ(run(arguments), (Outcome{2, "", "quorl-js: " + row.message + "\n"}));
  }
}

TEST_F(Arguments, WithValuesThatAreNoneAreRefused) {
  struct Row {
    const char* option;
    Words values;
    std::string allowed;
  };
  const std::string sizes = "a size such as 64M or 2GiB, or 0 for no limit";
  const std::vector<Row> rows = {
      {"--jobs",
       {"", "0", "257", "-1", "+1", "1.0", " 1", "all", "99999999999"},
       "a number from 1 to 256"},
      {"-j", {"0", "x"}, "a number from 1 to 256"},
      {"--timeout",
       {"", "-1", "1s", "1.", ".5", "1.0000001", "1e3", "inf", "1000000001"},
       "seconds such as 30 or 2.5, or 0 for no limit"},
      {"--max-memory",
       {"", "1", "63M", "67108863", "1.5G", "-1", "17179869184G", "16777216T"},
       "a size of at least 64M such as 512M or 2GiB, or 0 for no limit"},
      {"--max-output",
       {"", "K", "B", "1B", "1P", "1KiBB", "1i", "0x10", "18446744073709551616"},
       sizes},
      {"--max-size", {"", "M", "1 M", "1M1"}, sizes},
      {"--depth", {"", "-1", "all", "99999999999"}, "a number from 0 to 4294967295"},
      {"--include", {"", ".", "./", "/"}, "a pattern such as *.js or src/"},
      {"--exclude", {""}, "a pattern such as *.js or src/"},
  };
  for (const Row& row : rows) {
    for (const std::string& value : row.values) {
      const std::string name = row.option == std::string("-j") ? "--jobs" : row.option;
      EXPECT_EQ(run({"f", "-r", row.option, value}),
                (Outcome{2, "",
                         "quorl-js: " + name + ": invalid value '" + value + "'; use " +
                             row.allowed + "\n"}));
    }
  }
}

// Exactly as large as the file is allowed, one byte more is not.
TEST_F(Arguments, WithSizesAreTakenInEachSpelling) {
  writeFile("kilobyte", std::string(1024, 'x'));
  writeFile("more", std::string(1025, 'x'));
  for (const char* size : {"1024", "1K", "1k", "1KB", "1kb", "1KiB", "1kib"}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(runOdd({"kilobyte", "--max-size", size}).status, 0);
    EXPECT_EQ(runOdd({"more", "--max-size", size}).status, 1);
  }
  for (const char* size : {"64M", "64m", "64MB", "64MiB", "1G", "1g", "1T", "1TiB", "67108864"}) {
    EXPECT_EQ(runOdd({"kilobyte", "--max-memory", size, "--max-output", size}).status, 0) << size;
  }
}

TEST_F(Arguments, WithValuesAreTakenInEachSpelling) {
  for (const Words& arguments : {Words{"-j1"},
                                 Words{"-j", "256"},
                                 Words{"--jobs=2"},
                                 Words{"--jobs", "3"},
                                 Words{"--timeout=0"},
                                 Words{"--timeout", "59.999999"},
                                 Words{"--timeout=1000000000"},
                                 Words{"--max-memory=0"},
                                 Words{"--max-memory", "8G"},
                                 Words{"--max-output=0"},
                                 Words{"--max-output=8"},
                                 Words{"--max-output=1K"},
                                 Words{"--max-size=0"},
                                 Words{"--max-size=1M"},
                                 Words{"--format=raw"},
                                 Words{"--color", "auto"},
                                 Words{"--color=always"},
                                 Words{"--color=never"},
                                 Words{"-rq"},
                                 Words{"--quiet", "-q", "--no-progress", "--strict"}}) {
    SCOPED_TRACE(joined(arguments));
    Words all = arguments;
    all.emplace_back("f");
    EXPECT_EQ(runOdd(all), (Outcome{0, "[\nf|\n]\n", ""}));
  }
}

TEST_F(Arguments, ThatAreRepeatedCountForTheLast) {
  writeFile("list", "g\n");
  fs::create_directory("out");
  for (const Words& arguments :
       {Words{"--format=json", "--format=raw"}, Words{"--jobs=2", "-j1"},
        Words{"--max-output=1", "--max-output=0"}, Words{"--timeout=1", "--timeout", "2"},
        Words{"--plugin", "gone.so", "--plugin", ODD_PLUGIN_PATH},
        Words{"--diagnostics=out/x", "--diagnostics=none"}, Words{"-o", "out/x", "-o", "-"}}) {
    SCOPED_TRACE(joined(arguments));
    Words all = arguments;
    all.emplace_back("f");
    if (arguments.front() != "--plugin") all.insert(all.begin(), {"--plugin", ODD_PLUGIN_PATH});
    EXPECT_EQ(run(all), (Outcome{0, "[\nf|\n]\n", ""}));
  }
  EXPECT_TRUE(fs::is_empty("out"));
  EXPECT_EQ(runOdd({"--files-from=gone", "--files-from=list"}), (Outcome{0, "[\ng|\n]\n", ""}));
}

TEST_F(Arguments, OfAnOutlineMayBeJoinedOrRepeated) {
  writeFile("a.js", "function f() {\n  return 1;\n}\n");
  for (const Words& labels :
       {Words{"--only=class,line"}, Words{"--only", "line", "--only=class"}}) {
    Words arguments = labels;
    arguments.insert(arguments.end(), {"a.js", "--format=tree", "--depth=4"});
    EXPECT_EQ(run(arguments), (Outcome{0,
                                       "a.js\n"
                                       "       class           A\n"
                                       "     2 line                return 1;\n",
                                       ""}));
  }
}

TEST_F(Help, ListsOptionsAndExitStatuses) {
  const Outcome outcome = run({"--help"});
  EXPECT_EQ(run({"-h"}), outcome);
  EXPECT_EQ(run({"-h", "f", "-V"}), outcome);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.rfind("Usage: quorl-js FILE... [OPTION]...\n"
                              "       quorl-js --files-from LIST [FILE]... [OPTION]...\n"
                              "       quorl-js --stdin NAME [OPTION]...\n"
                              "       quorl-js merge SHARD... [OPTION]...\n"
                              "       quorl-js lsp [OPTION]...\n",
                              0),
            0U)
      << outcome;
  for (const char* line : {"-r, --recursive ",
                           "--hidden ",
                           "--node-modules ",
                           "--files-from LIST ",
                           "-0, --null ",
                           "--out-dir DIR ",
                           "--defines NAME ",
                           "--plugin PATH ",
                           "--diagnostics WHERE ",
                           "--format FORMAT ",
                           "-j, --jobs N ",
                           "--timeout SECONDS ",
                           "-q, --quiet ",
                           "--strict ",
                           "-o, --output FILE ",
                           "-h, --help ",
                           "-V, --version ",
                           "-- ",
                           "0 ",
                           "1 ",
                           "2 ",
                           "  quorl-js a.js b.html\n"}) {
    EXPECT_NE(outcome.out.find(std::string("\n  ") + line), std::string::npos) << line;
  }
  EXPECT_NE(
      outcome.out.find("\n  --out-dir DIR        Write one output file per input file, to the "
                       "directory\n"
                       "                       DIR\n"),
      std::string::npos)
      << outcome;  // the texts are broken at blanks and stand in one column
  EXPECT_EQ(outcome.out.back(), '\n');
}

// The lines of each option: the first begins with its name, further ones are indented.
TEST_F(Help, NeedsTwoLinesForAnOptionAtMost) {
  for (const Words& arguments :
       {Words{"--help"}, Words{"merge", "--help"}, Words{"lsp", "--help"}}) {
    std::istringstream lines(run(arguments).out);
    int options = 0;
    int linesOfOption = 0;
    bool isOption = false;
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 79U) << line;
      if (line.rfind("  -", 0) == 0) {
        isOption = true;
        linesOfOption = 1;
        ++options;
      } else if (line.rfind("    ", 0) == 0 && isOption) {
        EXPECT_LE(++linesOfOption, 2) << line;
      } else {
        isOption = false;
      }
    }
    EXPECT_GE(options, 4);
  }
}

TEST_F(Help, OfMergeNeedsNothingElse) {
  const std::string text = run({"merge", "--help"}).out;
  EXPECT_EQ(text.rfind("Usage: quorl-js merge [--files-from LIST [-0]] [-o FILE] SHARD...\n", 0),
            0U);
  for (const Words& arguments : {Words{"merge", "f", "--help"}, Words{"merge", "--help", "--bogus"},
                                 Words{"merge", "--files-from=gone", "--help"},
                                 Words{"merge", "-0", "--help"}, Words{"merge", "--help="}}) {
    SCOPED_TRACE(joined(arguments));
    EXPECT_EQ(run(arguments), (Outcome{0, text, ""}));
  }
}

TEST_F(Help, NeedsNothingElse) {
  const std::string text = run({"--help"}).out;
  for (const Words& arguments :
       {Words{"--help", "--plugin", "/nowhere/m.so"}, Words{"f", "--help", "--version"},
        Words{"--help", "--bogus"}, Words{"--diagnostics", "folder/lines", "--help"},
        Words{"--help="}}) {
    SCOPED_TRACE(joined(arguments));
    EXPECT_EQ(run(arguments), (Outcome{0, text, ""}));
  }
}

TEST_F(Version, IsTheProgramsAndThenTheModules) {
  const Outcome versions{
      0, "quorl-js " QUORL_VERSION "\nodd plug-in\nplug-in: " ODD_PLUGIN_PATH "\n", ""};
  EXPECT_EQ(runOdd({"--version"}), versions);
  EXPECT_EQ(runOdd({"-V"}), versions);
  EXPECT_EQ(runOdd({"--version", "error"}), versions);  // no file is read
}

TEST_F(Version, NeedsTheModule) {
  const Outcome outcome = run({"--version", "--plugin", "gone.so"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
}

TEST_F(Version, WithoutMemoryForTheModulesText) {
  ::setenv("ODD_PLUGIN_HAS_NO_MEMORY", "1", 1);
  const Outcome outcome = runOdd({"--version"});
  ::unsetenv("ODD_PLUGIN_HAS_NO_MEMORY");
  EXPECT_EQ(outcome, (Outcome{2, "", "quorl-js: no memory for the plug-in's version\n"}));
}

}  // namespace
