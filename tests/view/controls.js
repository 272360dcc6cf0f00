// Each control of the page, the state in the URL's fragment, and the colours of the canvas.
"use strict";
const assert = require("assert");
const { run, pageOf, open, settle, close, rowsOf, titlesOf, chosen, fragmentOf } =
  require("./browser.js");

const SOURCE = "class View {\n  draw() {\n    paint();\n  }\n}\n\nfunction open(path) {\n  load(path);\n}\n";
const VIEW = [
  { kind: "class", label: "class", line: 1, last: 5, bytes: 44, name: "View", text: "class View {" },
  { kind: "method", label: "function", line: 2, last: 4, parent: 0, bytes: 29, name: "draw",
    text: "draw() {" },
  { kind: "statement", label: "line", line: 3, parent: 1, bytes: 13, text: "paint();" },
  { kind: "function", label: "function", line: 7, last: 9, bytes: 37, name: "open",
    text: "function open(path) {" },
  { kind: "statement", label: "line", line: 8, parent: 3, bytes: 14, text: "load(path);" },
];
// Nodes: 0 lib, 1 lib/ui, 2 view.js, 3 View, 4 draw, 5 paint, 6 open, 7 load, 8 cut.js, 9 main,
// 10 broken.js.
const FILES = [
  { path: "lib/ui/view.js", lines: 9, size: SOURCE.length, source: SOURCE, items: VIEW },
  { path: "lib/ui/cut.js", lines: 40, size: 30000, omittedLines: 30, omittedBytes: 29000,
    omitted: "30 of 40 lines left out (29,000 of 30,000 bytes): longer than 10,000 bytes",
    items: [{ kind: "function", label: "function", line: 1, last: 10, bytes: 1000, name: "main",
      text: "function main() {" }] },
  { path: "lib/broken.js", status: "failed", message: "lib/broken.js: Permission denied", items: [] },
];

const address = pageOf("controls", FILES, { hidden: 3 });
const pressed = (page, id) => page.getAttribute("#" + id, "aria-pressed");
const crumbs = (page) => page.$$eval("#crumbs button", (all) => all.map((one) => one.textContent));
const selected = (page) =>
  page.$$eval("#tree .row[aria-selected=true] .title", (all) => all.map((one) => one.textContent));

// The colour of the canvas at a part of its width and height.
function pixel(page, x, y) {
  return page.evaluate(([partX, partY]) => {
    const canvas = document.getElementById("canvas");
    const at = [Math.floor(canvas.width * partX), Math.floor(canvas.height * partY)];
    return [...canvas.getContext("2d").getImageData(...at, 1, 1).data].slice(0, 3).join();
  }, [x, y]);
}

// The colour that a kind has in the legend.
function legendColor(page, kind) {
  return page.evaluate((word) => {
    const button = [...document.querySelectorAll(".kind")].find(
      (one) => one.children[1].textContent === word);
    const canvas = document.createElement("canvas");
    const context = canvas.getContext("2d");
    context.fillStyle = button.querySelector(".sign").style.backgroundColor;
    context.fillRect(0, 0, 1, 1);
    return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3).join();
  }, kind);
}

async function clickCanvas(page, x, y) {
  const box = await page.locator("#canvas").boundingBox();
  await page.mouse.click(box.x + box.width * x, box.y + box.height * y);
  await settle(page);
}

async function press(page, key) {
  await page.keyboard.press(key);
  await settle(page);
}

run({
  async figures() {
    const page = await open(address);
    assert.strictEqual(await page.textContent("#subject"), "lib");
    assert.strictEqual(await page.title(), "lib - quorl-js 1.0.0");
    assert.strictEqual(await page.textContent("#figures"),
      "3 files \u00b7 6 items \u00b7 49 lines \u00b7 30 kB \u00b7 1 not read");
    assert.strictEqual(await page.textContent("#notes"),
      "29 kB of 1 file left out (hatched). 3 plain statements are not shown; " +
      "quorl-js view --all shows them.");
    assert.deepStrictEqual(
      await page.$$eval(".kind", (all) => all.map((one) => one.textContent)),
      ["ffunction2", "mmethod1", "Cclass1", "-statement2", "Ffile3", "Dfolder2"]);
    assert.deepStrictEqual(
      await page.$$eval("#facts ul:first-of-type .name", (all) => all.map((one) => one.textContent)),
      ["cut.js", "view.js", "broken.js"]);
    await close(page);
  },

  async list() {
    const page = await open(address);
    assert.deepStrictEqual(await rowsOf(page, "tree"), [
      ["lib", "2"], ["ui", "2"], ["view.js", "9 lines"], ["View", "1"], ["draw", "2"],
      ["paint();", "3"], ["open", "7"], ["load(path);", "8"], ["cut.js", "40 lines"], ["main", "1"],
      ["broken.js", "0 lines"]]);
    await page.click("#tree .row:has-text('draw')");
    assert.strictEqual(await chosen(page), "draw");
    assert.deepStrictEqual(fragmentOf(page), { chosen: "4" });
    await page.focus("#tree");
    const steps = [["ArrowDown", "paint();"], ["ArrowDown", "open"], ["ArrowLeft", "open"],
      ["ArrowDown", "cut.js"], ["End", "broken.js"], ["Home", "lib"], ["ArrowRight", "ui"],
      ["ArrowUp", "lib"], ["PageDown", "broken.js"], ["ArrowLeft", "lib"]];
    for (const [key, title] of steps) {
      await press(page, key);
      assert.deepStrictEqual([key, await chosen(page), await selected(page)], [key, title, [title]]);
      const active = await page.getAttribute("#tree", "aria-activedescendant");
      assert.strictEqual(await page.textContent("#" + active + " .title"), title);
    }
    // "open" was closed by the third key.
    assert.ok(!(await titlesOf(page, "tree")).includes("load(path);"));
    await page.click("#tree .row:has-text('open') .twisty");
    assert.ok((await titlesOf(page, "tree")).includes("load(path);"));
    await page.click("#tree .row:has-text('ui') .twisty");
    assert.deepStrictEqual(await titlesOf(page, "tree"), ["lib", "ui", "broken.js"]);
    const row = page.locator("#tree .row:has-text('ui')");
    assert.deepStrictEqual(await Promise.all(["aria-level", "aria-expanded", "aria-posinset",
      "aria-setsize"].map((name) => row.getAttribute(name))), ["2", "false", "1", "2"]);
    await row.dblclick();
    assert.deepStrictEqual(await crumbs(page), ["lib", "ui"]);
    await close(page);
  },

  async facts() {
    const page = await open(address, { fragment: "#chosen=4" });
    const facts = async () => Object.fromEntries(await page.evaluate(() =>
      [...document.querySelectorAll("#facts dt")].map((name) =>
        [name.textContent, name.nextElementSibling.textContent])));
    const draw = await facts();
    assert.deepStrictEqual([draw.Kind, draw.Label, draw.Place, draw.Lines, draw.Size],
      ["method", "function", "lib/ui/view.js:2", "2\u20134 (3 lines)", "29 bytes"]);
    assert.strictEqual(await page.textContent("#facts .text"), "draw() {");
    const lines = await page.$$eval("#source .line:not([hidden])", (all) => all.map((line) =>
      [line.children[0].textContent, line.children[1].textContent, line.className]));
    assert.deepStrictEqual(lines.sort((a, b) => a[0] - b[0]).slice(0, 5), [
      ["1", "class View {", "line"], ["2", "  draw() {", "line marked"],
      ["3", "    paint();", "line marked"], ["4", "  }", "line marked"], ["5", "}", "line"]]);
    await page.click("#facts button:has-text('View')");
    assert.strictEqual(await chosen(page), "View");
    await page.click("#facts ul button:has-text('draw')");
    assert.strictEqual(await chosen(page), "draw");
    await page.click("#facts button:has-text('Zoom the chart to it')");
    assert.deepStrictEqual(fragmentOf(page), { chosen: "4", zoom: "4" });
    await page.click("#tree .row:has-text('cut.js')");
    const cut = await facts();
    assert.deepStrictEqual([cut["Left out"], cut.Size, cut.Items],
      [FILES[1].omitted, "40 lines, 30 kB", "1"]);
    assert.ok(await page.isHidden("#source"));
    await page.click("#tree .row:has-text('broken.js')");
    assert.strictEqual((await facts()).Status, "failed: lib/broken.js: Permission denied");
    await close(page);
  },

  async chart() {
    const page = await open(address, { fragment: "#chosen=10" });
    // broken.js has no box, so the chart shows what contains it: the whole, in columns for lib, ui,
    // files, and items of three levels.
    assert.deepStrictEqual(fragmentOf(page), { chosen: "10" });
    assert.strictEqual(await pixel(page, 0.01, 0.5), await legendColor(page, "folder"));
    assert.strictEqual(await pixel(page, 0.3, 0.1), await legendColor(page, "file"));
    assert.strictEqual(await pixel(page, 0.5, 0.08), await legendColor(page, "class"));
    assert.strictEqual(await pixel(page, 0.5, 0.35), await legendColor(page, "function"));
    await clickCanvas(page, 0.5, 0.08);
    assert.strictEqual(await chosen(page), "View");
    assert.deepStrictEqual(await crumbs(page), ["lib", "ui", "view.js", "View"]);
    assert.deepStrictEqual(fragmentOf(page), { chosen: "3", zoom: "3" });
    await clickCanvas(page, 0.02, 0.5);
    assert.deepStrictEqual(await crumbs(page), ["lib", "ui", "view.js"]);
    await page.click("#crumbs button:has-text('lib')");
    assert.deepStrictEqual(await crumbs(page), ["lib"]);
    assert.strictEqual(await chosen(page), "lib");
    await page.mouse.move(0, 0);
    const box = await page.locator("#canvas").boundingBox();
    await page.mouse.move(box.x + box.width * 0.5, box.y + box.height * 0.08);
    assert.strictEqual(await page.textContent("#tip"), "class View, line 1, 5 lines");
    // The lines that are left out end the box of the file.
    await page.mouse.move(box.x + box.width * 0.5, box.y + box.height * 0.95);
    assert.strictEqual(await page.textContent("#tip"), FILES[1].omitted);
    await close(page);
  },

  async chartKeys() {
    const page = await open(address);
    await page.focus("#canvas");
    assert.strictEqual(await page.getAttribute("#canvas", "aria-label"), "icicle of lib, size by lines");
    const steps = [["ArrowRight", "ui"], ["ArrowRight", "view.js"], ["ArrowDown", "cut.js"],
      ["ArrowDown", "cut.js"], ["ArrowUp", "view.js"], ["ArrowRight", "View"], ["ArrowLeft", "view.js"],
      ["Enter", "view.js"]];
    for (const [key, title] of steps) {
      await press(page, key);
      assert.deepStrictEqual([key, await chosen(page)], [key, title]);
    }
    assert.strictEqual(await page.textContent("#speech"), "file view.js, 9 lines");
    assert.deepStrictEqual(await crumbs(page), ["lib", "ui", "view.js"]);
    await press(page, "Backspace");
    assert.deepStrictEqual(await crumbs(page), ["lib", "ui"]);
    await press(page, "Home");
    assert.deepStrictEqual(await crumbs(page), ["lib"]);
    assert.strictEqual(await chosen(page), "lib");
    await close(page);
  },

  async viewsAndSizes() {
    const page = await open(address);
    assert.deepStrictEqual([await pressed(page, "view-icicle"), await pressed(page, "size-lines")],
      ["true", "true"]);
    // By lines cut.js (40) is larger than view.js (9); by items view.js (5) is.
    const largest = () => page.textContent("#facts ul:first-of-type li:first-child");
    assert.strictEqual(await largest(), "Fcut.js40 lines");
    await page.click("#size-items");
    assert.strictEqual(await largest(), "Fview.js5 items");
    await page.click("#size-bytes");
    assert.strictEqual(await largest(), "Fcut.js30 kB");
    await page.click("#view-treemap");
    await settle(page);
    assert.deepStrictEqual([await pressed(page, "view-icicle"), await pressed(page, "view-treemap")],
      ["false", "true"]);
    assert.deepStrictEqual(fragmentOf(page), { view: "treemap", size: "bytes" });
    // The largest file comes first. Its hatched part is drawn in two colours.
    assert.strictEqual(await pixel(page, 0.5, 0.015), await legendColor(page, "folder"));
    await clickCanvas(page, 0.5, 0.075);
    assert.strictEqual(await chosen(page), "cut.js");
    const colors = new Set();
    for (let k = 0; k < 24; ++k) colors.add(await pixel(page, 0.5 + k / 500, 0.5));
    assert.ok(colors.size > 1, [...colors].join(" "));
    await close(page);
  },

  async firstSearch() {
    const page = await open(address);
    // Rows are made before a search needs them, and stay hidden.
    await page.waitForFunction(() => document.querySelector("#results .row") !== null);
    assert.ok(await page.isHidden("#results"));
    assert.strictEqual(await page.getAttribute("#results", "class"), "scroller");
    assert.strictEqual(await page.locator("#results .row:not([hidden])").count(), 0);
    // Each row is filled once, although the list appears.
    const filled = await page.evaluate(async () => {
      const titles = [];
      const observer = new MutationObserver((records) => {
        for (const { target } of records) {
          if (target.className === "aside") titles.push(target.parentElement.children[2].textContent);
        }
      });
      observer.observe(document.getElementById("results"), { childList: true, subtree: true });
      const find = document.getElementById("find");
      find.value = "path";
      find.dispatchEvent(new Event("input"));
      for (let frame = 0; frame < 3; ++frame) await new Promise((done) => requestAnimationFrame(done));
      return titles;
    });
    assert.deepStrictEqual(filled, ["open  function open(path) {", "load(path);"]);
    await page.fill("#find", "");
    await settle(page);
    assert.ok(await page.isVisible("#tree"));
    assert.strictEqual(await page.locator("#results .row:not([hidden])").count(), 0);
    await close(page);
  },

  async search() {
    const page = await open(address);
    const find = async (text) => {
      await page.fill("#find", text);
      await settle(page);
      return [await page.textContent("#found"),
        (await page.isVisible("#results")) ? await rowsOf(page, "results") : null];
    };
    // Names first: whole, then at their start; then paths, then texts.
    assert.deepStrictEqual(await find("view"), ["2 found",
      [["View  class View {", "view.js:1"], ["view.js", "ui"]]]);
    assert.deepStrictEqual(await find("IE"), ["2 found",
      [["View  class View {", "view.js:1"], ["view.js", "ui"]]]);
    assert.deepStrictEqual(await find("path"), ["2 found",
      [["open  function open(path) {", "view.js:7"], ["load(path);", "view.js:8"]]]);
    assert.deepStrictEqual(await find("lib/b"), ["1 found", [["broken.js", "lib"]]]);
    assert.deepStrictEqual(await find("no such"), ["nothing found", []]);
    await find("ma");
    await page.press("#find", "Enter");
    assert.strictEqual(await chosen(page), "main");
    await find("path");
    await page.press("#find", "ArrowDown");
    await press(page, "Home");
    assert.strictEqual(await chosen(page), "open");
    await press(page, "ArrowDown");
    assert.strictEqual(await chosen(page), "load(path);");
    assert.deepStrictEqual(await find(""), ["", null]);
    assert.deepStrictEqual(await selected(page), ["load(path);"]);
    await page.focus("#tree");
    await press(page, "/");
    assert.strictEqual(await page.evaluate(() => document.activeElement.id), "find");
    await close(page);
  },

  async searchBeyondAscii() {
    const page = await open(pageOf("letters", [{ path: "a.js", lines: 2, items: [
      { kind: "variable", line: 1, name: "gr\u00f6\u00dfe", text: "let gr\u00f6\u00dfe" },
      { kind: "variable", line: 2, name: "\u041c\u0438\u0440", text: "let \u041c\u0438\u0440" }] }]));
    for (const [text, found] of [["GR\u00d6", 1], ["r\u00f6\u00df", 1], ["\u041c\u0438\u0440", 1],
      ["\u0438\u0440", 1], ["\u00c3", 0]]) {
      await page.fill("#find", text);
      await settle(page);
      assert.deepStrictEqual([text, (await rowsOf(page, "results")).length], [text, found]);
    }
    await close(page);
  },

  async filters() {
    const page = await open(address);
    await page.click(".kind:has-text('class')");
    await settle(page);
    assert.deepStrictEqual(await titlesOf(page, "results"), ["View  class View {"]);
    assert.deepStrictEqual(fragmentOf(page), { kinds: "class" });
    // What does not match is faded.
    assert.strictEqual(await pixel(page, 0.5, 0.08), await legendColor(page, "class"));
    assert.notStrictEqual(await pixel(page, 0.5, 0.35), await legendColor(page, "function"));
    await page.click(".kind:has-text('function')");
    await settle(page);
    assert.deepStrictEqual((await titlesOf(page, "results")).map((title) => title.split(" ")[0]),
      ["View", "open", "main"]);
    await page.selectOption("#label", { label: "class" });
    await settle(page);
    assert.deepStrictEqual(fragmentOf(page), { kinds: "function,class", label: "class" });
    assert.deepStrictEqual(await titlesOf(page, "results"), ["View  class View {"]);
    await page.selectOption("#label", { label: "any" });
    await page.fill("#find", "a");
    await settle(page);
    assert.deepStrictEqual((await titlesOf(page, "results")).map((title) => title.split(" ")[0]),
      ["main", "View", "open"]);
    await page.fill("#find", "");
    await page.click("#all-kinds");
    await settle(page);
    assert.ok(await page.isVisible("#tree"));
    assert.ok(await page.isDisabled("#all-kinds"));
    await close(page);
  },

  async fragment() {
    const fragment = "#chosen=6&zoom=2&view=treemap&size=items&kinds=function%2Cclass&label=function&find=o";
    const page = await open(address, { fragment });
    const expectAll = async () => {
      assert.strictEqual(await chosen(page), "open");
      assert.deepStrictEqual(await crumbs(page), ["lib", "ui", "view.js"]);
      assert.deepStrictEqual([await pressed(page, "view-treemap"), await pressed(page, "size-items")],
        ["true", "true"]);
      assert.deepStrictEqual(await page.$$eval(".kind[aria-pressed=true]",
        (all) => all.map((one) => one.children[1].textContent)), ["function", "class"]);
      assert.strictEqual(await page.inputValue("#find"), "o");
      assert.strictEqual(await page.inputValue("#label"), "1");
      assert.deepStrictEqual(await titlesOf(page, "results"),
        ["open  function open(path) {", "main  function main() {"]);
    };
    await expectAll();
    await page.reload();
    await page.waitForFunction(() => performance.getEntriesByName("ready").length > 0);
    await settle(page);
    await expectAll();
    await page.evaluate(() => (location.hash = "#chosen=3"));
    await settle(page);
    assert.deepStrictEqual([await chosen(page), await page.inputValue("#find")], ["View", ""]);
    await page.click("#view-treemap");
    await page.goBack();
    assert.strictEqual(await pressed(page, "view-icicle"), "true");
    await page.goBack();
    await settle(page);
    await expectAll();
    // What makes no sense is as at the start.
    await page.evaluate(() => (location.hash = "#chosen=99&zoom=-1&view=x&size=y&kinds=z&label=__proto__"));
    await settle(page);
    assert.deepStrictEqual([await chosen(page), await crumbs(page)], ["lib", ["lib"]]);
    assert.ok(await page.isVisible("#tree"));
    // What is typed comes into the fragment a moment later.
    await page.fill("#find", "x&y=#");
    await page.waitForFunction(() => location.hash.includes("find"));
    assert.strictEqual(fragmentOf(page).find, "x&y=#");
    await close(page);
  },

  async colorsFollowTheSystem() {
    const page = await open(address);
    const light = await pixel(page, 0.01, 0.5);
    await page.emulateMedia({ colorScheme: "dark" });
    await page.waitForFunction(() => matchMedia("(prefers-color-scheme: dark)").matches);
    await settle(page);
    const dark = await pixel(page, 0.01, 0.5);
    assert.notStrictEqual(light, dark);
    assert.strictEqual(dark, await legendColor(page, "folder"));
    // Paper is white.
    await page.evaluate(() => dispatchEvent(new Event("beforeprint")));
    await settle(page);
    assert.strictEqual(await pixel(page, 0.01, 0.5), light);
    await page.emulateMedia({ media: "print", colorScheme: "dark" });
    assert.strictEqual(await page.evaluate(() => getComputedStyle(document.body).backgroundColor),
      "rgb(255, 255, 255)");
    assert.ok(await page.isHidden("#find"));
    await close(page);
  },

  async smallWindow() {
    const page = await open(address, { width: 390, height: 800 });
    const boxes = await page.evaluate(() => ["left", "middle", "right", "frame"].map((id) => {
      const { left, top, width, height } = document.getElementById(id).getBoundingClientRect();
      return { left, top, width, height };
    }));
    assert.ok(boxes[0].top < boxes[1].top && boxes[1].top < boxes[2].top);
    for (const box of boxes) assert.ok(box.width > 340 && box.width <= 390 && box.height > 100);
    assert.strictEqual(await page.evaluate(() => document.documentElement.scrollWidth), 390);
    await close(page);
  },

  async singleFile() {
    const page = await open(pageOf("single", [FILES[0]]));
    assert.strictEqual(await page.textContent("#subject"), "lib/ui/view.js");
    assert.deepStrictEqual(await titlesOf(page, "tree"),
      ["lib/ui/view.js", "View", "draw", "paint();", "open", "load(path);"]);
    assert.ok(await page.isVisible("#source"));
    await close(page);
  },

  async folders() {
    const file = (path) => ({ path, items: [] });
    const titles = async (name, paths) => {
      const page = await open(pageOf(name, paths.map(file)));
      const rows = await titlesOf(page, "tree");
      await close(page);
      return rows;
    };
    assert.deepStrictEqual(await titles("root", ["/a/x.js", "/b/y.js"]), ["/", "a", "x.js", "b", "y.js"]);
    assert.deepStrictEqual(await titles("absolute", ["/a/b/x.js", "/a/b/c/d/y.js"]),
      ["/a/b", "x.js", "c/d", "y.js"]);
    assert.deepStrictEqual(await titles("apart", ["a/x.js", "b.js", "a/y.js"]),
      ["All files", "a", "x.js", "y.js", "b.js"]);
    assert.deepStrictEqual(await titles("same", ["a.js", "a.js"]), ["All files", "a.js", "a.js"]);
  },

  // Children may come behind a sibling of their parent that begins on the same line.
  async orderOfItems() {
    const item = (name, line, last, parent) => ({ kind: "logic", line, last, parent, name });
    const page = await open(pageOf("order", [{ path: "a.js", lines: 5, items: [
      item("a", 1, 3, -1), item("b", 3, 5, -1), item("c", 3, 3, 0), item("d", 4, 4, 1)] }]));
    assert.deepStrictEqual(await rowsOf(page, "tree"),
      [["a.js", "5 lines"], ["a", "1"], ["c", "3"], ["b", "3"], ["d", "4"]]);
    await page.fill("#find", "c");
    await settle(page);
    assert.deepStrictEqual(await rowsOf(page, "results"), [["c  ", "a.js:3"]]);
    await close(page);
  },

  async oldBrowser() {
    const page = await open(address, { ready: false, script: "delete window.DecompressionStream;" });
    assert.strictEqual(await page.textContent("#message"),
      "This browser is too old for this page: it lacks DecompressionStream. " +
      "Use Chrome 80, Firefox 113, Safari 16.4 or a later one.");
    assert.ok(await page.isHidden("#page"));
    await close(page);
  },

  async withoutScripts() {
    const page = await open(address, { ready: false, javaScript: false });
    assert.strictEqual(await page.innerText("body"), "This page needs JavaScript. It sends and loads nothing.");
    await close(page);
  },

  async damagedData() {
    const fs = require("fs");
    const { fileURLToPath, pathToFileURL } = require("url");
    const whole = fs.readFileSync(fileURLToPath(address), "utf8");
    for (const [name, data] of [["none", ""], ["text", "!!!"], ["cut", "H4sIAAAAAAAAA+3"]]) {
      const file = fileURLToPath(address).replace(/controls\.html$/, "damaged-" + name + ".html");
      fs.writeFileSync(file, whole.replace(/(text\/plain">)[^<]*/, "$1" + data));
      const page = await open(pathToFileURL(file).href, { ready: false });
      await page.waitForFunction(() => document.getElementById("message").textContent !== "");
      assert.match(await page.textContent("#message"), /^The data of this page cannot be read: .+\.$/);
      assert.ok(await page.isHidden("#page"));
      await close(page);
    }
  },
});
