#include "merge/shard.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>

#include "formats/json_text.h"
#include "formats/ndjson_lines.h"
#include "records/status_words.h"
#include "system/failure.h"

namespace host {
namespace {

// The values of header and file lines. Those of lines that were written elsewhere may be missing.
struct LineValues {
  std::optional<std::string> path;
  std::optional<std::string> pathBytes;
  std::optional<std::string> status;
  std::optional<std::string> tool;
  std::optional<std::string> version;
  std::optional<std::uint64_t> schema;
  std::optional<std::uint64_t> fileCount;
  std::optional<std::uint64_t> recordCount;
};

struct TextMember {
  std::string_view key;
  std::optional<std::string> LineValues::*value;
};

struct NumberMember {
  std::string_view key;
  std::optional<std::uint64_t> LineValues::*value;
};

constexpr std::array kTextMembers = {
    TextMember{"path", &LineValues::path}, TextMember{"pathBytes", &LineValues::pathBytes},
    TextMember{"status", &LineValues::status}, TextMember{"tool", &LineValues::tool},
    TextMember{"version", &LineValues::version}};

constexpr std::array kNumberMembers = {NumberMember{"schema", &LineValues::schema},
                                       NumberMember{"fileCount", &LineValues::fileCount},
                                       NumberMember{"recordCount", &LineValues::recordCount}};

// Called by the JSON reader, which prescribes the functions' names. Keeps the wanted members of
// the line's own object.
class ValueCollector : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ValueCollector> {
 public:
  explicit ValueCollector(LineValues& values) : values_(values) {}

  bool StartObject() { return enter(); }
  bool EndObject(rapidjson::SizeType /*count*/) { return leave(); }
  bool StartArray() { return enter(); }
  bool EndArray(rapidjson::SizeType /*count*/) { return leave(); }

  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    key_ = depth_ == 1 ? std::string_view(text, length) : std::string_view();
    textMember_ = nullptr;
    numberMember_ = nullptr;
    for (const TextMember& member : kTextMembers) {
      if (member.key == key_) textMember_ = &member;
    }
    for (const NumberMember& member : kNumberMembers) {
      if (member.key == key_) numberMember_ = &member;
    }
    return true;
  }

  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    if (depth_ == 1 && textMember_ != nullptr) (values_.*textMember_->value).emplace(text, length);
    return true;
  }

  bool Uint(unsigned number) { return Uint64(number); }
  bool Uint64(std::uint64_t number) {
    if (depth_ == 1 && numberMember_ != nullptr) values_.*numberMember_->value = number;
    return true;
  }

 private:
  bool enter() {
    ++depth_;
    return true;
  }

  bool leave() {
    --depth_;
    return true;
  }

  LineValues& values_;
  int depth_ = 0;
  std::string_view key_;
  const TextMember* textMember_ = nullptr;
  const NumberMember* numberMember_ = nullptr;
};

class ShardReader {
 public:
  ShardReader(LineReader& lines, std::string& version) : lines_(lines), version_(version) {}

  void read(const std::function<void(const ShardFile& file)>& take) {
    std::string_view line;
    file_.offset = 0;
    while (lines_.next(line)) {
      ++lineNumber_;
      // JSON allows it, and the output would have both kinds of line ends.
      if (line.ends_with('\r')) fail("ends in CR LF instead of a line feed");
      if (line.starts_with(kHeaderLineStart)) {
        readHeader(line);
      } else if (line.starts_with(kRecordLineStart)) {
        checkNumber(line.substr(kRecordLineStart.size()));
        parse<rapidjson::BaseReaderHandler<>>(line);
        ++recordCount_;
      } else if (line.starts_with(kFileLineStart)) {
        checkNumber(line.substr(kFileLineStart.size()));
        readFile(line);
        take(file_);
        beginFile();
      } else {
        fail("not an ndjson line");
      }
    }
    ++lineNumber_;
    if (!lines_.isAtEnd()) fail("cut, it has no line feed");
    checkRunIsWhole("the file ends");
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw Failure(lines_.path() + ": line " + std::to_string(lineNumber_) + ": " + reason);
  }

  // Reads the line as JSON, which it has to be from its first byte to its last.
  template <typename Handler, typename... Arguments>
  void parse(std::string_view line, Arguments&... arguments) {
    // Iterative: the nesting of foreign lines must not become that of calls.
    constexpr unsigned kFlags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    Handler handler(arguments...);
    rapidjson::MemoryStream stream(line.data(), line.size());
    const rapidjson::ParseResult result = reader_.Parse<kFlags>(stream, handler);
    if (result.IsError()) fail(std::string("not JSON: ") + GetParseError_En(result.Code()));
    if (stream.Tell() != line.size()) fail("not JSON: there is more behind the object");
  }

  void readHeader(std::string_view line) {
    checkRunIsWhole("a header comes");
    LineValues values;
    parse<ValueCollector>(line, values);
    if (values.tool != kToolName) fail("a header of another tool");
    if (values.schema != kSchemaVersion) fail("a header of another schema");
    if (!values.version || !values.fileCount) fail("a header without version or fileCount");
    if (version_.empty()) version_ = *values.version;
    if (version_ != *values.version) {
      fail("written by version " + *values.version + ", others by " + version_);
    }
    filesToCome_ = *values.fileCount;
    hasHeader_ = true;
    number_ = 0;
    beginFile();
  }

  void beginFile() {
    recordCount_ = 0;
    file_.offset = lines_.offset();
  }

  void readFile(std::string_view line) {
    LineValues values;
    parse<ValueCollector>(line, values);
    if (!values.path || !values.status) fail("a file without path or status");
    if (!values.recordCount) fail("a file without recordCount");
    checkRecordCount(*values.recordCount);
    file_.path = *values.path;
    if (values.pathBytes && !decodeBase64(*values.pathBytes, file_.path)) {
      fail("pathBytes is not base64");
    }
    file_.isGood = *values.status == kAnsweredWord || *values.status == kEmptyWord;
    file_.bytes = lines_.offset() - file_.offset;
    ++number_;
    --filesToCome_;
  }

  void checkRecordCount(std::uint64_t announced) const {
    if (recordCount_ == announced) return;
    const std::string counts =
        std::to_string(recordCount_) + " instead of " + std::to_string(announced);
    fail((recordCount_ < announced ? "fewer records than announced: "
                                   : "more records than announced: ") +
         counts);
  }

  // Takes what follows "file": in a line.
  void checkNumber(std::string_view rest) const {
    if (filesToCome_ == 0) {
      fail(hasHeader_ ? "more files than the header tells of" : "no header before it");
    }
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    const bool isNumber = error == std::errc() && end != rest.data() + rest.size() && *end == ',';
    if (!isNumber || number != number_) {
      fail("file " + std::to_string(number_) + " of its run is missing or cut");
    }
  }

  void checkRunIsWhole(std::string_view event) const {
    if (filesToCome_ == 0 && recordCount_ == 0) return;
    fail(std::string(event) +
         ", and files of the run are missing: " + std::to_string(filesToCome_));
  }

  LineReader& lines_;
  std::string& version_;
  rapidjson::Reader reader_;
  std::uint64_t lineNumber_ = 0;
  bool hasHeader_ = false;
  std::uint64_t filesToCome_ = 0;  // of the run at hand
  std::uint64_t number_ = 0;       // of the file at hand
  std::uint64_t recordCount_ = 0;  // of its records so far
  ShardFile file_;
};

}  // namespace

void readShard(LineReader& lines, std::string& version,
               const std::function<void(const ShardFile& file)>& take) {
  ShardReader(lines, version).read(take);
}

}  // namespace host
