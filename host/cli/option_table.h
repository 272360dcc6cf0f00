// What the program tells of its command line. Each text stands here once: the reading of the
// arguments, --help, the completions and the manual page are made from these tables.
#pragma once

#include <span>
#include <string_view>

namespace host {

// What a shell offers for an option's argument.
enum class Completion { kNothing, kFiles, kDirectories };

struct Option {
  std::string_view name;
  std::string_view shortName = {};  // or empty
  std::string_view argument = {};   // what its value is called; empty for an option without one
  Completion completion = Completion::kNothing;
  std::string_view words = {};       // values with a meaning of their own, with blanks between them
  bool mayRepeat = false;            // each value counts; without an argument any option may repeat
  std::string_view neededName = {};  // the option that this one is of no use without, or empty
  std::string_view help;             // goes on from the option's name; see summary
};

struct ExitStatus {
  std::string_view status;
  std::string_view meaning;
};

struct Example {
  std::string_view purpose;   // with a colon behind it
  std::string_view commands;  // one a line
};

struct Command {
  std::string_view name;                       // how it is called
  std::string_view operand;                    // what an argument is called that is no option
  std::span<const std::string_view> synopses;  // the forms of the command line
  std::string_view purpose;                    // what the command does, in a sentence or two
  std::span<const Option> options;             // in the order of --help
  Option endOfOptions;                         // "--", which is no option to look up
  std::span<const ExitStatus> statuses;
  std::span<const Example> examples;
  std::span<const Option> hiddenOptions = {};  // which no text tells of
};

extern const Command kProgram;  // the program as such
extern const Command kMerge;    // what it does when its first argument is merge

// The option's help up to its first colon or semicolon: as much as a completion has room for.
std::string_view summary(const Option& option);

}  // namespace host
