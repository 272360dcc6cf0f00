// The words of script text that its structure depends on.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace host::outline {

enum class Word : std::uint8_t {
  kOrdinary,
  kAbstract,
  kAs,
  kAsync,
  kAwait,
  kCase,
  kCatch,
  kClass,
  kConst,
  kDeclare,
  kDefault,
  kDelete,
  kDo,
  kElse,
  kEnum,
  kExport,
  kExtends,
  kFinally,
  kFor,
  kFunction,
  kGet,
  kIf,
  kImplements,
  kImport,
  kIn,
  kInfer,
  kInstanceof,
  kInterface,
  kIs,
  kKeyof,
  kLet,
  kModule,
  kNamespace,
  kNew,
  kOf,
  kReadonly,
  kReturn,
  kSatisfies,
  kSet,
  kStatic,
  kSwitch,
  kThrow,
  kTry,
  kType,
  kTypeof,
  kVar,
  kVoid,
  kWhile,
  kWith,
  kYield,
};

namespace words {

struct Entry {
  std::string_view text;
  Word word = Word::kOrdinary;
};
inline constexpr Entry kEntries[] = {{"abstract", Word::kAbstract},
                                     {"as", Word::kAs},
                                     {"async", Word::kAsync},
                                     {"await", Word::kAwait},
                                     {"case", Word::kCase},
                                     {"catch", Word::kCatch},
                                     {"class", Word::kClass},
                                     {"const", Word::kConst},
                                     {"declare", Word::kDeclare},
                                     {"default", Word::kDefault},
                                     {"delete", Word::kDelete},
                                     {"do", Word::kDo},
                                     {"else", Word::kElse},
                                     {"enum", Word::kEnum},
                                     {"export", Word::kExport},
                                     {"extends", Word::kExtends},
                                     {"finally", Word::kFinally},
                                     {"for", Word::kFor},
                                     {"function", Word::kFunction},
                                     {"get", Word::kGet},
                                     {"if", Word::kIf},
                                     {"implements", Word::kImplements},
                                     {"import", Word::kImport},
                                     {"in", Word::kIn},
                                     {"infer", Word::kInfer},
                                     {"instanceof", Word::kInstanceof},
                                     {"interface", Word::kInterface},
                                     {"is", Word::kIs},
                                     {"keyof", Word::kKeyof},
                                     {"let", Word::kLet},
                                     {"module", Word::kModule},
                                     {"namespace", Word::kNamespace},
                                     {"new", Word::kNew},
                                     {"of", Word::kOf},
                                     {"readonly", Word::kReadonly},
                                     {"return", Word::kReturn},
                                     {"satisfies", Word::kSatisfies},
                                     {"set", Word::kSet},
                                     {"static", Word::kStatic},
                                     {"switch", Word::kSwitch},
                                     {"throw", Word::kThrow},
                                     {"try", Word::kTry},
                                     {"type", Word::kType},
                                     {"typeof", Word::kTypeof},
                                     {"var", Word::kVar},
                                     {"void", Word::kVoid},
                                     {"while", Word::kWhile},
                                     {"with", Word::kWith},
                                     {"yield", Word::kYield}};

inline constexpr std::size_t kSlots = 512;

constexpr std::size_t slotOf(std::string_view text, std::size_t factor) {
  const auto byte = [text](std::size_t at) {
    return std::size_t{static_cast<unsigned char>(text[at])};
  };
  return (byte(0) * factor + byte(1) * 31 + byte(text.size() - 1) * 7 + text.size()) % kSlots;
}

// The first factor that gives each word a slot of its own.
consteval std::size_t findFactor() {
  for (std::size_t factor = 1;; ++factor) {
    std::array<bool, kSlots> used{};
    bool collides = false;
    for (const Entry& entry : kEntries) {
      bool& slot = used[slotOf(entry.text, factor)];
      collides = collides || slot;
      slot = true;
    }
    if (!collides) return factor;
  }
}
inline constexpr std::size_t kFactor = findFactor();

inline constexpr std::array<Entry, kSlots> kTable = [] {
  std::array<Entry, kSlots> table{};
  for (const Entry& entry : kEntries) table[slotOf(entry.text, kFactor)] = entry;
  return table;
}();

}  // namespace words

inline Word wordOf(std::string_view text) {
  if (text.size() < 2 || text.size() > 10) return Word::kOrdinary;
  const words::Entry& entry = words::kTable[words::slotOf(text, words::kFactor)];
  return entry.text == text ? entry.word : Word::kOrdinary;
}

class WordSet {
 public:
  consteval WordSet(std::initializer_list<Word> words) {
    for (const Word word : words) bits_ |= bit(word);
  }
  constexpr bool has(Word word) const { return (bits_ & bit(word)) != 0; }

 private:
  static constexpr std::uint64_t bit(Word word) {
    static_assert(static_cast<unsigned>(Word::kYield) < 64, "a bit a word");
    return std::uint64_t{1} << static_cast<unsigned>(word);
  }
  std::uint64_t bits_ = 0;
};

// Behind these an operand begins.
inline constexpr WordSet kExpectOperand = {
    Word::kAwait,  Word::kCase,    Word::kDefault, Word::kDelete, Word::kDo,         Word::kElse,
    Word::kExport, Word::kExtends, Word::kImport,  Word::kIn,     Word::kInstanceof, Word::kNew,
    Word::kOf,     Word::kReturn,  Word::kThrow,   Word::kTypeof, Word::kVoid,       Word::kYield};
// Behind these a type goes on.
inline constexpr WordSet kContinueType = {Word::kTypeof,  Word::kKeyof, Word::kInfer,
                                          Word::kExtends, Word::kIs,    Word::kReadonly,
                                          Word::kNew,     Word::kIn};
// These stand between two operands or types.
inline constexpr WordSet kOperatorWords = {Word::kIn,        Word::kInstanceof, Word::kAs,
                                           Word::kSatisfies, Word::kOf,         Word::kExtends,
                                           Word::kIs,        Word::kImplements};
// These begin a statement and stand nowhere in an expression.
inline constexpr WordSet kBeginStatement = {Word::kConst, Word::kVar,    Word::kIf,     Word::kFor,
                                            Word::kWhile, Word::kReturn, Word::kSwitch, Word::kTry,
                                            Word::kThrow, Word::kExport};

}  // namespace host::outline
