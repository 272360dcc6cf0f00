// The playground, and the package as other pages use it, in Chromium.
//
// usage: node npm_page.js PAGE SCRIPT PACKAGE
"use strict";
const assert = require("assert");
const fs = require("fs");
const http = require("http");
const path = require("path");
const { pathToFileURL } = require("url");
const { chromium } = require("playwright-core");

const [address, script, packageFolder] =
  [pathToFileURL(path.resolve(process.argv[2])).href, ...process.argv.slice(3)];
const WORKER = `import { load } from "/package/browser.mjs";
const quorl = await load();
postMessage(quorl.outline("a.js", "function f() {\\n}\\n").items[0].name);`;

// Serves an empty page, a worker and the package.
function serve() {
  const server = http.createServer((request, response) => {
    const name = request.url.replace("/package/", "");
    const types = { ".mjs": "text/javascript", ".wasm": "application/octet-stream" };
    response.setHeader("Content-Type", types[path.extname(name)] ?? "text/html");
    if (request.url === "/worker.mjs") return response.end(WORKER);
    if (request.url === "/") return response.end("<!doctype html><link rel=icon href=data:,>");
    return response.end(fs.readFileSync(path.join(packageFolder, path.basename(name))));
  });
  return new Promise((resolve) => server.listen(0, "127.0.0.1", () => resolve(server)));
}

// The page, ready, with what it must not do collected in faults.
async function open(browser) {
  const page = await (await browser.newContext({ offline: true })).newPage();
  page.faults = [];
  page.on("request", (request) => {
    if (request.url() !== address) page.faults.push("request: " + request.url());
  });
  page.on("console", (message) => page.faults.push("console: " + message.text()));
  page.on("pageerror", (error) => page.faults.push("error: " + error.message));
  page.on("dialog", (dialog) => {
    page.faults.push("dialog: " + dialog.message());
    void dialog.dismiss();
  });
  await page.addInitScript("addEventListener('securitypolicyviolation', (event) => " +
    "console.log('violation of ' + event.violatedDirective))");
  await page.goto(address);
  await page.waitForFunction(() => document.getElementById("state").textContent.endsWith("items"));
  return page;
}

const rowsOf = (page) => page.$$eval("#outline li", (rows) =>
  rows.map((row) => [...row.children].map((part) => part.textContent.trim()).join(" ")));

async function rowsAfter(page, state) {
  await page.waitForFunction((text) => document.getElementById("state").textContent === text, state);
  return rowsOf(page);
}

const tests = {
  async "shows an example"(page) {
    assert.deepStrictEqual(await rowsOf(page), ["1-9 class Catalogue", "2-4 constructor constructor",
      "3 statement this.path = path;", "6-8 method #open", "7 statement return fetch(this.path);",
      "11-13 function main", "12 statement return new Catalogue(\"tea\");"]);
  },

  async "shows the outline of what is typed"(page) {
    await page.fill("#source", "");
    assert.deepStrictEqual(await rowsAfter(page, "0 items"), []);
    await page.type("#source", "class A {\n");
    assert.deepStrictEqual(await rowsAfter(page, "1 item"), ["1 class A"]);
    await page.type("#source", "run() {\n}\n}\n");
    assert.deepStrictEqual(await rowsAfter(page, "2 items"), ["1-4 class A", "2-3 method run"]);
  },

  async "reads a text as its name says"(page) {
    await page.fill("#source", "<h1>Tea</h1>\n");
    await page.fill("#name", "menu.html");
    assert.deepStrictEqual(await rowsAfter(page, "1 item"), ["1 element h1"]);
  },

  async "opens a file"(page) {
    await page.setInputFiles("#file", script);
    const rows = await rowsAfter(page, "18 items");
    assert.strictEqual(await page.inputValue("#name"), "tour.js");
    assert.deepStrictEqual(rows.slice(2, 4), ["6-19 class Catalogue", "7-9 constructor constructor"]);
  },

  async "takes a file that is dropped"(page) {
    const text = fs.readFileSync(script, "utf8");
    const transfer = await page.evaluateHandle((content) => {
      const data = new DataTransfer();
      data.items.add(new File([content], "dropped.js"));
      return data;
    }, text);
    await page.dispatchEvent("#source", "drop", { dataTransfer: transfer });
    assert.strictEqual((await rowsAfter(page, "18 items")).length, 18);
    assert.strictEqual(await page.inputValue("#name"), "dropped.js");
    assert.strictEqual(await page.inputValue("#source"), text);
  },

  async "selects the lines of an item"(page) {
    await page.click("#outline li:nth-child(4) button");
    assert.strictEqual(await page.evaluate(() => {
      const field = document.getElementById("source");
      return field.value.slice(field.selectionStart, field.selectionEnd);
    }), "  #open() {\n    return fetch(this.path);\n  }");
  },

  async "keeps its columns, however long a text is"(page) {
    await page.fill("#source", `f();\nf("${"long ".repeat(100)}");\nfunction g() {\n}\n`);
    await rowsAfter(page, "3 items");
    const lefts = await page.evaluate(() =>
      [...document.querySelectorAll("#outline .kind")].map((kind) => kind.getBoundingClientRect().left));
    assert.deepStrictEqual(lefts, [lefts[0], lefts[0], lefts[0]]);
  },

  async "says what is left out"(page) {
    await page.fill("#source", "f();\n" + "g();".repeat(5000));
    await rowsAfter(page, "1 item, 1 line left out (long-lines)");
  },

  async "takes a text for a text"(page) {
    const attack = "<img src=x onerror=alert(1)>";
    await page.fill("#source", `f('${attack}');\nclass A {\n}\n`);
    await page.fill("#name", `${attack}.js`);
    assert.deepStrictEqual(await rowsAfter(page, "2 items"),
      [`1 statement f('${attack}');`, "2-3 class A"]);
    assert.strictEqual(await page.locator("img").count(), 0);
  },

  async "shows the first of very many items"(page) {
    await page.setInputFiles("#file",
      { name: "many.js", mimeType: "text/plain", buffer: Buffer.from("f();\n".repeat(6000)) });
    assert.strictEqual((await rowsAfter(page, "6000 items, the first 5000 are shown")).length, 5000);
  },
};

async function checkPackage(browser) {
  const server = await serve();
  const page = await browser.newPage();
  await page.goto(`http://127.0.0.1:${server.address().port}/`);
  assert.deepStrictEqual(await page.evaluate(async () => {
    const { load, OutlineError } = await import("/package/browser.mjs");
    const quorl = await load();
    let status = null;
    try {
      quorl.records("a.js", "");
    } catch (error) {
      if (error instanceof OutlineError) ({ status } = error);
    }
    const worker = new Worker("/worker.mjs", { type: "module" });
    const inWorker = await new Promise((resolve, reject) => {
      worker.onmessage = (event) => resolve(event.data);
      worker.onerror = (event) => reject(new Error(event.message));
    });
    return [quorl.outline("a.js", "class A {\n}\n").items[0].name, status, inWorker];
  }), ["A", "failed", "f"]);
  await page.close();
  await new Promise((resolve) => {
    server.close(resolve);
    server.closeAllConnections();
  });
}

(async () => {
  const browser = await chromium.launch({ executablePath: process.env.CHROMIUM,
    chromiumSandbox: process.getuid() !== 0 });
  await checkPackage(browser);
  let failed = 0;
  for (const [name, test] of Object.entries(tests)) {
    const page = await open(browser);
    try {
      await test(page);
      assert.deepStrictEqual(page.faults, []);
      console.log("ok " + name);
    } catch (error) {
      ++failed;
      console.log("FAILED " + name + "\n" + error.stack);
    }
    await page.context().close();
  }
  await browser.close();
  console.log(`${Object.keys(tests).length} tests, ${failed} failed`);
  process.exitCode = failed === 0 ? 0 : 1;
})();
