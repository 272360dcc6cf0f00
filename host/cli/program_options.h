// The options of the program itself, some of which its commands have too.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "cli/option_table.h"
#include "formats/format.h"
#include "outline/item.h"
#include "records/labels.h"

namespace host {

// The labels of records and what else items can be.
inline std::vector<std::string_view> selectionWords() {
  std::vector<std::string_view> words(kLabels.begin(), kLabels.end());
  for (const std::string_view kind : outline::kindWords()) {
    if (std::find(words.begin(), words.end(), kind) == words.end()) words.push_back(kind);
  }
  return words;
}

inline constexpr std::string_view kGlobs = "a pattern such as *.js or src/";
inline constexpr std::string_view kSizes = "a size such as 64M or 2GiB, or 0 for no limit";

inline constexpr std::array kProgramOptions = {
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
           .help = "Choose the output format: raw, json, ndjson, columns, tree, outline, ctags or "
                   "etags (default: raw)",
           .details = "raw is the plug-in's own text, json one document, ndjson one object per "
                      "line, columns the outline of each file as lists on one line. tree prints "
                      "the records in the plug-in's own nesting. outline lists "
                      "definitions as the source nests them, with the lines where they begin and "
                      "end. ctags is a tags file for Vim and most editors, etags one for Emacs."},
    Option{.name = "--only",
           .argument = "LABEL",
           .words = selectionWords,
           .mayRepeat = true,
           .takesList = true,
           .help = "Print only records with this label, or items of this kind (repeatable, or "
                   "comma-separated)",
           .details =
               "json, ndjson and tree take labels; error stands for every label that begins "
               "with it. columns, outline, ctags and etags take kinds. Without --only, columns "
               "holds all items, and the others hold classes, interfaces, enums, namespaces, "
               "types, functions, methods, blocks of other text and, outside of functions and "
               "classes, variables; tags also hold fields. In json and ndjson a record keeps its "
               "numbers, so parentID and "
               "childNodeIDs may name records that are not printed. Not for raw."},
    Option{.name = "--depth",
           .argument = "N",
           .values = "a number from 0 to 4294967295",
           .help = "Print only the top N levels",
           .details = "The file itself is level 0. Not for raw, columns, ctags and etags."},
    Option{.name = "--ranges",
           .help = "Include the source lines, kind and name of each record (json, ndjson)"},
    Option{.name = "--times", .help = "Include each file's parse time (json, ndjson, columns)"},
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
                 return std::vector<std::string_view>{"auto", "always", "never"};
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
                 return std::vector<std::string_view>{"none", "stderr"};
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

// The row of the program's own option.
consteval Option optionCalled(std::string_view name) {
  return *std::find_if(kProgramOptions.begin(), kProgramOptions.end(),
                       [name](const Option& option) { return option.name == name; });
}

}  // namespace host
