// Pages that quorl-js view itself writes.
"use strict";
const assert = require("assert");
const fs = require("fs");
const path = require("path");
const { execFileSync, spawnSync } = require("child_process");
const { pathToFileURL } = require("url");
const { run, open, settle, close, rowsOf, titlesOf, chosen } = require("./browser.js");

// Writes a page of arguments, run in a folder.
function view(folder, name, ...words) {
  const target = path.resolve(name + ".html");
  execFileSync(process.env.QUORL_JS, ["view", "--quiet", ...words, "-o", target], { cwd: folder });
  return pathToFileURL(target).href;
}

function folderOf(name, files) {
  const folder = path.resolve(name);
  for (const [file, text] of Object.entries(files)) {
    fs.mkdirSync(path.dirname(path.join(folder, file)), { recursive: true });
    fs.writeFileSync(path.join(folder, file), text);
  }
  return folder;
}

run({
  async exampleFile() {
    const page = await open(view(process.env.ROOT, "tour", "examples/tour.js"));
    assert.strictEqual(await page.textContent("#subject"), "examples/tour.js");
    assert.deepStrictEqual(await rowsOf(page, "tree"), [
      ["examples/tour.js", "32 lines"], ["import { readFile } from \"fs\";", "2"], ["cache", "4"],
      ["Catalogue", "6"], ["constructor", "7"], ["this.path = path;", "8"], ["load", "11"],
      ["try {", "12"], ["text", "13"],
      ["return text.split(\"\\n\").map((line) => line.trim());", "14"], ["} catch (error) {", "15"],
      ["console.error(`no catalogue: ${error.message}`);", "16"], ["Entry", "21"],
      ["this.name = name;", "22"], ["this.price = price;", "23"],
      ["for (const name of [\"tea\", \"coffee\"]) {", "26"], ["if (!cache.has(name)) {", "27"],
      ["cache.set(name, new Entry(name, 2.5));", "28"], ["export default cache;", "32"]]);
    await page.click("#tree .row:has-text('load')");
    await settle(page);
    const marked = await page.$$eval("#source .marked:not([hidden]) .number", (all) =>
      all.map((one) => Number(one.textContent)).sort((a, b) => a - b));
    assert.deepStrictEqual(marked.slice(0, 6), [11, 12, 13, 14, 15, 16]);
    await close(page);
  },

  async index() {
    const index = path.resolve("code.index");
    execFileSync(process.env.QUORL_JS, ["index", index, "-r", "examples", "--include", "*.js"],
      { cwd: process.env.ROOT });
    const page = await open(view(process.env.ROOT, "index", "--index", index));
    assert.deepStrictEqual((await titlesOf(page, "tree")).slice(0, 3), ["examples", "greet.js", "Greeter"]);
    await page.click(".kind:has-text('class')");
    await settle(page);
    assert.deepStrictEqual(await rowsOf(page, "results"),
      [["Catalogue  export class Catalogue {", "tour.js:6"]]);
    await close(page);
  },

  async whatIsLeftOut() {
    const folder = folderOf("left", { "min.js": "f();\n" + "g();".repeat(5000) + "\n", "empty.js": "" });
    const target = path.resolve("left.html");
    const done = spawnSync(process.env.QUORL_JS,
      ["view", "--quiet", "min.js", "empty.js", "gone.js", "-o", target], { cwd: folder });
    assert.strictEqual(done.status, 1);
    const page = await open(pathToFileURL(target).href);
    assert.ok((await page.textContent("#figures")).endsWith(" \u00b7 1 not read"));
    assert.strictEqual(await page.textContent("#notes"), "20 kB of 1 file left out (hatched).");
    await page.click("#tree .row:has-text('min.js')");
    assert.strictEqual(await page.textContent("#facts .warning"),
      "1 of 2 lines left out (20,000 of 20,006 bytes): longer than 10,000 bytes");
    await page.click("#tree .row:has-text('gone.js')");
    assert.ok((await page.textContent("#facts dl")).includes("failed: gone.js: No such file or directory"));
    await close(page);
  },

  async hostileFile() {
    const name = "</script><script>alert(1)<\u2215script>\u202e.js".replace("/", "\u2215");
    const text = "function a() {}\n</script><script>alert(2)</script>\n<!--<script>\nlet \u202eb = '${alert(3)}';\r\n";
    const folder = folderOf("hostile", { [name]: text });
    const page = await open(view(folder, "hostile", name));
    assert.strictEqual(await page.textContent("#subject"), name.replace("\u202e", "[U+202E]"));
    const lines = await page.$$eval("#source .line:not([hidden]) code", (all) => all.map((one) => one.textContent));
    assert.deepStrictEqual(lines.sort(), ["</script><script>alert(2)</script>", "<!--<script>", "function a() {}",
      "let [U+202E]b = '${alert(3)}';"].sort());
    await close(page);
  },

  // A page shows the source, and the lines of items are those of the source.
  async linesOfSources() {
    const folder = folderOf("lines", { "a.js": "\r\n\rfunction a() {\r\n  b();\r}\n\nclass C {\n}\n" });
    const page = await open(view(folder, "lines", "a.js"));
    for (const [row, shown] of [["a", ["3 function a() {", "4   b();", "5 }"]], ["C", ["7 class C {", "8 }"]]]) {
      await page.locator("#tree .row").filter({ has: page.getByText(row, { exact: true }) }).last().click();
      await settle(page);
      assert.strictEqual(await chosen(page), row);
      const marked = await page.$$eval("#source .marked:not([hidden])", (all) =>
        all.map((one) => one.children[0].textContent + " " + one.children[1].textContent));
      assert.deepStrictEqual(marked.sort(), shown);
    }
    await close(page);
  },
});
