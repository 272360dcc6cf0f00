// Names, paths and texts that were written to do harm: nothing of them runs, all of them are shown.
"use strict";
const assert = require("assert");
const { run, pageOf, open, settle, close, titlesOf, chosen } = require("./browser.js");

// What it is, the text, and how the page shows it.
const TEXTS = [
  ["script end", "</script><script>alert(1)</script>"],
  ["comment", "<!-- <script>alert(2)"],
  ["image", "<img src=x onerror=alert(3)>"],
  ["end of a text area", "</textarea></title></style><svg onload=alert(4)>"],
  ["template", "${alert(5)} `${alert(5)}` {{alert(5)}}"],
  ["quotes", "\"'`><b onmouseover=\"alert(6)\">"],
  ["entity", "&lt;script&gt;alert(7)&lt;/script&gt; &#0; &amp"],
  ["link", "javascript:alert(8)"],
  ["data link", "data:text/html,<script>alert(9)</script>"],
  ["prototype", "__proto__"],
  ["constructor", "constructor"],
  ["method of objects", "hasOwnProperty"],
  ["right to left override", "a\u202egnp.exe\u202c", "a[U+202E]gnp.exe[U+202C]"],
  ["isolates", "\u2066a\u2067b\u2068c\u2069", "[U+2066]a[U+2067]b[U+2068]c[U+2069]"],
  ["marks", "a\u200e\u200f\u061cb", "a[U+200E][U+200F][U+061C]b"],
  ["zero width", "pay\u200bpal\ufeff\u2060", "pay[U+200B]pal[U+FEFF][U+2060]"],
  ["controls", "a\u0001\u001b[31m\u007f\u0085b", "a[U+0001][U+001B][31m[U+007F][U+0085]b"],
  ["separators", "a\u2028b\u2029c", "a[U+2028]b[U+2029]c"],
  ["tags", "a\u{e0041}\u{e007f}b", "a[U+E0041][U+E007F]b"],
  ["NUL", "a\u0000b", "a[U+0000]b"],
  ["invalid UTF-8", Buffer.from([0x61, 0xff, 0xc3, 0x28, 0xed, 0xa0, 0x80]), "a\ufffd\ufffd(\ufffd\ufffd\ufffd"],
  ["directives", "@DATA@ @import url(//example.org/x); sourceMappingURL=//example.org/x.map"],
  ["style", "x;background:url(//example.org/x)"],
  ["replacement", "$& $1 $$ $` $'"],
  ["right to left", "\u05e9\u05dc\u05d5\u05dd \u0645\u0631\u062d\u0628\u0627"],
];
const shownAs = ([, text, shown]) => shown ?? text;
// The page is in English: where a text is a path, only what follows the last slash is the name.
const lastPart = (text) => text.slice(text.lastIndexOf("/") + 1);

const files = TEXTS.map(([, text]) => ({
  path: text,
  message: text,
  omitted: text,
  omittedBytes: 3,
  omittedLines: 1,
  lines: 4,
  size: 40,
  source: Buffer.concat([Buffer.from("first\n"), Buffer.from(text), Buffer.from("\nthird\n")]),
  items: [{ kind: "function", label: "function", line: 2, bytes: 10, name: text, text }],
}));
// As labels and as the program's name too.
const header = { tool: "</script><b>tool", labels: ["__proto__", "<i>label</i>", "line", "logic"] };

run({
  async textsNamesAndPaths() {
    // Each in a page of its own folder, so that the paths of the others do not change its place.
    const address = pageOf("hostile", files.map((file, k) => ({ ...file,
      path: Buffer.concat([Buffer.from("all/" + k + " "), Buffer.from(file.path)]) })), header);
    const page = await open(address, { height: 3000 });
    await page.fill("#find", "");
    await page.click(".kind:has-text('function')");
    await settle(page);
    const found = await titlesOf(page, "results");
    assert.deepStrictEqual(found.map((title) => title.slice(0, (title.length - 2) / 2)),
      TEXTS.map(shownAs).map((text) => text.trim()));
    for (const test of TEXTS) {
      const shown = shownAs(test);
      await page.locator("#results .row").filter({ hasText: shown }).first().click();
      await settle(page);
      assert.strictEqual(await chosen(page), shown);
      assert.strictEqual(await page.textContent("#facts .text"), shown.replace(/\r/g, "\n"));
      assert.ok((await page.textContent("#facts .place")).endsWith(shown + ":2"), shown);
      const lines = await page.$$eval("#source .marked:not([hidden]) code", (all) =>
        all.map((line) => line.textContent));
      assert.deepStrictEqual(lines, [shown]);
      // Its file shows what is left out of it.
      await page.click("#facts dd .link");
      await settle(page);
      assert.ok((await chosen(page)).endsWith(lastPart(shown)), shown);
      assert.strictEqual(await page.textContent("#facts .warning"), shown);
    }
    for (const view of ["treemap", "icicle"]) {
      await page.click("#view-" + view);
      await settle(page);
      const box = await page.locator("#canvas").boundingBox();
      for (let k = 0; k < 20; ++k) {
        await page.mouse.move(box.x + box.width * (0.05 + 0.045 * k), box.y + box.height * (0.04 + 0.048 * k));
      }
    }
    assert.strictEqual(await page.textContent("#tool"), header.tool);
    assert.ok((await page.title()).endsWith(header.tool));
    await page.selectOption("#label", { label: "__proto__" });
    await settle(page);
    assert.strictEqual((await titlesOf(page, "results")).length, TEXTS.length);
    // Nothing that stands in a text has become an element.
    assert.strictEqual(await page.locator("#page img, #page b, #page i, #page svg, #page a, #page script," +
      "#page style, #page iframe, #page object, #page embed, #page form").count(), 0);
    await close(page);
  },

  async alone() {
    for (const [k, test] of TEXTS.entries()) {
      const page = await open(pageOf("alone" + k, [{ ...files[k], status: "failed" }]));
      assert.strictEqual(await page.textContent("#subject"), shownAs(test));
      assert.ok((await page.textContent("#facts dl")).includes("failed: " + shownAs(test)));
      await close(page);
    }
  },

  async searches() {
    const page = await open(pageOf("searches", files, header));
    for (const test of TEXTS) {
      if (Buffer.isBuffer(test[1]) || test[1].includes("\u0000")) continue;
      await page.fill("#find", test[1]);
      await settle(page);
      assert.match(await page.textContent("#found"), /^[1-9]\d* found$/, test[0]);
    }
    await close(page);
  },

  async fragments() {
    const address = pageOf("fragments", files.slice(0, 2), header);
    for (const [, text] of TEXTS) {
      const word = encodeURIComponent(text.toString());
      const fragment = "#find=" + word + "&label=" + word + "&kinds=" + word + "&chosen=" + word +
        "&view=" + word + "&" + word + "=1";
      const page = await open(address, { fragment });
      // Line ends do not come into a field of one line.
      assert.strictEqual(await page.inputValue("#find"), text.toString());
      await close(page);
    }
  },

  async veryLongTexts() {
    const long = (letter) => Buffer.alloc(1 << 20, letter);
    const page = await open(pageOf("long", [{ path: long("p"), lines: 1, size: 1 << 20, source: long("s"),
      message: long("m"), status: "failed", omitted: long("o"),
      items: [{ kind: "function", line: 1, bytes: 1 << 20, name: long("n"), text: long("t") }] }]));
    assert.strictEqual(await page.textContent("#subject"), "p".repeat(200));
    await page.click("#tree .row:has-text('nnn')");
    await settle(page);
    assert.strictEqual(await chosen(page), "n".repeat(2000));
    assert.ok((await page.textContent("#facts dl")).includes("Name1.0 MB, cut here"));
    assert.strictEqual(await page.textContent("#facts .text"), "t".repeat(20000));
    assert.strictEqual(await page.textContent("#facts .hint"), "Cut after 20,000 bytes.");
    assert.strictEqual(await page.textContent("#source .marked code"), "s".repeat(1000) + "\u2026");
    assert.strictEqual(await page.evaluate(() => document.documentElement.scrollWidth), 1280);
    await page.fill("#find", "n".repeat(100000));
    await settle(page);
    assert.strictEqual(await page.textContent("#found"), "1 found");
    await close(page);
  },

  // The policy stops what the page itself does not do.
  async policy() {
    const page = await open(pageOf("policy", files.slice(0, 1)));
    await page.evaluate(() => {
      const script = document.createElement("script");
      script.textContent = "window.ran = true";
      document.body.append(script);
      const image = document.createElement("img");
      image.src = "data:image/gif;base64,R0lGODlhAQABAAAAACw=";
      document.body.append(image);
      const styled = document.createElement("p");
      styled.setAttribute("style", "color: red");
      document.body.append(styled);
      return fetch("data:text/plain,x").catch(() => undefined);
    });
    await page.waitForTimeout(200);
    assert.strictEqual(await page.evaluate(() => window.ran), undefined);
    for (const directive of ["script-src-elem", "img-src", "style-src-attr", "connect-src"]) {
      assert.ok(page.faults.includes("console: violation of " + directive), page.faults.join("\n"));
    }
    await page.context().close();
  },
});
