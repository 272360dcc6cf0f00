#include "detect/module_patterns.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

struct MatchCase {
  std::string_view text;
  bool result;
  std::string_view why = "";
};

TEST(DetectJSImports, Table) {
  constexpr MatchCase kCases[] = {
      {"", false},
      {"import a from 'a';", true},
      {"import('x')", true},
      {"import.meta", true},
      {"import", true},
      {"import$", true, "required: $ ends the word"},
      {"import\0x"sv, true},
      {"importScripts('x')", false},
      {"import_x", false},
      {"imports", false},
      {"Import a", false, "letter case counts"},
      {"@import a", false},
      {" import a", false, "required: a space in front hides the word"},
      {"require('a');", true},
      {"require", true},
      {"require.resolve", true},
      {"required('a');", false},
      {"const a = require('a');", false, "required: require counts in first place only"},
      {"export", true},
      {"export;", true},
      {"export x", true},
      {"export=x", true},
      {"export{a}", true},
      {"export * from 'a';", true},
      {"export const x = 1;", true},
      {"export class A {", true},
      {"export { a };", true},
      {"export { a, b };", true},
      {"export default function() {", true, "the part after the word is default"},
      {"export function", false, "an exported function is not an import"},
      {"export function f() {", false},
      {"export function* g() {", false},
      {"export\n\tfunction f() {", false},
      {"export functional", true},
      {"export functional x", true},
      {"export 'function' x", true, "a string is not a word"},
      {"export async function f() {", false},
      {"export async function", false},
      {"export async", true},
      {"export async x", true},
      {"export async(x)", true},
      {"export async functional", true},
      {"export x function", true},
      {"export function f() { exports.a = 1; }", false, "the first word settles it"},
      {"export async function f() { module.exports = 1; }", false},
      {"export\0function"sv, true, "the parts end at a NUL byte"},
      {" export function f() { exports.a = 1; }", true, "a hidden word does not"},
      {" export x", false},
      {"exported x", false},
      {"module.exports = x;", true},
      {"module.exports", true},
      {"module.export", false},
      {"odule.exports", false},
      {"xports.a", false},
      {"module .exports", false},
      {"module . exports = x;", false},
      {"exports.a = 1;", true},
      {"const b = exports.a;", true},
      {"myexports.x", true, "required: no word boundary"},
      {"exports", false},
      {"exportsx", false},
      {"exports['a'] = 1;", false},
      {"exports xports.a", false},
      {"Exports.a", false},
      {"'module.exports'", true, "required: within a string too"},
      {"a\0exports."sv, true, "the search passes a NUL byte"},
      {"var a = 1;", false},
  };
  for (const MatchCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectJSImports(std::string(row.text)), row.result);
  }
}

TEST(DetectIIFE, Table) {
  constexpr MatchCase kCases[] = {
      {"", false},
      {"(function() {", true},
      {"(function(a) {", true},
      {"(function(", true},
      {"(function f", true},
      {"(function* g() {", true},
      {" ( function ( ) {", true, "white space does not matter"},
      {"(function", false, "required: three parts are needed"},
      {"(functional(x))", false},
      {"(function$(x))", false},
      {"(Function(x))", false},
      {"('function')(x)", false},
      {"(async () => {", true},
      {"(async function() {", true},
      {"(async x", true},
      {"(async)", true},
      {"(async", false},
      {"(asyncx y)", false},
      {"(() => {", true},
      {"(()", true},
      {"( ( ) => x)()", true},
      {"()", false},
      {"((", false},
      {"(((", false},
      {"((a", false},
      {"((a) => a)(1)", false, "required: an arrow with parameters is missed"},
      {"!function() {", false, "required: a unary form is missed"},
      {"void function() {", false},
      {"+function() {", false},
      {"(a) => 1", false},
      {"() => 1", false},
      {"()()", false},
      {"(class A {", false},
      {"[function() {", false},
      {";(function() {", false},
      {"foo(function() {", false},
      {"function f() {", false},
      {"async () => {", false},
      {"(function\0(x)"sv, false, "the parts end at a NUL byte"},
  };
  for (const MatchCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectIIFE(std::string(row.text)), row.result);
  }
}

TEST(DetectWebComponent, Table) {
  constexpr MatchCase kCases[] = {
      {"", false},
      {"class A extends HTMLElement {", true},
      {"class A extends HTMLDivElement {", true},
      {"class A extends HTMLButtonElement {", true},
      {"customElements.define('a-b', A);", true},
      {"extends HTMLElement", true},
      {"extends HTMLDivElement", true},
      {"extends HTMLButtonElement", true},
      {"customElements.define", true},
      {"extends HTMLElementBase", true, "required: a longer name too"},
      {"window.customElements.defineAll", true},
      {"myextends HTMLElement", true, "required: no word boundary"},
      {"'extends HTMLElement'", true},
      {"a\0extends HTMLElement"sv, true, "the search passes a NUL byte"},
      {"class A extends HTMLSpanElement {", false, "required: not in the list"},
      {"class A extends HTMLInputElement {", false},
      {"class A extends B {", false},
      {"extends HTMLElemen", false},
      {"extends HTMLDivElemen", false},
      {"extends HTMLButtonElemen", false},
      {"customElements.defin", false},
      {"xtends HTMLElement", false},
      {"xtends HTMLDivElement", false},
      {"xtends HTMLButtonElement", false},
      {"ustomElements.define", false},
      {"extends  HTMLElement", false},
      {"extends\nHTMLElement", false},
      {"extendsHTMLElement", false},
      {"Extends HTMLElement", false, "letter case counts"},
      {"extends HtmlElement", false},
      {"customelements.define", false},
      {"customElements .define", false},
      {"customElements.get('a-b')", false},
      {"HTMLElement", false},
  };
  for (const MatchCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectWebComponent(std::string(row.text)), row.result);
  }
}

struct PatternCase {
  std::string_view text;
  std::string_view pattern;
  std::string_view why = "";
};

TEST(DetectModulePattern, Table) {
  constexpr PatternCase kCases[] = {
      {"", ""},
      {"export default class A {", "module"},
      {"export { a, b };", "module"},
      {"export {", "module"},
      {"export default", "module"},
      {"myexport defaults", "module", "required: no word boundary"},
      {"export{a}", ""},
      {"xport { a }", ""},
      {"xport default a", ""},
      {"export defaul", ""},
      {"export  default x", ""},
      {"export  { a }", ""},
      {"Export default x", "", "letter case counts"},
      {"export const x = 1;", "", "required: only two forms of export count"},
      {"export function f() {", ""},
      {"export class A {", ""},
      {"module.exports = a;", "commonjs"},
      {"module.exports", "commonjs"},
      {"module.export", ""},
      {"odule.exports", ""},
      {"xports.a", ""},
      {"exports.a = 1;", "commonjs"},
      {"myexports.a", "commonjs"},
      {"exports", ""},
      {"exports['a'] = 1;", ""},
      {"export default x; module.exports = x;", "module", "the first test that holds decides"},
      {"module.exports = x; export { a };", "module"},
      {"export default define(function() {", "module"},
      {"define(['a'], function(a) {", "amd"},
      {"define(function", "amd"},
      {"function f() { define(x); }", "amd", "required: in any order"},
      {"redefine(functional)", "amd", "required: no word boundary"},
      {"define(x);", "", "without the word function"},
      {"define(['a'], (a) => {", ""},
      {"define (function() {", ""},
      {"Define(function() {", ""},
      {"efine(function() {", ""},
      {"define(functio", ""},
      {"define(unction", ""},
      {"function f() {", ""},
      {"exports.a; define(function() {", "commonjs"},
      {"typeof exports", ""},
      {"typeof module", ""},
      {"typeof exports; typeof module", "umd"},
      {"typeof module; typeof exports", "umd"},
      {"typeof exportsX; typeof moduleX", "umd"},
      {"typeof  exports; typeof module", ""},
      {"typeof exports; typeof  module", ""},
      {"exports; module", ""},
      {"typeof exports; typeof modul", ""},
      {"typeof export; typeof module", ""},
      {"ypeof exports; typeof module", ""},
      {"typeof exports; ypeof module", ""},
      {"if (typeof exports === 'object' && typeof module !== 'undefined') {", "umd"},
      {"typeof exports; typeof module; module.exports = f;", "commonjs"},
      {"typeof exports.a; typeof module", "commonjs"},
      {"typeof exports; typeof module; define(function() {", "amd"},
      {"typeof exports; typeof module; define(f);", "umd"},
      {"typeof exports; typeof module; export default f;", "module"},
      {"a\0exports."sv, "commonjs", "the search passes a NUL byte"},
      {"var a = 1;", ""},
  };
  for (const PatternCase& row : kCases) {
    SCOPED_TRACE(testing::PrintToString(row.text) + " " + std::string(row.why));
    EXPECT_EQ(DetectModulePattern(std::string(row.text)), row.pattern);
  }
}

}  // namespace
