// Opens pages in Chromium and collects what a page must not do: requests, dialogs, messages on the
// console, errors, violations of its policy.
"use strict";
const assert = require("assert");
const path = require("path");
const { pathToFileURL } = require("url");
const { chromium } = require("playwright-core");
const { writePage } = require("./page_data.js");

let browser = null;

// Runs the tests, an object of functions by name, one after the other.
async function run(tests) {
  const isRoot = process.getuid() === 0;
  browser = await chromium.launch({ executablePath: process.env.CHROMIUM, chromiumSandbox: !isRoot });
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
  await browser.close();
  console.log(Object.keys(tests).length + " tests, " + failed + " failed");
  process.exitCode = failed === 0 && Object.keys(tests).length > 0 ? 0 : 1;
}

// Makes a page of the files and returns its address.
function pageOf(name, files, header) {
  const target = path.resolve(name + ".html");
  writePage(process.env.PAGE, target, files, header);
  return pathToFileURL(target).href;
}

// Opens an address, and waits until the page is ready to be used.
async function open(address, options = {}) {
  const { fragment = "", dark = false, width = 1280, height = 800, ready = true, script = "" } = options;
  const context = await browser.newContext({ viewport: { width, height },
    colorScheme: dark ? "dark" : "light", javaScriptEnabled: options.javaScript !== false });
  const page = await context.newPage();
  page.faults = [];
  page.requests = [];
  page.on("request", (request) => page.requests.push(request.url()));
  page.on("dialog", (dialog) => {
    page.faults.push("dialog: " + dialog.message());
    void dialog.dismiss();
  });
  page.on("console", (message) => page.faults.push("console: " + message.text()));
  page.on("pageerror", (error) => page.faults.push("error: " + error.message));
  page.on("popup", (popup) => page.faults.push("popup: " + popup.url()));
  if (options.javaScript !== false) {
    await page.addInitScript("addEventListener('securitypolicyviolation', (event) => " +
      "console.log('violation of ' + event.violatedDirective)); " + script);
  }
  await page.goto(address + fragment);
  if (ready) {
    await page.waitForFunction(() => performance.getEntriesByName("ready").length > 0, null,
      { timeout: 60000 });
    await settle(page);
  }
  return page;
}

// Waits until nothing is searched and all is drawn.
async function settle(page) {
  await page.waitForFunction(() => !document.getElementById("found").textContent.includes("so far"));
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => setTimeout(done, 0))));
}

// Closes a page, which must have done nothing but show itself.
async function close(page) {
  assert.deepStrictEqual(page.faults, []);
  const address = page.url().replace(/#.*/, "");
  for (const request of page.requests) assert.strictEqual(request.replace(/#.*/, ""), address);
  await page.context().close();
}

// The texts of all visible rows of a list from top to bottom: [title, aside].
function rowsOf(page, list) {
  return page.evaluate((id) => {
    const rows = [...document.querySelectorAll("#" + id + " .row")].filter((row) => !row.hidden);
    rows.sort((a, b) => Number(a.dataset.index) - Number(b.dataset.index));
    return rows.map((row) => [row.querySelector(".title").textContent,
      row.querySelector(".aside").textContent]);
  }, list);
}

async function titlesOf(page, list) {
  return (await rowsOf(page, list)).map(([title]) => title);
}

const chosen = (page) => page.textContent("#facts h2 .name");

// The parameters in the URL's fragment.
const fragmentOf = (page) => Object.fromEntries(new URLSearchParams(new URL(page.url()).hash.slice(1)));

module.exports = { run, pageOf, open, settle, close, rowsOf, titlesOf, chosen, fragmentOf };
