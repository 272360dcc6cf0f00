// What the JSON formats have of a run and of a file besides its records.
#pragma once

#include <string>
#include <string_view>

#include "records/file_report.h"

namespace host {

// The schema, the tool and its version.
void appendHeaderMembers(std::string& out, std::string_view version);

// The report's status and message or, if its answer cannot be read, those of a fault.
struct FileOutcome {
  std::string_view status;
  std::string_view message;
};
FileOutcome outcomeOf(const FileReport& report, const std::string& fault);

// From path to omitted.
void appendFileMembers(std::string& out, const FileReport& report, const FileOutcome& outcome);

}  // namespace host
