#include "cli/option_table.h"

#include <algorithm>
#include <array>

#include "formats/format.h"
#include "outline/item.h"
#include "records/labels.h"
#include "system/text_parts.h"

namespace host {
namespace {

using Words = std::vector<std::string_view>;

// The labels of records and what else items can be.
Words selectionWords() {
  Words words(kLabels.begin(), kLabels.end());
  for (const std::string_view kind : outline::kindWords()) {
    if (std::find(words.begin(), words.end(), kind) == words.end()) words.push_back(kind);
  }
  return words;
}

constexpr std::string_view kGlobs = "a pattern such as *.js or src/";
constexpr std::string_view kSizes = "a size such as 64M or 2GiB, or 0 for no limit";

constexpr std::array<std::string_view, 8> kSynopses = {
    "quorl-js FILE... [OPTION]...",
    "quorl-js --files-from LIST [FILE]... [OPTION]...",
    "quorl-js --stdin NAME [OPTION]...",
    "quorl-js merge SHARD... [OPTION]...",
    "quorl-js lsp [OPTION]...",
    "quorl-js index INDEX [FILE]... [OPTION]...",
    "quorl-js query INDEX... [OPTION]...",
    "quorl-js status INDEX"};

constexpr std::array kOptions = {
    Option{.name = "--recursive",
           .shortName = "-r",
           .group = "Input",
           .help = "Read directories recursively",
           .details = "Files come in byte order of their paths. Links to directories are not "
                      "followed. Skips entries that start with a dot, entries named "
                      "node_modules, what git ignores, and binary files. A FILE that is named is "
                      "always read."},
    Option{.name = "--hidden",
           .neededName = "--recursive",
           .help = "With --recursive, include entries that start with a dot"},
    Option{.name = "--node-modules",
           .neededName = "--recursive",
           .help = "With --recursive, include entries named node_modules"},
    Option{.name = "--no-ignore",
           .neededName = "--recursive",
           .help = "With --recursive, include what git ignores",
           .details = "Without it, the .gitignore files, info/exclude and core.excludesFile of a "
                      "git work tree apply below its root, even to files that git tracks. A "
                      "directory that is named is walked even if git ignores it; then no rule "
                      "applies below it."},
    Option{.name = "--binary",
           .neededName = "--recursive",
           .help = "With --recursive, include binary files",
           .details = "A file is binary if its first 8 KiB hold a NUL byte."},
    Option{.name = "--include",
           .argument = "GLOB",
           .values = kGlobs,
           .mayRepeat = true,
           .neededName = "--recursive",
           .help = "With --recursive, read only files that match GLOB (repeatable)",
           .details = "A GLOB without a slash matches the name of an entry, one with a slash its "
                      "path below the FILE that is walked. * and ? stop at a slash, ** spans "
                      "directories, {a,b} matches a or b. A slash at the end matches directories "
                      "only. A directory that matches selects all that is below it."},
    Option{.name = "--exclude",
           .argument = "GLOB",
           .values = kGlobs,
           .mayRepeat = true,
           .neededName = "--recursive",
           .help = "With --recursive, skip files and directories that match GLOB (repeatable)",
           .details = "It wins over --include."},
    Option{.name = "--files-from",
           .argument = "LIST",
           .completion = Completion::kFiles,
           .help = "Read file names from LIST, one per line (- is stdin)",
           .details = "Empty lines are skipped. The files of the command line come first."},
    Option{.name = "--null",
           .shortName = "-0",
           .neededName = "--files-from",
           .help = "Split LIST at NUL bytes instead of line feeds"},
    Option{.name = "--stdin",
           .argument = "NAME",
           .completion = Completion::kFiles,
           .help = "Read standard input as a file called NAME",
           .details = "NAME selects how the text is read, and stands in the output. No file of "
                      "that name has to exist. Cannot be combined with FILE or --files-from."},
    Option{.name = "--format",
           .argument = "FORMAT",
           .words = formatNames,
           .group = "Output",
           .help = "Choose the output format: raw, json, ndjson, tree, outline, ctags or etags "
                   "(default: raw)",
           .details = "raw is the plug-in's own text, json one document, ndjson one object per "
                      "line, tree the records in the plug-in's own nesting. outline lists "
                      "definitions as the source nests them, with the lines where they begin and "
                      "end. ctags is a tags file for Vim and most editors, etags one for Emacs."},
    Option{.name = "--only",
           .argument = "LABEL",
           .words = selectionWords,
           .mayRepeat = true,
           .takesList = true,
           .help = "Print only records with this label, or items of this kind (repeatable, or "
                   "comma-separated)",
           .details = "json, ndjson and tree take labels; error stands for every label that begins "
                      "with it. outline, ctags and etags take kinds; without --only they hold "
                      "classes, interfaces, enums, namespaces, types, functions, methods, blocks "
                      "of other text and, outside of functions and classes, variables; tags also "
                      "hold fields. In json and ndjson a record keeps its numbers, so parentID and "
                      "childNodeIDs may name records that are not printed. Not for raw."},
    Option{.name = "--depth",
           .argument = "N",
           .values = "a number from 0 to 4294967295",
           .help = "Print only the top N levels",
           .details = "The file itself is level 0. Not for raw, ctags and etags."},
    Option{.name = "--ranges",
           .help = "Include the source lines, kind and name of each record (json, ndjson)"},
    Option{.name = "--times", .help = "Include each file's parse time (json, ndjson)"},
    Option{.name = "--output",
           .shortName = "-o",
           .argument = "FILE",
           .completion = Completion::kFiles,
           .help = "Write to FILE, which is replaced when the output is complete",
           .details =
               "The output is written to a new file beside FILE and renamed. With exit "
               "status 2, and after a signal, FILE is as it was. A FILE that is not a regular "
               "file is written directly; - is standard output."},
    Option{.name = "--out-dir",
           .argument = "DIR",
           .completion = Completion::kDirectories,
           .help = "Write one output file per input file, to the directory DIR",
           .details = "The name is the path of the input file, with bytes other than A-Z, a-z, "
                      "0-9, \".\", \"_\" and \"-\" as %XX, and .records at its end or, for "
                      "formats other than raw, the name of the format. No walk enters DIR."},
    Option{.name = "--color",
           .argument = "WHEN",
           .words =
               [] {
                 return Words{"auto", "always", "never"};
               },
           .help = "Color outline and tree: auto, always or never (default: auto)",
           .details = "auto means: on a terminal, unless the environment variable NO_COLOR is "
                      "set."},
    Option{.name = "--defines",
           .argument = "NAME",
           .mayRepeat = true,
           .group = "Plug-in",
           .help = "Add NAME to the record of defines (repeatable)"},
    Option{.name = "--plugin",
           .argument = "PATH",
           .completion = Completion::kFiles,
           .help = "Load the plug-in from PATH (default: the one installed with quorl-js)"},
    Option{.name = "--diagnostics",
           .argument = "WHERE",
           .completion = Completion::kFiles,
           .words =
               [] {
                 return Words{"none", "stderr"};
               },
           .help = "Write the plug-in's diagnostic lines to a file or to stderr (default: none)",
           .details = "The file is overwritten, and may not be an input. To keep the lines in "
                      "order, files are parsed one at a time."},
    Option{.name = "--jobs",
           .shortName = "-j",
           .argument = "N",
           .values = "a number from 1 to 256",
           .group = "Limits",
           .help = "Parse N files in parallel, 1 to 256 (default: number of CPU cores)"},
    Option{.name = "--timeout",
           .argument = "SECONDS",
           .values = "seconds such as 30 or 2.5, or 0 for no limit",
           .help = "Give up on a file after SECONDS (default: 60; 0 = never)"},
    Option{.name = "--max-memory",
           .argument = "SIZE",
           .values = "a size of at least 64M such as 512M or 2GiB, or 0 for no limit",
           .help = "Limit a worker's address space to SIZE (default: a share of the machine's "
                   "memory; 0 = no limit)",
           .details = "It is at least 64M. By default the workers share the memory of the machine "
                      "or control group, and "
                      "a file that needs more than a share is parsed again with all of it."},
    Option{.name = "--max-output",
           .argument = "SIZE",
           .values = kSizes,
           .help = "Fail files whose raw answer is larger than SIZE (default: no limit)"},
    Option{.name = "--max-size",
           .argument = "SIZE",
           .values = kSizes,
           .help = "Skip files larger than SIZE (default: 256M; 0 = no limit)"},
    Option{.name = "--strict",
           .group = "Messages",
           .help = "Treat warnings as errors: the plug-in's own, text left out, changed files, "
                   "retries, an empty run",
           .details = "So are irregular files, a repository that cannot be read, and an --include "
                      "that no file matches."},
    Option{.name = "--quiet",
           .shortName = "-q",
           .help = "Suppress messages about individual files, including the plug-in's own",
           .details = "The exit status is unchanged."},
    Option{.name = "--no-progress",
           .help = "Hide the progress line",
           .details = "It is shown on standard error if that is a terminal and the output goes "
                      "elsewhere."},
    kHelpOption,
    Option{.name = "--version",
           .shortName = "-V",
           .help = "Print the versions of quorl-js and the plug-in, and the plug-in's path"},
};

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

// The row of the program's own option.
constexpr Option optionCalled(std::string_view name) {
  return *std::find_if(kOptions.begin(), kOptions.end(),
                       [name](const Option& option) { return option.name == name; });
}

constexpr std::array<std::string_view, 2> kIndexSynopses = {
    "quorl-js index INDEX [FILE]... [OPTION]...",
    "quorl-js index INDEX --from-ndjson SHARD... [OPTION]..."};

constexpr std::array kIndexOptions = {
    optionCalled("--recursive"),
    optionCalled("--hidden"),
    optionCalled("--node-modules"),
    optionCalled("--no-ignore"),
    optionCalled("--binary"),
    optionCalled("--include"),
    optionCalled("--exclude"),
    optionCalled("--files-from"),
    optionCalled("--null"),
    Option{.name = "--from-ndjson",
           .help = "Read SHARDs, the outputs of --format ndjson --ranges, instead of sources",
           .details = "Each is a regular file. INDEX is built anew from them. Of a file that is in "
                      "several SHARDs the first counts."},
    Option{.name = "--no-wait",
           .group = "Index",
           .help = "Fail if another process is writing INDEX, instead of waiting for it"},
    optionCalled("--defines"),
    optionCalled("--plugin"),
    optionCalled("--jobs"),
    optionCalled("--timeout"),
    optionCalled("--max-memory"),
    optionCalled("--max-output"),
    optionCalled("--max-size"),
    optionCalled("--strict"),
    optionCalled("--quiet"),
    optionCalled("--no-progress"),
    kHelpOption,
};

constexpr std::array kIndexStatuses = {
    ExitStatus{"0", "INDEX is up to date, and every file was read."},
    ExitStatus{"1", "Some file was not read. With --strict, also a warning. INDEX is complete."},
    ExitStatus{
        "2",
        "The command failed: wrong usage, no working plug-in, an INDEX that is another kind of "
        "file or could not be written. INDEX is as it was."},
};

constexpr std::array kIndexExamples = {
    Example{"Index the scripts below src, and later what has changed there:",
            "quorl-js index code.index -r src\nquorl-js index code.index"},
    Example{"Index what other machines have read:",
            "quorl-js index code.index --from-ndjson shards/*.ndjson"},
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
    "searches that file, and status tells what has changed since. Each has a --help of its own, "
    "such as quorl-js merge --help.",
    kOptions,
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

constinit const Command kIndex = {
    "quorl-js index",
    "INDEX",
    kIndexSynopses,
    "Keep the outline of each FILE in INDEX, an SQLite database. Of the files that it has, only "
    "those that have changed are read again; files that are gone or no longer asked for are "
    "dropped. Without FILE, those of the last time are taken, with their options. INDEX is "
    "replaced when the new one is complete, so it can be read meanwhile.",
    kIndexOptions,
    {.name = "--", .help = "Treat every further argument as INDEX or FILE"},
    kIndexStatuses,
    kIndexExamples};

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
    Subcommand{"status", kStatus, "Print what an index holds, and what has changed since"}};

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
