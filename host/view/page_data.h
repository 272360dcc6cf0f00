// What a page shows, in the columns that its script reads.
//
// The bytes begin with "QJVIEW1\n", the length of the header (4 bytes, like all numbers with the
// lowest byte first), and 4 bytes of zero. The header is JSON, padded with spaces to a multiple of
// 8 bytes; its "columns" name the columns that follow, with the type and count of their values,
// each padded with zeros likewise. A column of texts is two: the lengths, under the name with a
// "#", and the bytes of all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "index/rows.h"

namespace host::view {

class ColumnWriter;

enum class SourceChoice {
  kIfSmall,  // put them into the page if they have less than kSmallSources together
  kAlways,
  kNever,
};

inline constexpr std::size_t kSmallSources = std::size_t{4} << 20;

// With more items, plain statements are left out unless all are wanted.
inline constexpr std::size_t kManyItems = 200'000;

// Names and item texts are cut behind so many bytes; texts behind fewer with more than kSomeItems.
inline constexpr std::size_t kLongText = 2000;
inline constexpr std::size_t kShortText = 200;
inline constexpr std::size_t kSomeItems = 20'000;

class PageData {
 public:
  PageData(bool keepsAllItems, SourceChoice sources)
      : keepsAllItems_(keepsAllItems), sourceChoice_(sources) {}

  // The next file of the page, with its items. Without a source, sizes in bytes are unknown.
  void addFile(std::string_view path, const index::FileRow& row, const index::NextItem& next,
               std::optional<std::string_view> source);

  // All that was added, as the page's script reads it. Nothing can be added afterwards.
  std::string finish();

 private:
  struct Texts {
    void add(std::string_view text);

    std::vector<std::uint32_t> lengths;
    std::string bytes;
  };

  struct File {
    std::uint8_t status = 0;
    double size = 0;
    std::uint32_t lines = 0;
    std::uint32_t records = 0;
    std::uint32_t items = 0;
    std::uint32_t hidden = 0;
    std::uint32_t omittedLines = 0;
    double omittedBytes = 0;
    bool hasSource = false;
  };

  struct Item {
    std::uint8_t kind = 0;
    bool isCut = false;
    bool isPlain = false;  // a statement that defines nothing
    std::uint16_t label = 0;
    std::uint32_t line = 0;
    std::uint32_t more = 0;
    std::uint32_t parent = 0;  // one more than its number, or 0
    std::uint32_t bytes = 0;
    std::uint32_t nameBytes = 0;
    std::uint32_t textBytes = 0;
  };

  // Where the items of a file begin.
  struct Place {
    std::size_t file = 0;
    std::size_t item = 0;
    std::size_t name = 0;  // in the texts
    std::size_t text = 0;
  };

  bool hasSources() const { return sourceChoice_ != SourceChoice::kNever; }
  void takeSource(const std::optional<std::string_view>& source);
  void takeItems(const index::NextItem& next, std::string_view source);
  std::uint8_t statusNumber(std::string_view status);
  std::uint16_t labelNumber(std::string_view label);
  void applyLimits(const Place& from);
  std::string header() const;
  void appendFiles(ColumnWriter& out) const;
  void appendItems(ColumnWriter& out) const;

  bool keepsAllItems_;
  SourceChoice sourceChoice_;
  bool leavesPlainOut_ = false;
  std::size_t textLimit_ = kLongText;
  std::vector<File> files_;
  std::vector<Item> items_;
  std::string names_;  // of all items, one behind the other
  std::string texts_;
  Texts paths_;
  Texts messages_;
  Texts omitted_;
  Texts sources_;
  std::vector<std::string> statuses_;
  std::vector<std::string> labels_;
  std::map<std::string, std::uint16_t, std::less<>> labelNumbers_;
};

}  // namespace host::view
