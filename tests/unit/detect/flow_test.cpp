#include "detect/flow.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

struct FlowCase {
  std::string_view text;
  bool logic;
  bool loop;
  std::string_view why = "";
};
constexpr FlowCase kFlowCases[] = {
    {"", false, false},
    {"if (x) {", true, false},
    {"if(x)", true, false},
    {"if", true, false},
    {"If (x)", false, false, "letter case counts"},
    {"IF (x)", false, false},
    {" if (x)", false, false, "required: a space in front hides the word"},
    {"\tif (x)", false, false},
    {"(if)", false, false},
    {"#if", false, false, "# is a word byte"},
    {"if#", false, false},
    {"if_x", false, false},
    {"ifx", false, false},
    {"if1", false, false},
    {"i", false, false},
    {"if.x = 1", true, false, "any byte but a word byte may follow"},
    {"if$", true, false},
    {"if:", true, false},
    {"if\nx", true, false},
    {"if\xC3\xA9", true, false},
    {"if\0x"sv, true, false},
    {"else {", true, false},
    {"else", true, false},
    {"else if (x) {", true, false},
    {"elseif (x) {", false, false},
    {"elsewhere", false, false},
    {"els", false, false},
    {"} else {", false, false, "required: a leading brace hides the word"},
    {"} else if (x) {", false, false},
    {"switch (x) {", true, false},
    {"switch", true, false},
    {"switches", false, false},
    {"try {", true, false},
    {"try{", true, false},
    {"tryit()", false, false},
    {"catch (e) {", true, false},
    {"catch", true, false},
    {"catchy", false, false},
    {"} catch (e) {", false, false},
    {"finally {", true, false},
    {"finally", true, false},
    {"finally_", false, false},
    {"} finally {", false, false},
    {"case 1:", true, false},
    {"case", true, false},
    {"case\"a\":", true, false},
    {"case1:", false, false},
    {"cases", false, false},
    {"default:", true, false},
    {"default", true, false},
    {"defaultValue = 1", false, false},
    {"export default x", false, false, "only the first word counts"},
    {"x == 1", false, false, "required: a comparison is not logic"},
    {"a === b", false, false, "required: a comparison is not logic"},
    {"x != 1", false, false, "required: a comparison is not logic"},
    {"a !== b", false, false, "required: a comparison is not logic"},
    {"==", false, false},
    {"a=b", false, false},
    {"while (x) {", false, true},
    {"while(x)", false, true},
    {"while", false, true},
    {"while x == 1", false, true},
    {" while (x)", false, false},
    {"} while (x);", false, false},
    {"while1", false, false},
    {"whil", false, false},
    {"While (x)", false, false},
    {"for (;;) {", false, true},
    {"for", false, true},
    {"for.x", false, true},
    {"for$", false, true},
    {"for\tx", false, true},
    {"for\xC3\xA9", false, true},
    {"for\0x"sv, false, true},
    {"for#x", false, false},
    {"forEach(x)", false, false},
    {"for_each()", false, false},
    {"do {", false, true},
    {"do{", false, true},
    {"do", false, true},
    {"do: x", false, true},
    {"done()", false, false},
    {"document.x", false, false},
    {"d", false, false},
    {"dowhile", false, false},
    {"label: for (;;) {", false, false, "required: a label hides the loop"},
    {"return", false, false},
    {"class A {", false, false},
};

TEST(DetectJSLogic, Table) {
  for (const FlowCase& row : kFlowCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectJSLogic(std::string(row.text)), row.logic);
  }
}

TEST(DetectJSLoop, Table) {
  for (const FlowCase& row : kFlowCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectJSLoop(std::string(row.text)), row.loop);
  }
}

}  // namespace
