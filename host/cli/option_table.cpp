#include "cli/option_table.h"

#include <array>

#include "cli/program_options.h"
#include "system/text_parts.h"

namespace host {
namespace {

constexpr std::array<std::string_view, 9> kSynopses = {
    "quorl-js FILE... [OPTION]...",
    "quorl-js --files-from LIST [FILE]... [OPTION]...",
    "quorl-js --stdin NAME [OPTION]...",
    "quorl-js merge SHARD... [OPTION]...",
    "quorl-js lsp [OPTION]...",
    "quorl-js index INDEX [FILE]... [OPTION]...",
    "quorl-js query INDEX... [OPTION]...",
    "quorl-js status INDEX",
    "quorl-js view FILE... -o PAGE [OPTION]..."};

constexpr std::array kHiddenOptions = {
    Option{.name = "--generate",
           .argument = "KIND",
           .help = "Print a text that is made from these tables"},
};

constexpr std::array kStatuses = {
    ExitStatus{"0", "Every file was read. An empty file counts as read."},
    ExitStatus{"1",
               "Some file was not read: it failed, is a directory that could not be listed, or "
               "is not a regular file. With --strict, also a warning. The output is complete."},
    ExitStatus{"2",
               "The run failed: wrong usage, no working plug-in, an unreadable LIST, output that "
               "could not be written."},
};

constexpr std::array kExamples = {
    Example{"Print the records of two files:", "quorl-js a.js b.html"},
    Example{"Print the outline of a file:", "quorl-js a.js --format outline"},
    Example{"List the classes and functions below a directory:",
            "quorl-js -r src --format outline --only class,function"},
    Example{"Write a tags file for Vim, and one for Emacs:",
            "quorl-js -r . --format ctags -o tags\nquorl-js -r . --format etags -o TAGS"},
    Example{"Write the records of a project to a file:",
            "quorl-js -r . --format ndjson -o records.ndjson"},
    Example{"Write one file of records per source file:",
            "mkdir records\nquorl-js -r src --out-dir records"},
    Example{"Read the scripts that git tracks, whatever their names:",
            "git ls-files -z '*.js' | quorl-js --files-from - -0"},
    Example{"Read the text of an editor's buffer:", "quorl-js --stdin src/a.js <buffer"},
    Example{"Read untrusted files, with tighter limits:",
            "quorl-js -r uploads --timeout 5 --max-memory 512M --max-size 1M"},
    Example{"Pass defines, and keep the plug-in's diagnostic lines:",
            "quorl-js a.js --defines DEBUG --defines 'LEVEL 2' --diagnostics lines.txt"},
};

constexpr std::array<std::string_view, 1> kMergeSynopses = {
    "quorl-js merge [--files-from LIST [-0]] [-o FILE] SHARD..."};

constexpr std::array kMergeOptions = {
    Option{.name = "--files-from",
           .argument = "LIST",
           .completion = Completion::kFiles,
           .help = "Write files in the order of LIST, one name per line (- is stdin)",
           .details = "Each file must be in a SHARD as often as in LIST. Without LIST, files come "
                      "in the order of the SHARDs."},
    Option{.name = "--null",
           .shortName = "-0",
           .neededName = "--files-from",
           .help = "Split LIST at NUL bytes instead of line feeds"},
    Option{.name = "--output",
           .shortName = "-o",
           .argument = "FILE",
           .completion = Completion::kFiles,
           .help = "Write to FILE, which is replaced when the output is complete",
           .details = "FILE may not be a SHARD."},
    kHelpOption,
};

constexpr std::array kMergeStatuses = {
    ExitStatus{"0", "Every file was read."},
    ExitStatus{"1", "Some file was not read. Its file line has the status."},
    ExitStatus{"2",
               "The command failed: wrong usage, a SHARD or LIST that is unreadable, cut or does "
               "not fit the others, output that could not be written."},
};

constexpr std::array kMergeExamples = {
    Example{"Join the outputs of several machines, in the order of the list they shared:",
            "quorl-js merge --files-from list shards/*.ndjson >records.ndjson"},
};

constexpr std::array<std::string_view, 1> kLspSynopses = {"quorl-js lsp [OPTION]..."};

constexpr std::array kLspOptions = {
    Option{.name = "--stdio",
           .help = "Use standard input and output, as always",
           .details = "Some editors pass it."},
    Option{.name = "--trace",
           .argument = "FILE",
           .completion = Completion::kFiles,
           .help = "Log every message to FILE",
           .details = "FILE is overwritten. It holds the texts that are open in the editor."},
    Option{.name = "--index",
           .argument = "INDEX",
           .completion = Completion::kFiles,
           .help = "Search the workspace in INDEX, see quorl-js index, instead of reading it",
           .details = "It is opened again when it has been replaced. Texts that are open in the "
                      "editor count before it."},
    optionCalled("--plugin"),
    Option{.name = "--timeout",
           .argument = "SECONDS",
           .values = "seconds such as 30 or 2.5, or 0 for no limit",
           .help = "Give up on a file after SECONDS (default: 10; 0 = never)"},
    Option{.name = "--max-size",
           .argument = "SIZE",
           .values = kSizes,
           .help = "Skip files larger than SIZE (default: 256M; 0 = no limit)",
           .details = "The search over the workspace skips files larger than 4M in any case."},
    kHelpOption,
};

constexpr std::array kLspStatuses = {
    ExitStatus{"0", "The editor has ended the server."},
    ExitStatus{"1", "The editor has gone without a shutdown."},
    ExitStatus{"2",
               "The server could not be started: wrong usage, no plug-in, no directory for "
               "texts that are not saved."},
};

constexpr std::array kLspExamples = {
    Example{"What to enter as the server's command in an editor:", "quorl-js lsp"},
    Example{"Log the messages of a session:", "quorl-js lsp --trace /tmp/lsp.log"},
};

}  // namespace

constinit const Command kProgram = {
    "quorl-js",
    "FILE",
    kSynopses,
    "Print the structure records of each FILE. merge joins the ndjson output of several runs, lsp "
    "is a language server for editors, index keeps the outline of a code base in a file, query "
    "searches that file, status tells what has changed since, and view writes a page for a "
    "browser. "
    "Each has a --help of its own, such as quorl-js merge --help.",
    kProgramOptions,
    {.name = "--", .help = "Treat every further argument as a FILE"},
    kStatuses,
    kExamples,
    kHiddenOptions};

constinit const Command kMerge = {
    "quorl-js merge",
    "SHARD",
    kMergeSynopses,
    "Join the ndjson outputs of several runs into one, with one header and the files renumbered. A "
    "SHARD is a regular file, since it is read twice; it may hold several outputs. Nothing is "
    "written if a SHARD is cut, lacks a file that its header announces, or is empty while there is "
    "no LIST.",
    kMergeOptions,
    {.name = "--", .help = "Treat every further argument as a SHARD"},
    kMergeStatuses,
    kMergeExamples};

constinit const Command kLsp = {
    "quorl-js lsp",
    "ARGUMENT",
    kLspSynopses,
    "Serve an editor over standard input and output, by the Language Server Protocol: outlines, "
    "folding, selections, and symbols of the workspace, also for files that do not compile. Texts "
    "that are not saved lie in a private directory below TMPDIR meanwhile.",
    kLspOptions,
    {.name = "--", .help = "End the options"},
    kLspStatuses,
    kLspExamples,
    {},
    Completion::kNothing};

namespace {

constexpr std::array kSubcommandRows = {
    Subcommand{"merge", kMerge, "Join the ndjson outputs of several runs"},
    Subcommand{"lsp", kLsp, "Serve an editor by the Language Server Protocol"},
    Subcommand{"index", kIndex, "Keep the outline of a code base in a file"},
    Subcommand{"query", kQuery, "Search an index"},
    Subcommand{"status", kStatus, "Print what an index holds, and what has changed since"},
    Subcommand{"view", kView, "Write a page that shows the structure in a browser"}};

}  // namespace

constinit const std::span<const Subcommand> kSubcommands = kSubcommandRows;

std::string labelOf(const Option& option) {
  std::string label;
  if (!option.shortName.empty()) label.append(option.shortName).append(", ");
  label += option.name;
  if (!option.argument.empty()) label.append(" ").append(option.argument);
  return label;
}

std::string descriptionOf(const Option& option) {
  std::string text = std::string(option.help) + ".";
  if (!option.details.empty()) text.append(" ").append(option.details);
  return text;
}

std::string_view summary(const Option& option) {
  const std::string_view text = option.help.substr(0, option.help.find_first_of(":;("));
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string joinedWords(const Option& option) {
  return option.words == nullptr ? std::string() : joined(option.words(), " ");
}

}  // namespace host
