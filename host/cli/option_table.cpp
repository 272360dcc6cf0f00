#include "cli/option_table.h"

#include <array>

namespace host {
namespace {

constexpr std::array<std::string_view, 3> kSynopses = {
    "quorl-js FILE... [OPTION]...", "quorl-js --files-from LIST [FILE]... [OPTION]...",
    "quorl-js merge SHARD... [OPTION]..."};

constexpr std::array kOptions = {
    Option{.name = "--recursive",
           .help = "take the regular files below each FILE that is a directory; they come in byte "
                   "order of their paths, links to directories below it are not followed, and "
                   "entries with a leading dot or the name node_modules are left out"},
    Option{.name = "--hidden",
           .neededName = "--recursive",
           .help = "with --recursive, take entries with a leading dot too"},
    Option{.name = "--node-modules",
           .neededName = "--recursive",
           .help = "with --recursive, take entries called node_modules too"},
    Option{.name = "--files-from",
           .argument = "LIST",
           .completion = Completion::kFiles,
           .help = "read the names of further FILEs from the file LIST; they stand one a line, "
                   "empty lines are skipped, and a LIST of - is standard input"},
    Option{.name = "--null",
           .shortName = "-0",
           .neededName = "--files-from",
           .help = "names in LIST end in NUL bytes instead of line feeds"},
    Option{.name = "--format",
           .argument = "FORMAT",
           .words = "raw json ndjson tree",
           .help = "the form of the output: raw (the plug-in's own text, as without this option), "
                   "json (one document), ndjson (one object a line) or tree (an outline to read)"},
    Option{
        .name = "--depth", .argument = "N", .help = "of an outline, the N uppermost levels only"},
    Option{.name = "--only",
           .argument = "LABEL",
           .mayRepeat = true,
           .help = "of an outline, the records with that label only; several stand with commas "
                   "between them or each with an --only of its own"},
    Option{.name = "--times",
           .help = "give in json and ndjson how long the plug-in took over each file"},
    Option{.name = "--out-dir",
           .argument = "DIR",
           .completion = Completion::kDirectories,
           .help = "write the output for each FILE to a file of its own in the directory DIR; "
                   "nothing goes to standard output, no walk goes into DIR, and the file is named "
                   "after FILE as given, with bytes other than A-Z, a-z, 0-9, \".\", \"_\" and "
                   "\"-\" as %XX, and .records or, for another format than raw, the format's "
                   "name behind it"},
    Option{.name = "--defines",
           .argument = "NAME",
           .mayRepeat = true,
           .help = "a name for the record of the defines; may be given several times"},
    Option{.name = "--plugin",
           .argument = "PATH",
           .completion = Completion::kFiles,
           .help = "the plug-in module to load instead of the one that came with quorl-js"},
    Option{.name = "--diagnostics",
           .argument = "WHERE",
           .completion = Completion::kFiles,
           .words = "none stderr",
           .help = "where the plug-in's diagnostic lines go: none (as without this option), "
                   "stderr, or the name of a file, which is overwritten and may not be one to "
                   "read; for their order, files are read one at a time with the last two"},
    Option{.name = "--jobs",
           .shortName = "-j",
           .argument = "N",
           .help = "read N files at a time, 1 to 256; without this option, as many as there are "
                   "processor cores to use"},
    Option{.name = "--timeout",
           .argument = "SECONDS",
           .help = "the most time for a file, also as a fraction; 60 without this option, and 0 "
                   "for no limit"},
    Option{.name = "--max-memory",
           .argument = "SIZE",
           .help = "limit the memory for a file, that is, the address space of its worker, to "
                   "SIZE, at least 64M (default: the workers share the memory of the machine or "
                   "control group, and a file that needs more than a share gets all of it; 0 = no "
                   "limit)"},
    Option{.name = "--max-output",
           .argument = "SIZE",
           .help = "the longest text that the plug-in may give for a file; no limit without this "
                   "option, nor with 0"},
    Option{.name = "--max-size",
           .argument = "SIZE",
           .help = "the largest file that is read; 256M without this option, and 0 for no limit"},
    Option{.name = "--strict",
           .help = "let the run fail by what is only told otherwise: an entry below a directory "
                   "that is no regular file, a file that needed a second attempt or changed while "
                   "it was read, nothing to read at all"},
    Option{.name = "--quiet",
           .shortName = "-q",
           .help = "tell nothing of single files on standard error, and let the plug-in tell "
                   "nothing there either; the exit status stays"},
    Option{.name = "--no-progress",
           .help = "do not show how far the run is; that is shown on standard error if it is a "
                   "terminal and the output goes elsewhere"},
    Option{.name = "--color",
           .argument = "WHEN",
           .words = "auto always never",
           .help = "colour the outline: auto (as without this option: on a terminal, unless the "
                   "environment variable NO_COLOR is set), always or never"},
    Option{.name = "--help", .help = "print this text and stop"},
    Option{.name = "--version",
           .help = "print the versions of quorl-js and of the plug-in and stop"},
};

constexpr std::array kHiddenOptions = {
    Option{.name = "--generate",
           .argument = "KIND",
           .help = "print a text that is made from these tables and stop; for the build"},
};

constexpr std::array kStatuses = {
    ExitStatus{"0", "every file was read"},
    ExitStatus{"1",
               "a file was not: its error answer is written as its answer, the message to standard "
               "error; a directory that cannot be read and a FILE that is neither a regular file "
               "nor a directory count too, and see --strict"},
    ExitStatus{"2",
               "wrong usage, no working plug-in, a LIST that cannot be read, or output that could "
               "not be written"},
};

constexpr std::array kExamples = {
    Example{"The records of two files, one after the other:", "quorl-js a.js b.html"},
    Example{"All functions below a directory, out of lines of JSON:",
            "quorl-js --recursive src --format ndjson |\n"
            "  jq 'select(.branchTypeAsString == \"function\").contents'"},
    Example{"The classes and functions of a file, to look at:",
            "quorl-js a.js --format tree --only class,function"},
    Example{"All files below a directory, with an answer file for each:",
            "mkdir records\nquorl-js --recursive src --out-dir records"},
    Example{"The scripts that git knows, whatever their names hold:",
            "git ls-files -z '*.js' | quorl-js --files-from - --null"},
    Example{"Files that nobody vouches for, with less for each:",
            "quorl-js --recursive uploads --timeout 5 --max-memory 512M --max-size 1M"},
    Example{"Defines, and the plug-in's diagnostic lines in a file:",
            "quorl-js a.js --defines DEBUG --defines 'LEVEL 2' --diagnostics lines.txt"},
};

constexpr std::array<std::string_view, 1> kMergeSynopses = {
    "quorl-js merge [--files-from LIST [-0]] SHARD..."};

constexpr std::array kMergeOptions = {
    Option{.name = "--files-from",
           .argument = "LIST",
           .completion = Completion::kFiles,
           .help = "the names of all files, one a line, a LIST of - being standard input: the "
                   "files come in its order, and each must be in a SHARD as often as in LIST; "
                   "without LIST they come in the order of the SHARDs"},
    Option{.name = "--null",
           .shortName = "-0",
           .neededName = "--files-from",
           .help = "names in LIST end in NUL bytes instead of line feeds"},
    Option{.name = "--help", .help = "print this text and stop"},
};

constexpr std::array kMergeStatuses = {
    ExitStatus{"0", "every file was answered"},
    ExitStatus{"1", "the line of a file tells that it was not"},
    ExitStatus{"2",
               "wrong usage, a SHARD or LIST that cannot be read, is cut or does not fit the "
               "others, or output that could not be written"},
};

constexpr std::array kMergeExamples = {
    Example{"The outputs of several machines, in the order of the list that they shared out:",
            "quorl-js merge --files-from list shards/*.ndjson >records.ndjson"},
};

}  // namespace

constinit const Command kProgram = {
    "quorl-js",
    "FILE",
    kSynopses,
    "Prints the structure records of each FILE on standard output, one answer after the other. "
    "merge joins the output of several ndjson runs; see quorl-js merge --help.",
    kOptions,
    {.name = "--", .help = "every argument behind it is a FILE"},
    kStatuses,
    kExamples,
    kHiddenOptions};

constinit const Command kMerge = {
    "quorl-js merge",
    "SHARD",
    kMergeSynopses,
    "Joins the ndjson outputs of several runs into one with one header and the files numbered "
    "anew, and writes it to standard output. A SHARD is a regular file, since it is read twice, "
    "and may hold several outputs, one after the other. Nothing is written when a SHARD is cut or "
    "lacks a file that its header tells of, or is empty and there is no LIST.",
    kMergeOptions,
    {.name = "--", .help = "every argument behind it is a SHARD"},
    kMergeStatuses,
    kMergeExamples};

std::string_view summary(const Option& option) {
  return option.help.substr(0, option.help.find_first_of(":;"));
}

}  // namespace host
