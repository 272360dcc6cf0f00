// Prints how long pages take to open, to search and to zoom: the pages that are named, or generated
// ones of 380,000 and 1,330,000 items. Each keystroke and step is timed until the next frame is drawn.
"use strict";
const path = require("path");
const { pathToFileURL } = require("url");
const { run, pageOf, open, settle } = require("./browser.js");
const { codeBase } = require("./page_data.js");

const kWords = ["l", "lo", "loa", "load", "e", "er", "opt", "options", "const ", "zzzz"];
const named = process.argv.slice(2).map((file) => [path.basename(file), () => pathToFileURL(path.resolve(file)).href]);
const generated = [38, 133].map((items) => [items * 10000 + " items", () =>
  pageOf("times" + items, codeBase(10000, items))]);

// Milliseconds from before the action until the frame behind it has been drawn.
function timed(page, action, argument) {
  return page.evaluate(async ([body, value]) => {
    const start = performance.now();
    new Function("value", body)(value);
    await new Promise((done) => requestAnimationFrame(() => setTimeout(done, 0)));
    return performance.now() - start;
  }, [action, argument]);
}

const typing = "const find = document.getElementById('find'); find.value = value;" +
  "find.dispatchEvent(new Event('input'));";
const pressing = "document.getElementById('canvas').dispatchEvent(" +
  "new KeyboardEvent('keydown', { key: value, bubbles: true }));";
const round = (values) => values.map((value) => Math.round(value)).join(" ");

async function measure(name, address) {
  const ready = [];
  for (let k = 0; k < 3; ++k) {
    const page = await open(address);
    ready.push(await page.evaluate(() => performance.getEntriesByName("ready")[0].startTime));
    await page.context().close();
  }
  const page = await open(address);
  await page.waitForTimeout(3000);
  const keys = [];
  const all = [];
  for (const word of kWords) {
    const start = Date.now();
    keys.push(await timed(page, typing, word));
    await settle(page);
    all.push(Date.now() - start);
  }
  await timed(page, typing, "");
  const steps = {};
  for (const view of ["icicle", "treemap"]) {
    await page.click("#view-" + view);
    await settle(page);
    steps[view] = [];
    await timed(page, pressing, "Home");
    for (let k = 0; k < 5; ++k) {
      await timed(page, pressing, "ArrowRight");
      steps[view].push(await timed(page, pressing, "Enter"));
    }
    for (let k = 0; k < 5; ++k) steps[view].push(await timed(page, pressing, "Backspace"));
  }
  await page.context().close();
  console.log(name + "\n  ready, ms:          " + round(ready) + "\n  keystroke, ms:      " + round(keys) +
    "\n  all found, ms:      " + round(all) + "\n  icicle zoom, ms:    " + round(steps.icicle) +
    "\n  treemap zoom, ms:   " + round(steps.treemap));
}

const tests = {};
for (const [name, address] of named.length > 0 ? named : generated) {
  tests[name] = async () => measure(name, address());
}
run(tests);
