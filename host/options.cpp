#include "options.h"

#include <array>

namespace host {
namespace {

constexpr std::array<std::string_view, 2> kSynopsisTable = {
    "quorl-js FILE... [OPTION]...", "quorl-js --files-from LIST [FILE]... [OPTION]..."};

constexpr std::array kOptionTable = {
    Option{.name = "--recursive",
           .help = "take the regular files below each FILE that is a directory; they come in byte "
                   "order of their paths, links to directories are not followed, and entries with "
                   "a leading dot or the name node_modules are left out"},
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
    Option{.name = "--out-dir",
           .argument = "DIR",
           .completion = Completion::kDirectories,
           .help = "write each answer to a file of its own in the directory DIR; nothing goes to "
                   "standard output, and the file is named after FILE as given, with bytes other "
                   "than A-Z, a-z, 0-9, \".\", \"_\" and \"-\" as %XX, and .records behind it"},
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
                   "stderr, or the name of a file, which is overwritten"},
    Option{.name = "--help", .help = "print this text and stop"},
    Option{.name = "--version",
           .help = "print the versions of quorl-js and of the plug-in and stop"},
};

constexpr std::array kStatusTable = {
    ExitStatus{"0", "every file was read"},
    ExitStatus{"1",
               "a file was not: its error answer is written as its answer, the message to standard "
               "error; a directory that cannot be read and a FILE that is neither a regular file "
               "nor a directory count too"},
    ExitStatus{"2",
               "wrong usage, no working plug-in, a LIST that cannot be read, or output that could "
               "not be written"},
};

}  // namespace

constinit const std::span<const std::string_view> kSynopses = kSynopsisTable;
constinit const std::string_view kPurpose =
    "Prints the structure records of each FILE on standard output, one answer after the other.";
constinit const std::span<const Option> kOptions = kOptionTable;
constinit const Option kEndOfOptions = {.name = "--", .help = "every argument behind it is a FILE"};
constinit const std::span<const ExitStatus> kExitStatuses = kStatusTable;

std::string_view summary(const Option& option) {
  return option.help.substr(0, option.help.find_first_of(":;"));
}

}  // namespace host
