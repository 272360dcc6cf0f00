// The options of "quorl-js index".
#include <array>
#include <string_view>

#include "cli/option_table.h"
#include "cli/program_options.h"

namespace host {
namespace {

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

}  // namespace

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

}  // namespace host
