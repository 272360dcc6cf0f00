// The functions that the table of formats is made of; see format.h.
#pragma once

#include <string>

#include "formats/format.h"

namespace host {

std::string writeRawFile(const FileReport& report, const FormatSettings& settings,
                         std::string& out);

void beginJson(const FormatSettings& settings, std::string& out);
std::string writeJsonFile(const FileReport& report, const FormatSettings& settings,
                          std::string& out);
void endJson(const FormatSettings& settings, std::string& out);

void beginNdjson(const FormatSettings& settings, std::string& out);
std::string writeNdjsonFile(const FileReport& report, const FormatSettings& settings,
                            std::string& out);

std::string writeColumnsFile(const FileReport& report, const FormatSettings& settings,
                             std::string& out);

std::string writeTreeFile(const FileReport& report, const FormatSettings& settings,
                          std::string& out);

std::string writeOutlineFile(const FileReport& report, const FormatSettings& settings,
                             std::string& out);

std::string writeCtagsFile(const FileReport& report, const FormatSettings& settings,
                           std::string& out);

std::string writeEtagsFile(const FileReport& report, const FormatSettings& settings,
                           std::string& out);

}  // namespace host
