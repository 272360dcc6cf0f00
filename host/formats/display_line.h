// Lines for people: columns, colors and the width of the terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "formats/format.h"

namespace host {

inline constexpr std::string_view kReset = "\x1b[0m";
inline constexpr std::string_view kBold = "\x1b[1m";
inline constexpr std::string_view kDim = "\x1b[2m";
inline constexpr std::string_view kRed = "\x1b[31m";
inline constexpr std::string_view kGreen = "\x1b[32m";
inline constexpr std::string_view kYellow = "\x1b[33m";
inline constexpr std::string_view kBlue = "\x1b[34m";
inline constexpr std::string_view kMagenta = "\x1b[35m";
inline constexpr std::string_view kCyan = "\x1b[36m";

// One line of the output, and how much room is left in it.
class DisplayLine {
 public:
  DisplayLine(const FormatSettings& settings, std::string& out);

  void skip(std::size_t columns);

  // Gives the columns that the text took up.
  std::size_t show(std::string_view text, std::string_view color);

  // The text in a column of its own, at its left or its right end.
  void showLeft(std::string_view text, std::string_view color, std::size_t columns);
  void showRight(std::string_view text, std::string_view color, std::size_t columns);

  // Moves a text of that level, counted from 0, to the right. otherColumns stand before it anyway;
  // levels that there is no room for become a number.
  void indent(std::size_t level, std::size_t otherColumns);

  void end() { out_ += "\n"; }

 private:
  const FormatSettings& settings_;
  std::string& out_;
  std::size_t columnsLeft_;
};

void showHeading(std::string_view path, const FormatSettings& settings, std::string& out);

// What a file has instead of a heading and lines below it. Returns false for one that was answered.
bool showUnanswered(const FileReport& report, const FormatSettings& settings, std::string& out);

// Below the lines of an answer that breaks off.
void showFault(std::string_view path, std::string_view fault, const FormatSettings& settings,
               std::string& out);

}  // namespace host
