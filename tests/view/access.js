// axe finds no barriers, in light and dark, in each state of the page; and the page is of use without a
// mouse.
"use strict";
const assert = require("assert");
const axe = require("axe-core");
const { run, pageOf, open, settle, close, chosen } = require("./browser.js");
const { codeBase } = require("./page_data.js");

const files = codeBase(30, 20);
files[0].source = "x();\n".repeat(300);
files[1].omitted = "30 of 40 lines left out (29,000 of 30,000 bytes): longer than 10,000 bytes";
files[1].omittedBytes = 29000;
files[2].status = "failed";
files[2].message = "no such file";
const address = pageOf("access", files, { hidden: 12 });
const one = pageOf("access-one", files.slice(0, 1));

const STATES = {
  "all": [address, ""],
  "an item with source": [address, "#chosen=5&zoom=2"],
  "a file with text left out": [address, "#view=treemap&chosen=" + (2 + files[0].items.length)],
  "results": [address, "#find=load&kinds=function,method"],
  "nothing found": [address, "#find=no+such+thing"],
  "a single file": [one, "#chosen=3"],
};

const tests = {};
for (const [name, [page_, fragment]] of Object.entries(STATES)) {
  for (const dark of [false, true]) {
    for (const width of [1280, 390]) {
      tests[[name, dark ? "dark" : "light", width].join(", ")] = async () => {
        const page = await open(page_, { fragment, dark, width });
        // Its own source may not come through the policy, but through the debugger.
        await page.evaluate(axe.source);
        const { violations, passes } = await page.evaluate(() => window.axe.run(document));
        assert.deepStrictEqual(violations.map(({ id, nodes }) =>
          [id, nodes.map((node) => [node.target.join(" "), node.failureSummary])]), []);
        assert.ok(passes.length > 20, passes.length);
        await close(page);
      };
    }
  }
}

run({
  ...tests,

  // Every control can be reached and seen with the keyboard, in the order of the page.
  async tabOrder() {
    const page = await open(one, { fragment: "#chosen=1&zoom=1" });
    const seen = [];
    for (let k = 0; k < 60; ++k) {
      await page.keyboard.press("Tab");
      const [id, outline] = await page.evaluate(() => {
        const at = document.activeElement;
        return [at.id || at.className || at.tagName, getComputedStyle(at).outlineStyle];
      });
      if (id === "BODY") break;
      assert.notStrictEqual(outline, "none", id);
      seen.push(id);
    }
    const order = ["find", "tree", "view-icicle", "view-treemap", "size-lines", "size-items", "size-bytes",
      "BUTTON", "canvas", "kind", "label", "facts", "source"];
    assert.deepStrictEqual(order.filter((id) => !seen.includes(id)), []);
    const places = order.map((id) => seen.indexOf(id));
    assert.deepStrictEqual(places, [...places].sort((a, b) => a - b));
    await close(page);
  },

  async keyboardOnly() {
    const page = await open(address);
    await page.keyboard.press("/");
    await page.keyboard.type(files[3].items[0].name);
    await settle(page);
    await page.keyboard.press("Enter");
    await settle(page);
    assert.strictEqual(await chosen(page), files[3].items[0].name);
    await close(page);
  },
});
