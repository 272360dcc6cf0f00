// Pages of a million items open, and what is far down in them can be reached.
"use strict";
const assert = require("assert");
const { run, pageOf, open, settle, close, rowsOf, titlesOf, chosen } = require("./browser.js");
const { siblings, nested, codeBase } = require("./page_data.js");

const expand = async (page, row) => {
  await page.click("#tree .row:has-text('" + row + "') .twisty");
  await settle(page);
};

run({
  async aMillionSiblings() {
    const page = await open(pageOf("flat", [siblings(1000000)]));
    assert.strictEqual(await page.textContent("#figures"),
      "1 file \u00b7 1,000,000 items \u00b7 1,000,000 lines \u00b7 8.0 MB");
    assert.deepStrictEqual((await titlesOf(page, "tree")).slice(0, 2), ["flat.js", "call(0);"]);
    assert.ok((await page.locator("#tree .row").count()) < 100);
    assert.ok((await page.textContent("#note")).startsWith("1,000,000 small boxes merged in grey."));
    await page.focus("#tree");
    await page.keyboard.press("End");
    await settle(page);
    assert.strictEqual(await chosen(page), "call(999999);");
    assert.deepStrictEqual((await rowsOf(page, "tree")).pop(), ["call(999999);", "1,000,000"]);
    await page.keyboard.press("ArrowUp");
    await settle(page);
    assert.strictEqual(await chosen(page), "call(999998);");
    // The middle of the scroll bar is the middle of the list.
    await page.evaluate(() => {
      const tree = document.getElementById("tree");
      tree.scrollTop = (tree.scrollHeight - tree.clientHeight) / 2;
    });
    await settle(page);
    const middle = Number((await rowsOf(page, "tree"))[0][1].replaceAll(",", ""));
    assert.ok(Math.abs(middle - 500000) < 100, middle);
    await page.fill("#find", "call(777777)");
    await settle(page);
    assert.deepStrictEqual(await rowsOf(page, "results"), [["call(777777);", "flat.js:777,778"]]);
    await page.fill("#find", "call");
    await settle(page);
    assert.strictEqual(await page.textContent("#found"), "1,000,000 found");
    for (const view of ["treemap", "icicle"]) {
      await page.click("#view-" + view);
      await settle(page);
    }
    await close(page);
  },

  async aHundredThousandLevels() {
    const last = 100000;
    const page = await open(pageOf("deep", [nested(last)]), { fragment: "#chosen=" + last });
    assert.strictEqual(await chosen(page), "if (a99999) {");
    const rows = await rowsOf(page, "tree");
    assert.deepStrictEqual(rows.pop(), ["if (a99999) {", "level 100,000 \u00b7 100,000"]);
    await page.click("#crumbs button >> nth=0");
    await settle(page);
    assert.match(await page.textContent("#note"), /^\d+ of 100,001 levels drawn\. Click a box to zoom in\.$/);
    await page.focus("#canvas");
    for (let k = 0; k < 30; ++k) await page.keyboard.press("ArrowRight");
    await settle(page);
    assert.strictEqual(await chosen(page), "if (a29) {");
    await page.click("#view-treemap");
    await settle(page);
    assert.match(await page.textContent("#note"), /^\d+ of [\d,]+ levels drawn\./);
    await close(page);
  },

  async tenThousandFiles() {
    const files = codeBase(10000, 133);
    files[9876].items[0].name = "onlyHere";
    const page = await open(pageOf("base", files));
    assert.ok((await page.textContent("#figures")).startsWith("10,000 files \u00b7 1,330,000 items"));
    const target = files[9876].items[0];
    await page.fill("#find", target.name);
    await settle(page);
    assert.strictEqual((await titlesOf(page, "results"))[0], target.name + "  " + target.text);
    await page.press("#find", "Enter");
    await page.fill("#find", "");
    await settle(page);
    assert.strictEqual(await chosen(page), target.name);
    assert.strictEqual(await page.locator("#tree .row[aria-selected=true]").count(), 1);
    // The item is drawn, if need be after a zoom: the chart's keys start at it.
    await page.focus("#canvas");
    await page.keyboard.press("ArrowLeft");
    await settle(page);
    assert.strictEqual(await chosen(page), files[9876].path.replace(/.*\//, ""));
    await page.click(".kind:has-text('class')");
    await settle(page);
    const classes = files.flatMap((file) => file.items).filter((item) => item.kind === "class").length;
    assert.strictEqual(await page.textContent("#found"), classes.toLocaleString("en-US") + " found");
    await close(page);
  },

  // The widest tree of folders that paths can give.
  async manyFolders() {
    const files = [];
    for (let k = 0; k < 50000; ++k) files.push({ path: "all/" + k + "/" + "d/".repeat(20) + "x.js", items: [] });
    files.push({ path: "all/deep/" + "y/z/".repeat(2000) + "end.js", items: [] });
    files.push({ path: "all/deep/" + "y/z/".repeat(1999) + "y/z2.js", items: [] });
    const page = await open(pageOf("folders", files));
    await expand(page, "0/d/d/d");
    assert.deepStrictEqual((await titlesOf(page, "tree")).slice(0, 3),
      ["all", "0/" + "d/".repeat(19) + "d", "x.js"]);
    await close(page);
  },
});
