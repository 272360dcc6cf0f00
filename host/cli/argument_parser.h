// The arguments of a command, as its table of options tells how to read them.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/option_table.h"
#include "system/failure.h"

namespace host {

class ArgumentParser {
 public:
  // Takes them as main does: the first is the command's own name. Throws Failure for arguments that
  // do not follow the table.
  ArgumentParser(const Command& command, int argc, const char* const* argv);

  // Whether the help is asked for; the rest is then as if not given.
  bool isHelpWanted() const { return isHelpWanted_; }

  bool isGiven(std::string_view option) const { return values_.find(option) != values_.end(); }

  // The value of an option that may be given once.
  std::optional<std::string> valueOf(std::string_view option) const;

  // All values of an option, in their order.
  std::vector<std::string> valuesOf(std::string_view option) const;

  // The arguments that are no options, byte for byte and in their order.
  const std::vector<std::string>& operands() const { return operands_; }

  // What to throw for arguments that cannot be followed: it tells where the help is too.
  Failure failure(const std::string& message) const;

 private:
  std::string helpHint_;
  bool isHelpWanted_ = false;
  std::map<std::string, std::vector<std::string>, std::less<>> values_;  // of the options given
  std::vector<std::string> operands_;
};

}  // namespace host
