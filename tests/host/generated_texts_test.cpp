// The completions and the manual page. What they say of the options comes from the table that the
// help comes from, so the help tells which options there have to be.

#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/program_runner.h"
#include "host/quorl_js_fixture.h"

namespace {

namespace fs = std::filesystem;
using host_test::contentsOf;
using host_test::Outcome;
using host_test::runProgram;
using host_test::StandardOutput;
using host_test::Words;
using host_test::writeFile;

class GeneratedTexts : public host_test::QuorlJs {
 protected:
  // The manual page is made from a template, which comes by standard input.
  static std::string generated(const std::string& kind) {
    const Outcome outcome =
        runProgram("/bin/sh", {"-c", "exec \"$1\" --generate \"$2\" < \"$3\"", "sh", QUORL_JS_PATH,
                               kind, QUORL_DOCS "/quorl-js.1.scd.in"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }

  // What a shell prints when it runs the script, both outputs together. Its home is the current
  // directory, where it finds no settings and may keep what it wants.
  static std::string printedBy(const std::string& shell, const std::string& script) {
    const Outcome outcome = runProgram(
        "/usr/bin/env",
        {"HOME=" + fs::current_path().string(), "LC_ALL=C.UTF-8", shell, "-c", script + " 2>&1"});
    return outcome.out + outcome.err;
  }

  static bool isInstalled(const std::string& program) {
    return runProgram("/bin/sh", {"-c", "command -v " + program}).status == 0;
  }
};
using Completions = GeneratedTexts;
using ManualPage = GeneratedTexts;

// The names of the options that the help lists, without the lone "--".
std::set<std::string> optionsInHelp(const std::string& help) {
  std::set<std::string> names;
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("  -", 0) != 0) continue;
    const std::size_t name = line.find("--");
    const std::size_t end = line.find(' ', name);
    if (end - name > 2) names.insert(line.substr(name, end - name));
  }
  return names;
}

TEST_F(GeneratedTexts, HaveEveryOptionOfTheHelp) {
  const std::set<std::string> names = optionsInHelp(run({"--help"}).out);
  EXPECT_EQ(names,
            (std::set<std::string>{"--recursive",   "--hidden",   "--node-modules", "--no-ignore",
                                   "--binary",      "--include",  "--exclude",      "--files-from",
                                   "--null",        "--stdin",    "--format",       "--only",
                                   "--depth",       "--ranges",   "--times",        "--output",
                                   "--out-dir",     "--color",    "--defines",      "--plugin",
                                   "--diagnostics", "--jobs",     "--timeout",      "--max-memory",
                                   "--max-output",  "--max-size", "--strict",       "--quiet",
                                   "--no-progress", "--help",     "--version"}));
  for (const char* kind : {"bash", "zsh", "fish", "man"}) {
    const std::string text = generated(kind);
    EXPECT_EQ(text.back(), '\n') << kind;
    EXPECT_EQ(text.find("generate"), std::string::npos) << kind;
    for (const std::string& name : names) {
      const std::string sought = kind == std::string("fish") ? " -l " + name.substr(2) + " " : name;
      EXPECT_NE(text.find(sought), std::string::npos) << kind << name;
    }
  }
}

TEST_F(GeneratedTexts, StandInTheDocumentation) {
  const std::string tables = generated("tables");
  EXPECT_NE(tables.find("| `-0, --null` | Split LIST at NUL bytes instead of line feeds. |\n"),
            std::string::npos);
  EXPECT_NE(tables.find("| 0 | Every file was read. An empty file counts as read. |\n"),
            std::string::npos);
  EXPECT_NE(contentsOf(QUORL_DOCS "/cli.md").find("\n\n" + tables + "\n"), std::string::npos)
      << "docs/cli.md should hold what quorl-js --generate tables prints:\n"
      << tables;
}

// The texts of the table reach help, manual page, documentation and completions alike.
TEST_F(GeneratedTexts, SayTheSameOfEveryOption) {
  std::istringstream table(generated("tables"));
  const std::string help = run({"--help"}).out;
  const std::string man = generated("man");
  std::string oneLineHelp;  // without line breaks and indentation
  std::istringstream words(help);
  for (std::string word; words >> word;) oneLineHelp += word + " ";
  int options = 0;
  for (std::string row; std::getline(table, row);) {
    if (row.rfind("| Option of", 0) == 0) break;
    if (row.rfind("| `-", 0) != 0) continue;
    ++options;
    const std::size_t end = row.find("` | ");
    const std::string label = row.substr(3, end - 3);
    const std::string text = row.substr(end + 4, row.size() - end - 4 - 2);
    const std::string first = text.substr(0, text.find(". "));
    const std::string sentence = first.ends_with('.') ? first.substr(0, first.size() - 1) : first;
    std::string plainText;
    for (const char byte : sentence) {
      if (byte != '\\') plainText += byte;
    }
    EXPECT_NE(oneLineHelp.find(label + " " + plainText + " "), std::string::npos) << row;
    EXPECT_NE(man.find("\n\t" + text.substr(0, 20)), std::string::npos) << row;
  }
  EXPECT_EQ(options, 32);
}

TEST_F(GeneratedTexts, NeedNothingElse) {
  EXPECT_EQ(run({"--generate=fish", "--plugin", "gone.so"}), (Outcome{0, generated("fish"), ""}));
  EXPECT_EQ(run({"--generate", "ksh"}), (Outcome{2, "", "quorl-js: cannot generate ksh\n"}));
  EXPECT_EQ(run({"--generate", ""}), (Outcome{2, "", "quorl-js: cannot generate \n"}));
}

TEST_F(GeneratedTexts, ThatCannotBeWrittenEndTheRun) {
  EXPECT_EQ(run({"--generate", "bash"}, StandardOutput::kFullDisk),
            (Outcome{2, "", "quorl-js: standard output: No space left on device\n"}));
}

// ---- Completions, each asked by its own shell

TEST_F(Completions, OfBash) {
  if (!isInstalled("bash")) GTEST_SKIP() << "no bash";
  writeFile("quorl-js.bash", generated("bash"));
  writeFile("melon.js", "");
  EXPECT_EQ(printedBy("bash", "bash -n quorl-js.bash"), "");
  EXPECT_EQ(printedBy("bash", ". ./quorl-js.bash; complete -p quorl-js"),
            "complete -o default -F _quorl_js quorl-js\n");
  struct Row {
    const char* why;
    std::string words;  // the last is to be completed
    std::string offered;
  };
  const std::vector<Row> rows = {
      {"options", "--n", "--node-modules --no-ignore --null --no-progress"},
      {"the short option too", "-0", "-0"},
      {"all formats", "--format ''",
       "(+o default)raw json ndjson columns tree outline ctags etags"},
      {"labels", "--only cl", "(+o default)class classvar"},
      {"labels behind a comma", "--only class,fun", "(+o default)class,function"},
      {"joined labels", "--only = line,l", "(+o default)line,logic line,loop line,line line,link"},
      {"a file for the output", "-o ''", ""},
      {"files are left to the shell", "f", ""},
      {"the words of an option", "--diagnostics ''", "none stderr"},
      {"words that are all there is", "--color ''", "(+o default)auto always never"},
      {"nothing for a number", "-j ''", "(+o default)"},
      {"a word that has begun", "--diagnostics s", "stderr"},
      {"joined to its option", "--diagnostics =", "none stderr"},
      {"joined and begun", "--diagnostics = n", "none"},
      {"a file as a value", "--plugin ''", ""},
      {"directories only", "--out-dir ''", "(+o default -o dirnames)"},
      {"joined directories", "--out-dir = x", "(+o default -o dirnames)"},
      {"nothing to offer", "--defines ''", "(+o default)"},
      {"no options behind --", "-- --", ""},
      {"the other command", "me", "(-o filenames)melon.js merge"},
      {"a file that is no command", "merger", ""},
      {"another command", "ls", "(-o filenames)lsp"},
      {"options of that", "lsp -",
       "--stdio --trace --index --plugin --timeout --max-size -h --help"},
      {"the kinds of items", "query x --kind sta", "(+o default)statement"},
      {"options of index", "index --no-w", "--no-wait"},
      {"options of the other command", "merge -", "--files-from -0 --null -o --output -h --help"},
      {"files for it", "merge --files-from ''", ""},
      {"no command but as the first word", "f merge --n",
       "--node-modules --no-ignore --null --no-progress"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(printedBy("bash",
                        ". ./quorl-js.bash; compopt() { printf '(%s)' \"$*\"; };"
                        "COMP_WORDS=(quorl-js " +
                            row.words +
                            ");"
                            "COMP_CWORD=$((${#COMP_WORDS[@]} - 1));"
                            "_quorl_js; printf %s \"${COMPREPLY[*]}\""),
              row.offered);
  }
}

TEST_F(Completions, OfZsh) {
  const std::string script = generated("zsh");
  EXPECT_EQ(script.rfind("#compdef quorl-js\n", 0), 0U);
  if (!isInstalled("zsh")) GTEST_SKIP() << "no zsh";
  writeFile("_quorl-js", script);
  EXPECT_EQ(printedBy("zsh", "zsh -n _quorl-js"), "");
  const std::string diagnostics =
      "--diagnostics=[Write the plug-in's diagnostic lines to a file or to stderr]:WHERE:"
      R"x({_alternative "words\:word\:(none stderr)" "files\:file\:_files"})x";
  // The specifications as zsh reads them out of the quotes.
  const std::string read =
      printedBy("zsh", "_arguments() { printf '%s\\n' \"$@\" }; . ./_quorl-js");
  for (
      const std::string& line : Words{
          "-S", "(-0 --null)-0[Split LIST at NUL bytes instead of line feeds]",
          "(-0 --null)--null[Split LIST at NUL bytes instead of line feeds]",
          "*--defines=[Add NAME to the record of defines]:NAME: ",
          "*--only=[Print only records with this label, or items of this kind]:LABEL:_sequence "
          "compadd - filepath "
          "namespace class function logic loop classvar line define preprocessor htmlelement "
          "link container error method constructor getter setter interface enum type variable "
          "field module callback statement element script block",
          "--format=[Choose the output format]:FORMAT:(raw json ndjson columns tree outline "
          "ctags etags)",
          "--out-dir=[Write one output file per input file, to the directory DIR]:DIR:_files -/",
          "(-j --jobs)-j+[Parse N files in parallel, 1 to 256]:N: ",
          "(-j --jobs)--jobs=[Parse N files in parallel, 1 to 256]:N: ",
          "--color=[Color outline and tree]:WHEN:(auto always never)", diagnostics,
          "(-h --help)--help[Print this help]", "*:FILE:_files",
          R"x(1:FILE or command:{_alternative "commands\:command\:(merge lsp index query status view)" )x"
          R"x("files\:file\:_files"})x"}) {
    EXPECT_NE(("\n" + read).find("\n" + line + "\n"), std::string::npos) << line << "\nis not in\n"
                                                                         << read;
  }
}

TEST_F(Completions, OfZshBehindMerge) {
  if (!isInstalled("zsh")) GTEST_SKIP() << "no zsh";
  writeFile("_quorl-js", generated("zsh"));
  EXPECT_EQ(printedBy("zsh",
                      "_arguments() { printf '%s\\n' \"$@\" }; words=(quorl-js merge x); CURRENT=3;"
                      ". ./_quorl-js"),
            "-S\n--files-from=[Write files in the order of LIST, one name per line]:LIST:_files\n"
            "(-0 --null)-0[Split LIST at NUL bytes instead of line feeds]\n"
            "(-0 --null)--null[Split LIST at NUL bytes instead of line feeds]\n"
            "(-o --output)-o+[Write to FILE, which is replaced when the output is complete]:FILE:"
            "_files\n"
            "(-o --output)--output=[Write to FILE, which is replaced when the output is complete]"
            ":FILE:_files\n"
            "(-h --help)-h[Print this help]\n"
            "(-h --help)--help[Print this help]\n*:SHARD:_files\n");
}

TEST_F(Completions, OfFish) {
  if (!isInstalled("fish")) GTEST_SKIP() << "no fish";
  fs::create_directory("folder");
  writeFile("folder/f.js", "");
  writeFile("quorl-js.fish", generated("fish"));
  EXPECT_EQ(printedBy("fish", "fish -n quorl-js.fish"), "");
  struct Row {
    std::string line;
    std::string offered;
  };
  const std::vector<Row> rows = {
      {"quorl-js --n",
       "--node-modules\tWith --recursive, include entries named node_modules\n"
       "--no-ignore\tWith --recursive, include what git ignores\n"
       "--no-progress\tHide the progress line\n"
       "--null\tSplit LIST at NUL bytes instead of line feeds\n"},
      {"quorl-js --diagnostics s",
       "stderr\tWrite the plug-in's diagnostic lines to a file or to stderr\n"},
      {"quorl-js --only cl",
       "class\tPrint only records with this label, or items of this kind\n"
       "classvar\tPrint only records with this label, or items of this kind\n"},
      {"quorl-js --only class,fun",
       "class,function\tPrint only records with this label, or items of this kind\n"},
      {"quorl-js --only=line,cla",
       "--only=line,class\tPrint only records with this label, or items of this kind\n"
       "--only=line,classvar\tPrint only records with this label, or items of this kind\n"},
      {"quorl-js --plugin folder/", "folder/f.js\n"},
      {"quorl-js --format j", "json\tChoose the output format\n"},
      {"quorl-js --out-dir folder/", ""},
      {"quorl-js --defines folder/", ""},
      {"quorl-js folder/", "folder/f.js\n"},
      {"quorl-js me", "merge\tJoin the ndjson outputs of several runs\n"},
      {"quorl-js folder/f.js me", ""},
      {"quorl-js merge --n", "--null\tSplit LIST at NUL bytes instead of line feeds\n"},
      {"quorl-js merge folder/", "folder/f.js\n"},
      {"quorl-js que", "query\tSearch an index\n"},
      {"quorl-js query --c",
       "--color\tColor outline\n--contains\tPrint items whose name contains TEXT\n"
       "--count\tPrint the number of items instead of the items\n"},
      {"quorl-js ls", "lsp\tServe an editor by the Language Server Protocol\n"},
      {"quorl-js lsp --t",
       "--timeout\tGive up on a file after SECONDS\n--trace\tLog every message to FILE\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    EXPECT_EQ(printedBy("fish", "source quorl-js.fish; complete -C '" + row.line + "'"),
              row.offered);
  }
}

// ---- The manual page

TEST_F(ManualPage, HasItsSections) {
  const std::string source = generated("man");
  EXPECT_EQ(source.rfind("quorl-js(1) \"quorl-js " QUORL_VERSION "\" \"User commands\"\n", 0), 0U);
  std::vector<std::string> sections;
  std::istringstream lines(source);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("# ", 0) == 0) sections.push_back(line.substr(2));
  }
  EXPECT_EQ(sections,
            (Words{"NAME", "SYNOPSIS", "DESCRIPTION", "WHICH FILES ARE READ", "LIMITS",
                   "TEXT LEFT OUT", "OUTPUT FILES", "OPTIONS", "EXIT STATUS", "MERGE", "LSP",
                   "INDEX", "QUERY", "STATUS", "VIEW", "FILES", "EXAMPLES", "SEE ALSO"}));
  for (const char* text :
       {"\n*quorl-js* _FILE_... [_OPTION_]...++\n",
        "\n*quorl-js* *--files-from* _LIST_ [_FILE_]... [_OPTION_]...++\n",
        "\n*quorl-js* *merge* _SHARD_... [_OPTION_]...++\n", "\n*quorl-js* *lsp* [_OPTION_]...++\n",
        "\n*quorl-js* *status* _INDEX_++\n",
        "\n*quorl-js* *view* _FILE_... *-o* _PAGE_ [_OPTION_]...\n",
        "\n*quorl-js* *query* _INDEX_... [_OPTION_]...\n",
        "\n*--at* _FILE_:_LINE_\n\tPrint the items that contain the line",
        "\n*--trace* _FILE_\n\tLog every message to FILE.",
        "\n*-j*, *--jobs* _N_\n\tParse N files in parallel",
        "\n*-0*, *--null*\n\tSplit LIST at NUL bytes instead of line feeds.\n\n",
        "\n*-V*, *--version*\n\tPrint", "\n## Limits\n", "entries named node\\_modules.\n",
        "\n*0*\n\tEvery file was read. An", "\n*0*\n\tEvery file was read.\n\n",
        "\n*quorl-js* *merge* [*--files-from* _LIST_ [*-0*]] [*-o* _FILE_] _SHARD_...\n"}) {
    EXPECT_NE(source.find(text), std::string::npos) << text;
  }
}

TEST_F(ManualPage, IsRefusedWithAPlaceThatNoTextIsFor) {
  EXPECT_EQ(runProgram("/bin/sh", {"-c", "printf '# NAME\\n@NOTHING@\\n' | \"$1\" --generate man",
                                   "sh", QUORL_JS_PATH}),
            (Outcome{2, "", "quorl-js: manual page: no text for @NOTHING@\n"}));
}

TEST_F(ManualPage, CompilesAndReadsWithoutAWarning) {
  if (!isInstalled("scdoc")) GTEST_SKIP() << "no scdoc";
  writeFile("source", generated("man"));
  const Outcome compiled = runProgram("/bin/sh", {"-c", "scdoc < source"});
  EXPECT_EQ(compiled.status, 0);
  EXPECT_EQ(compiled.err, "");
#ifndef __APPLE__  // whose man knows none of these options
  if (!isInstalled("man")) GTEST_SKIP() << "no man";
  writeFile("quorl-js.1", compiled.out);
  const Outcome shown = runProgram("/usr/bin/env", {"LC_ALL=C.UTF-8", "MANWIDTH=100", "man",
                                                    "--warnings", "-l", "-P", "cat", "quorl-js.1"});
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.err, "");
  for (const char* text : {"\n       quorl-js --files-from LIST [FILE]... [OPTION]...\n",
                           "\n       -0, --null\n", "control bytes as \\xNN.",
                           "src%2Fa%20b.js.records", "'LEVEL 2' --diagnostics lines.txt\n"}) {
    EXPECT_NE(shown.out.find(text), std::string::npos) << text << "\nis not in\n" << shown.out;
  }
#endif
}

}  // namespace
