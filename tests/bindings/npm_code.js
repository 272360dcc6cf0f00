// The npm package in Node, against the cases, the program and its own promises.
//
// usage: node --expose-gc npm_code.js PACKAGE CASES QUORL_JS
"use strict";
const assert = require("assert");
const { spawnSync } = require("child_process");
const fs = require("fs");
const path = require("path");
const { pathToFileURL } = require("url");

const [packageFolder, casesFolder, program] = process.argv.slice(2).map((each) => path.resolve(each));
const MEGABYTE = 1024 * 1024;
const { load, OutlineError } = require(path.join(packageFolder, "node.cjs"));
const importModule = () => import(pathToFileURL(path.join(packageFolder, "node.mjs")).href);

function thrownBy(call) {
  try {
    call();
  } catch (error) {
    return error;
  }
  return assert.fail("nothing is thrown");
}

function run(args, input) {
  const done = spawnSync(program, args, { input, maxBuffer: 1024 * MEGABYTE });
  assert.ok(done.status < 2, done.stderr.toString());
  return done.stdout.toString();
}

// What the program prints of a text.
const recordsOf = (name, text) => run(["--stdin", name, "--quiet"], text);
function itemsOf(name, text) {
  const { items } = JSON.parse(run(["--stdin", name, "--format", "columns"], text).split("\n")[1]);
  return items.item.map((number, at) => ({
    number, parent: items.container[at], line: items.line[at], endLine: items.endLine[at],
    kind: items.kind[at], name: items.name[at], record: items.nodeID[at],
    label: items.branchTypeAsString[at], text: items.contents[at],
  }));
}

function casesBelow(folder) {
  return fs.readdirSync(folder, { withFileTypes: true }).filter((entry) => entry.isDirectory())
    .flatMap((route) => fs.readdirSync(path.join(folder, route.name))
      .map((name) => path.join(folder, route.name, name)));
}

// Constructs that take a naive reader long, or deep.
const HOSTILE = {
  "open braces": ["a.js", "{".repeat(200000)],
  "braces on lines": ["a.js", "if (a) {\n".repeat(20000)],
  "open parentheses": ["a.js", "(".repeat(200000)],
  "parentheses before semicolons": ["a.css", ")".repeat(100000) + ";".repeat(100000)],
  "script openers": ["a.html", "<script>".repeat(50000)],
  "open elements": ["a.html", "<div>".repeat(50000)],
  "stray closing tags": ["a.html", "</i>".repeat(5000)],
  "open comments": ["a.js", "/*".repeat(100000)],
  "quotes": ["a.css", "'\"`".repeat(50000)],
  "continued lines": ["a.c", "#define a \\\n".repeat(20000)],
  "a long line": ["a.js", "x".repeat(1000000)],
  "line ends": ["a.js", "\r\n\r\n\n\r".repeat(50000)],
  "regular expressions": ["a.js", "a = /[/]\\//;\n".repeat(5000)],
  "templates": ["a.js", "`${`${".repeat(20000)],
  "classes": ["a.ts", "class A { #b() { class C {\n".repeat(5000)],
  "bytes": ["a.js", Buffer.from(Array.from({ length: 100000 }, (_, at) => (at * 7919) % 256))],
  "NUL bytes": ["a.html", Buffer.alloc(100000)],
};

const tests = {
  async "gives the records of every case, and its lines"() {
    const folders = casesBelow(casesFolder);
    assert.ok(folders.length > 40, `${folders.length} cases`);
    const lines = { stdout: [], stderr: [] };
    const quorl = await load({ diagnostics: (line, stream) => lines[stream].push(line + "\n") });
    for (const folder of folders) {
      const name = fs.readdirSync(folder).find((each) => path.parse(each).name === "input");
      const read = (each) => fs.existsSync(path.join(folder, each))
        ? fs.readFileSync(path.join(folder, each)) : Buffer.alloc(0);
      const defines = read("defines.txt").toString().split("\n").filter((each) => each !== "");
      let answer;
      try {
        answer = quorl.records(name, read(name), { defines });
      } catch (error) {
        answer = error.answer;
      }
      assert.ok(Buffer.from(answer).equals(read("expected.records")), folder);
      for (const stream of ["stdout", "stderr"]) {
        assert.strictEqual(lines[stream].splice(0).join(""), read(`expected.${stream}`).toString(), folder);
      }
    }
  },

  async "gives the outlines of the program"() {
    const quorl = await load();
    for (const folder of casesBelow(casesFolder)) {
      const name = fs.readdirSync(folder).find((each) => path.parse(each).name === "input");
      const source = fs.readFileSync(path.join(folder, name));
      assert.deepStrictEqual(quorl.outline(name, source).items, itemsOf(name, source), folder);
    }
  },

  async "survives hostile texts, as the program does"() {
    const quorl = await load();
    for (const [what, [name, source]] of Object.entries(HOSTILE)) {
      assert.ok(quorl.records(name, source) === recordsOf(name, source), what);
      assert.deepStrictEqual(quorl.outline(name, source).items, itemsOf(name, source), what);
    }
  },

  async "describes an item"() {
    const quorl = await load();
    assert.deepStrictEqual(quorl.outline("src/a.js", "class A {\n  #b() {\n  }\n}\n"), {
      path: "src/a.js", sourceBytes: 25, omitted: [], items: [
        { number: 0, parent: null, line: 1, endLine: 4, kind: "class", name: "A", record: 3,
          label: "class", text: "class A {" },
        { number: 1, parent: 0, line: 2, endLine: 3, kind: "method", name: "#b", record: null,
          label: null, text: null }],
    });
    assert.deepStrictEqual(quorl.outline("a.js", "f();\n" + "g();".repeat(5000)).omitted, [
      { reason: "long-lines", line: 2, lines: 1, lineCount: 2, bytes: 20000, byteCount: 20005 }]);
  },

  async "takes strings and bytes"() {
    const quorl = await load();
    const text = "class Caf\u00e9 {\n}\n";
    for (const source of [text, Buffer.from(text), new TextEncoder().encode(text)]) {
      assert.strictEqual(quorl.outline("a.js", source).items[0].name, "Caf\u00e9");
    }
    assert.strictEqual(quorl.outline("a.js", Buffer.from("class A\xff {\n}\n", "latin1")).items[0].name,
      "A\ufffd");
    assert.strictEqual(quorl.outline("\u00e9 'x'.js", "f();").path, "\u00e9 'x'.js");
  },

  async "refuses other arguments"() {
    const quorl = await load();
    for (const [name, source, options] of [[1, "f();"], ["a\0.js", "f();"], ["a.js", 1], ["a.js"],
      ["a.js", "f();", { defines: ["a\0"] }]]) {
      assert.throws(() => quorl.outline(name, source, options), TypeError);
    }
  },

  async "has nothing for an empty text"() {
    const quorl = await load();
    for (const source of ["", Buffer.alloc(0)]) {
      assert.deepStrictEqual(quorl.outline("a.js", source),
        { path: "a.js", sourceBytes: 0, omitted: [], items: [] });
      const error = thrownBy(() => quorl.records("it's \"a\".js", source));
      assert.ok(error instanceof OutlineError && error instanceof Error);
      assert.deepStrictEqual([error.name, error.status, error.message, error.answer],
        ["OutlineError", "failed", "File is empty: it's \"a\".js",
          "[{\"error\": \"File is empty: it\\'s \\\"a\\\".js\"}]"]);
    }
  },

  async "fails without memory, and goes on"() {
    const quorl = await load({ maxMemory: 16 * MEGABYTE });
    const small = quorl.records("a.js", "f();\n");
    let failed = 0;
    // Sizes at which the memory ends at many places of a run.
    for (let lines = 5000; lines < 60000; lines += 1111) {
      try {
        quorl.outline("a.js", "f(a);\n".repeat(lines));
      } catch (error) {
        ++failed;
        assert.strictEqual(error.status, "out-of-memory", error.stack);
        assert.strictEqual(quorl.memoryBytes, 0);
      }
      assert.strictEqual(quorl.records("a.js", "f();\n"), small);
      assert.ok(quorl.memoryBytes <= 16 * MEGABYTE);
    }
    assert.ok(failed > 10 && failed < 50, `${failed} failed`);
    const error = thrownBy(() => quorl.records("a.js", Buffer.alloc(20 * MEGABYTE)));
    assert.deepStrictEqual([error.status, error.message], ["out-of-memory", "a.js: out of memory"]);
  },

  async "does not fail for what earlier calls left"() {
    const source = "f(a);\n".repeat(10000);
    const fresh = await load({ maxMemory: 64 * MEGABYTE });
    fresh.records("a.js", source);
    // There is room for two calls, but not for ten.
    const maxMemory = 2 * fresh.memoryBytes;
    assert.ok(maxMemory < 64 * MEGABYTE);
    const lines = [];
    const quorl = await load({ maxMemory, diagnostics: (line) => lines.push(line) });
    for (let call = 0; call < 10; ++call) {
      quorl.records("a.js", source);
      assert.strictEqual(lines.splice(0).filter((line) => line === "Cleanup complete").length, 1);
    }
  },

  async "keeps its memory flat"() {
    const replaceAt = 16 * MEGABYTE;
    const quorl = await load({ replaceAt });
    const used = [];
    let replaced = 0;
    for (let call = 0; call < 10000; ++call) {
      const count = 20 + (call % 50);
      const { items } = quorl.outline(`${call}.js`, "function f() {\n  g();\n}\n".repeat(count));
      assert.strictEqual(items.length, 2 * count);
      if (quorl.memoryBytes === 0) ++replaced;
      assert.ok(quorl.memoryBytes <= replaceAt, `${quorl.memoryBytes} bytes`);
      if (call % 2500 === 2499) {
        global.gc();
        used.push(process.memoryUsage().rss);
      }
    }
    assert.ok(replaced >= 5, `replaced ${replaced} times`);
    assert.ok(Math.max(...used) < used[0] + 128 * MEGABYTE, `${used} bytes`);
  },

  async "passes on lines, and writes none"() {
    const script = `const { load } = require(${JSON.stringify(path.join(packageFolder, "node.cjs"))});
      load().then((quorl) => quorl.records("a.html", "<p></i></p>"));`;
    const done = spawnSync(process.execPath, ["-e", script]);
    assert.deepStrictEqual([done.status, done.stdout.toString(), done.stderr.toString()], [0, "", ""]);
    const seen = [];
    const quorl = await load({ diagnostics(line, stream) {
      seen.push([line, stream]);
      throw new RangeError("mine");
    } });
    assert.throws(() => quorl.records("a.js", "f();"), RangeError);
    assert.deepStrictEqual(seen, [["nodeid was 0 and now is 0", "stdout"]]);
    assert.throws(() => quorl.records("a.js", "f();"), RangeError);
    assert.deepStrictEqual(seen[1], seen[0], "lines of an earlier call come again");
  },

  async "is the same as a module"() {
    const module = await importModule();
    assert.deepStrictEqual(Object.keys(module).sort(), ["OutlineError", "load"]);
    const wasm = fs.readFileSync(path.join(packageFolder, "quorl-js.wasm"));
    const own = await load();
    const source = "function f() {\n}\n";
    for (const options of [undefined, { wasm }, { wasm: await WebAssembly.compile(wasm) }]) {
      const quorl = await module.load(options);
      assert.deepStrictEqual(quorl.outline("a.js", source), own.outline("a.js", source));
    }
    await assert.rejects(module.load({ wasm: new Uint8Array(8) }), WebAssembly.CompileError);
    const error = thrownBy(() => own.records("a.js", ""));
    assert.ok(!(error instanceof module.OutlineError), "each has a class of its own");
  },

  async "is small"() {
    const wasm = fs.readFileSync(path.join(packageFolder, "quorl-js.wasm"));
    const bytes = require("zlib").gzipSync(wasm, { level: 9 }).length;
    assert.ok(bytes <= 110000, `${bytes} bytes`);
  },
};

(async () => {
  let failed = 0;
  for (const [name, test] of Object.entries(tests)) {
    try {
      await test();
      console.log("ok " + name);
    } catch (error) {
      ++failed;
      console.log("FAILED " + name + "\n" + error.stack);
    }
  }
  console.log(`${Object.keys(tests).length} tests, ${failed} failed`);
  process.exitCode = failed === 0 ? 0 : 1;
})();
