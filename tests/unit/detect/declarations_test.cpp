#include "detect/declarations.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

// One statement and the answers of three detectors.
struct DeclarationCase {
  std::string_view text;
  bool function;
  bool variable;
  std::string_view name;
  std::string_view why = "";
};

constexpr DeclarationCase kFunctionHeads[] = {
    {"function foo(a, b) {", true, false, "foo"},
    {"function (a) {", true, false, "(", "required: the part after the word is the name"},
    {"function() {", true, false, "("},
    {"function", true, false, ""},
    {"function* gen() {", true, false, "*", "required: of a generator the star is the name"},
    {"function f", true, false, "f", "neither parentheses nor a body are needed"},
    {"  function foo(x)", true, false, "foo", "white space in front does not matter"},
    {"\nfunction\tfoo(x)", true, false, "foo"},
    {"async function foo() {", true, false, "foo"},
    {"async function", true, false, ""},
    {"async function (x) {", true, false, "("},
    {"async function* g() {", true, false, "*"},
    {"async function f(a = 1)", true, false, "f"},
    {"async\n function f", true, false, "f"},
    {"async foo() {", true, false, "foo"},
    {"async foo.bar() {", false, false, "foo.bar", "a name with a dot is treated as a call"},
    {"async  (x) => {", true, false, "async"},
    {"async", false, false, ""},
    {"async.function", false, false, ""},
    {"export function foo() {", true, false, "foo"},
    {"export function", true, false, ""},
    {"export async function foo() {", true, false, "foo"},
    {"export async function", true, false, ""},
    {"export async", false, false, ""},
    {"export default function foo() {", true, false, "foo"},
    {"export default function() {", true, false, "function"},
    {"export default function f", false, false, "", "only the body rule knows this form"},
    {"export default class A {", false, false, ""},
    {"export class A {", false, false, ""},
    {"Function foo(x)", false, false, "foo", "letter case counts"},
    {"functional(x)", false, false, "functional", "a longer word"},
    {"function1(x)", false, false, "function1"},
    {"function$(x)", false, false, "function$"},
    {"exports function", false, false, ""},
    {"x function", false, false, ""},
    {"async x function", false, false, ""},
    {"export async x function", false, false, ""},
    {"\"function\" x", false, false, "", "a string is not a word"},
};

constexpr DeclarationCase kAfterAComma[] = {
    {"foo(a, function() {", true, false, "foo"},
    {"foo(a, async function() {", true, false, "foo"},
    {"[1, function() {", true, false, "function"},
    {"a, function", true, false, ""},
    {", function", true, false, "", "the comma may stand first"},
    {"a.b(c, function", true, false, "a.b", "a dotted call is no obstacle here"},
    {"a, async function", true, false, ""},
    {"a, async x, function", true, false, "", "a later comma counts as well"},
    {"a, async", false, false, ""},
    {"a, async x function", false, false, ""},
    {"a, b function", false, false, ""},
    {"a,", false, false, ""},
    {"a; function", false, false, ""},
    {"a, \"function\"", false, false, ""},
    {"\",\" function", false, false, ""},
};

constexpr DeclarationCase kAssignments[] = {
    {"const f = function() {", true, true, "f"},
    {"var f = function named() {", true, true, "f"},
    {"const f = () => {", true, true, "f"},
    {"const f = (a) => a + 1;", true, true, "f"},
    {"const f = a => a + 1;", false, true, "f", "required: an arrow with a bare parameter is none"},
    {"const f = async a => a;", false, true, "f"},
    {"const f = async (a) => a;", true, true, "f"},
    {"let g = y, h = (z) => w", true, true, "g", "a later = counts as well"},
    {"a.b = function() {", true, false, "function"},
    {"a.b = (c) => {", true, false, "="},
    {"a = b = (c) => d", true, false, "="},
    {"a = (b) => c", true, false, "="},
    {"a = (b)=>c", true, false, "="},
    {"a = () => c", true, false, "="},
    {"a = (b) =>", true, false, "="},
    {"a=(b)=>c", true, false, "a="},
    {"x = (a) + (b) => 1", true, false, "=", "required: any ) before => will do"},
    {"x = (a), (b) => 1", true, false, "="},
    {"x = (a; b) => 1", true, false, "=", "a semicolon is no obstacle here"},
    {"(a) => b = (c", false, true, "", "an arrow before the = is none of its own"},
    {"x = (a) = > 1", false, true, "=", "the arrow must be one part"},
    {"x = (a) b => 1", false, true, "="},
    {"x = (a", false, true, "="},
    {"x = (", false, true, "="},
    {"x = [(a) => b]", false, true, "[", "the parenthesis must follow the ="},
    {"x = y(a) => b", false, true, "y"},
    {"x = async(y)", true, false, "async", "required: no arrow is asked for after async"},
    {"x = async (", true, false, "async"},
    {"x = async", false, true, ""},
    {"x = async y => z", false, true, ""},
    {"x = function(y)", false, true, "function", "required: an assigned function needs its body"},
    {"x = function(y) {", true, false, "function"},
    {"x = async function(y)", false, true, "function"},
    {"x = async function(y) {", true, false, "function"},
    {"= (b) => c", true, false, "=", "nothing is asked of what stands before a first ="},
    {"= = (b) => c", false, false, "=", "an = behind another comparison byte is passed over"},
    {"a = = (b) => c", false, true, "="},
    {"a ! = (b) => c", false, true, "="},
    {"a > = (b) => c", false, true, "="},
    {"a < = (b) => c", false, true, "="},
    {"a + = (b) => c", true, false, "=", "but not after any other byte"},
    {"a == (b) => c", false, false, "=="},
    {"a += (b) => c", false, true, "+="},
    {"a => (b) => c", false, false, "=>"},
};

constexpr DeclarationCase kBodies[] = {
    {"foo(x)", false, false, "foo"},
    {"foo(x);", false, false, "foo"},
    {"foo(x) {", true, false, "foo"},
    {"foo(){}", true, false, "foo"},
    {"foo(x) bar {", true, false, "foo", "anything but ; may stand between"},
    {"foo(function() {", true, false, "foo"},
    {"foo(a); bar() {", false, false, "foo", "the first ; decides"},
    {"foo(a; b) {", true, false, "foo", "a ; before every ) decides nothing"},
    {"foo(x) { ;", true, false, "foo"},
    {"foo(a).bar(b) {", true, false, "foo", "required: whatever the ) closes"},
    {"foo({ a) b", false, false, "foo", "the { must follow the )"},
    {"{ foo(x)", false, false, "foo"},
    {"x) (y {", false, false, "x)", "the ) must follow the ("},
    {"a.b(function() {", false, false, "a.b", "a name after a dot is a method call"},
    {"a.b(c).d(e) {", false, false, "a.b"},
    {"a1.b(c) {", true, false, "a1.b", "required: a1.b is one word"},
    {"a.b1(c) {", false, false, "a.b1"},
    {"a.b.c(d) {", false, false, "a.b.c"},
    {"foo.bar(x) {", false, false, "foo.bar"},
    {".b(c) {", false, false, ".b"},
    {"b.(c) {", true, false, "b.", "the dot counts two parts back only"},
    {".(c) {", true, false, "."},
    {"a.b c(d) {", true, false, "c"},
    {"x . foo (y) {", false, false, "foo"},
    {"1.5(x) {", true, false, "1.5"},
    {"foo(a.b(c) {", true, false, "foo", "only the first ( is looked at"},
    {".then(function(x) {", false, false, ".then"},
    {"items.forEach(function(i) {", false, false, "items.forEach"},
    {"items.forEach((i) => {", false, false, "items.forEach"},
    {"new Foo(x) {", true, false, "Foo"},
    {"get foo() {", true, false, "foo"},
    {"set x(v) {", true, false, "x"},
    {"static bar() {", true, false, "bar"},
    {"static async foo() {", true, false, "foo"},
    {"get [k]() {", true, false, "[k]"},
    {"[k]() {", true, false, "[k]"},
    {"*gen() {", true, false, "*gen"},
    {"x: function() {", true, false, "function"},
    {"y: () => {", true, false, "y:"},
    {"x: 1,", false, false, ""},
    {"(function() {", false, false, "", "required: a text that begins with ( is missed"},
    {"(() => {", false, false, ""},
    {"(a) (b) {", false, false, ""},
    {"{ (a) {", true, false, "{"},
    {"x => x + 1", false, false, ""},
    {"if (x) {", true, false, "if", "required: every head with ) before { is a function"},
    {"if (a = b) {", true, false, "if"},
    {"else if (x) {", true, false, "if"},
    {"else {", false, false, ""},
    {"while (x) {", true, false, "while"},
    {"while(x)", false, false, "while"},
    {"for (i = 0; i < n; i++) {", true, false, "for"},
    {"for (i = 0; i < n; i++)", false, true, "for"},
    {"for (f(); ; ) {", false, false, "for", "a ) before the first ; ends the walk"},
    {"switch (x) {", true, false, "switch"},
    {"catch (e) {", true, false, "catch"},
    {"return function() {", true, false, "function"},
    {"class A { m() {", true, false, "m"},
    {"(", false, false, ""},
    {"x(", false, false, "x"},
    {"x(y", false, false, "x"},
    {"x()", false, false, "x"},
    {"   (x)", false, false, "", "the name before the ( is only white space"},
    {"x(\")\" {", false, false, "x", "a ) in a string is none"},
    {"x(\")\") {", true, false, "x"},
    {"x(y) \"{\"", false, false, "x", "nor is a {"},
    {"x(y) \";\" {", true, false, "x", "nor a ;"},
    {"x\"(\"(y) {", true, false, "x\"", "but the name ends at a ( in a string"},
    {"foo(x)\0{"sv, false, false, "foo", "the parts end at a NUL byte"},
};

constexpr DeclarationCase kVariables[] = {
    {"var x = 1;", false, true, "x"},
    {"let y", false, true, "y"},
    {"const x", false, true, "x"},
    {"var", false, false, "", "one part is not a variable"},
    {"let", false, false, ""},
    {"const", false, false, ""},
    {"var;", false, true, ";"},
    {"let;", false, true, ";"},
    {"const;", false, true, ";"},
    {" var x", false, true, "x"},
    {"var\nx", false, true, "x"},
    {"var(x) {", true, true, "("},
    {"let a = 1, b = 2;", false, true, "a"},
    {"const {a, b} = c;", false, true, "{", "required: a bracket is the name"},
    {"const [a, b] = c;", false, true, "["},
    {"const 'a' = 1", false, true, "''a'", "required: with the doubled quote of its part"},
    {"constx = 1", false, true, ""},
    {"constx (y)", false, false, "constx"},
    {"Var x", false, false, ""},
    {"\"var\" x", false, false, ""},
    {"export const x = 1", false, true, ""},
    {"export const x", false, false, ""},
    {"var\0 x"sv, false, false, "", "the parts end at a NUL byte"},
};

constexpr DeclarationCase kBareAssignments[] = {
    {"x = 1", false, true, ""},
    {"x =", false, false, "", "nothing comes after the operator"},
    {"= 1", false, false, "", "nothing comes before it"},
    {"=", false, false, ""},
    {"x=1", false, true, ""},
    {"x = ;", false, true, ""},
    {"x += 1", false, true, ""},
    {"x -= 1", false, true, ""},
    {"x *= 1", false, true, ""},
    {"x /= 1", false, true, ""},
    {"x+=1", false, true, ""},
    {"x %= 2", false, false, "", "required: not in the list of operators"},
    {"x >>= 1", false, false, ""},
    {"x **= 2", false, false, ""},
    {"x ^= 1", false, true, "", "required: ^ is a word and the = is a part of its own"},
    {"x &= 1", false, true, ""},
    {"x |= 1", false, true, ""},
    {"x ||= y", false, true, ""},
    {"x?\?=y", false, true, ""},
    {"x % = 2", false, true, ""},
    {"x == 1", false, false, ""},
    {"x === 1", false, false, ""},
    {"x != 1", false, false, ""},
    {"x >= 1", false, false, ""},
    {"x <= 1", false, false, ""},
    {"x = -1", false, true, ""},
    {"x=-1", false, false, "", "required: =- is one part"},
    {"x=!y", false, false, ""},
    {"x+=-1", false, false, ""},
    {"a.b = 5;", false, true, ""},
    {"a = b;", false, true, ""},
    {"= x = y", false, false, "", "only the first operator is checked"},
    {"x = y =", false, true, ""},
    {"x => = y", false, true, "", "=> is no such operator"},
    {"foo(a = 1);", false, true, "foo", "required: within a call as well"},
    {"foo(a = 1) {", true, false, "foo"},
    {"return x = 1", false, true, ""},
    {"x = \"(\" + y", false, true, "\"", "required: the ( of a string is found"},
    {"x = '(' + y", false, true, "'"},
    {"\"a = b\"", false, false, "", "an operator in a string is none"},
    {"x \"=\" y", false, false, ""},
    {"'a' = 1", false, true, ""},
};

constexpr DeclarationCase kNames[] = {
    {"", false, false, ""},
    {" \t\n", false, false, ""},
    {"foo", false, false, ""},
    {"  foo  (x)", false, false, "foo"},
    {"foo\n(x)", false, false, "foo"},
    {"return(x)", false, false, "return"},
    {"return foo(x)", false, false, "foo"},
    {"!foo(x)", false, false, "!foo"},
    {"a=b(c)", false, true, "a=b"},
    {"x.y = z(1)", false, true, "z"},
    {"a.b.c(1)", false, false, "a.b.c", "dots are kept"},
    {"\"a b\"(x)", false, false, "b\""},
    {"async (x)", false, false, "async", "trimmed, the word has no space to be known by"},
    {"async\tfoo()", false, false, "foo", "any white space is a space by then"},
    {"async get x()", false, false, "x"},
    {"async async foo()", false, false, "foo"},
    {"asyncx (y)", false, false, "asyncx"},
    {"x async y()", false, false, "y"},
    {"a\fb(c)", false, false, "a\fb", "a form feed inside is not a space"},
    {"a \f(b)", false, false, "a"},
    {"a \fb(c)", false, false, "b", "the kept word is trimmed again"},
    {"caf\xC3\xA9(x)", false, false, "caf\xC3\xA9"},
    {"a\0b(c)"sv, false, false, "a\0b"sv, "the search for the ( passes a NUL byte"},
};

// Visits every table, with a name for the failure message.
template <typename Check>
void forEachDeclaration(Check check) {
  const auto run = [&check](std::string_view table, const auto& cases) {
    for (const DeclarationCase& row : cases) {
      SCOPED_TRACE(std::string(table) + ": " + testing::PrintToString(row.text) + " " +
                   std::string(row.why));
      check(row);
    }
  };
  run("function heads", kFunctionHeads);
  run("after a comma", kAfterAComma);
  run("assignments", kAssignments);
  run("bodies", kBodies);
  run("variables", kVariables);
  run("bare assignments", kBareAssignments);
  run("names", kNames);
}

TEST(DetectJSFunctionDeclaration, Tables) {
  forEachDeclaration([](const DeclarationCase& row) {
    EXPECT_EQ(DetectJSFunctionDeclaration(std::string(row.text)), row.function);
  });
}

TEST(DetectJSVariableDeclaration, Tables) {
  forEachDeclaration([](const DeclarationCase& row) {
    EXPECT_EQ(DetectJSVariableDeclaration(std::string(row.text)), row.variable);
  });
}

TEST(FunctionName, Tables) {
  forEachDeclaration([](const DeclarationCase& row) {
    EXPECT_EQ(functionName(std::string(row.text), ""), row.name);
  });
}

TEST(FunctionName, IgnoresItsSecondArgument) {
  forEachDeclaration([](const DeclarationCase& row) {
    EXPECT_EQ(functionName(std::string(row.text), "function other(x) {"), row.name);
  });
}

struct TextCase {
  std::string_view text;
  bool result;
  std::string_view why = "";
};

TEST(DetectJSReturnDeclaration, Table) {
  constexpr TextCase kCases[] = {
      {"return", true},
      {"return;", true},
      {"return(x)", true},
      {"return x;", true},
      {"  return x", true, "white space in front does not matter"},
      {"\n\treturn\tx", true},
      {"return.x", true},
      {"return:", true},
      {"return=1", true},
      {"return\"x\"", true, "a string ends the word"},
      {"return`x`", true},
      {"return function() {", true},
      {"return\0x"sv, true, "the parts end at a NUL byte"},
      {"returnValue = 1", false},
      {"return$", false, "$ is a word byte here"},
      {"return1", false},
      {"return_", false},
      {"return\xC3\xA9", false},
      {"Return x", false, "letter case counts"},
      {"retur", false},
      {"x return", false},
      {"{return}", false},
      {"\"return\"", false},
      {"'return'", false},
      {"", false},
      {"  ", false},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectJSReturnDeclaration(std::string(row.text)), row.result);
  }
}

TEST(DetectJSClass, Table) {
  constexpr TextCase kCases[] = {
      {"class", true},
      {"class A {", true},
      {"class{", true},
      {"class\tA", true},
      {"class\nA", true},
      {"class$x", true, "required: $ ends the word"},
      {"class: 1", true, "required: a member of that name too"},
      {"class.x", true},
      {"class-name", true},
      {"class = 1", true},
      {"class\"A\"", true},
      {"class\xC3\xA9", true, "required: so does a byte of 0x80 and above"},
      {"class\0A"sv, true, "and a NUL byte"},
      {"classy", false},
      {"class_a", false},
      {"class1", false},
      {"class#x", false, "# is a word byte"},
      {"clas", false},
      {"Class A {", false, "letter case counts"},
      {"CLASS A {", false},
      {"export class A {", false, "required: only in first place"},
      {"export default class A {", false},
      {"abstract class A {", false},
      {" class A {", false, "required: a space in front hides it"},
      {"\nclass A {", false},
      {"(class A {", false},
      {"\"class\"", false},
      {"", false},
      {" ", false},
  };
  for (const TextCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectJSClass(std::string(row.text)), row.result);
  }
}

}  // namespace
