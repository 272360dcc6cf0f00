// Makes the pictures of docs/pictures: pages of the project's own files, in a small window and with few
// colours.
"use strict";
const fs = require("fs");
const path = require("path");
const { execFileSync } = require("child_process");
const { pathToFileURL } = require("url");
const { run, open, settle } = require("./browser.js");

const root = process.env.ROOT;
const folder = path.join(root, "docs", "pictures");

function view(name, ...words) {
  const target = path.resolve(name + ".html");
  execFileSync(process.env.QUORL_JS, ["view", "--quiet", ...words, "-o", target], { cwd: root });
  return pathToFileURL(target).href;
}

async function picture(name, address, click, dark = false) {
  const page = await open(address, { width: 1000, height: 640, dark });
  for (const selector of click) {
    await page.click(selector);
    await settle(page);
  }
  await page.mouse.move(0, 0);
  await settle(page);
  const whole = path.resolve(name);
  await page.screenshot({ path: whole });
  await page.context().close();
  execFileSync("pngquant", ["--force", "--strip", "--speed", "1", "--output", path.join(folder, name),
    "48", whole]);
  console.log(name + ": " + fs.statSync(path.join(folder, name)).size + " bytes");
}

run({
  async file() {
    await picture("view-file.png", view("tour", "examples/tour.js"), ["#tree .row:has-text('load')"]);
  },
  async folder() {
    await picture("view-folder.png", view("tests", "-r", "tests/view", "view/src", "editors"),
      ["#view-treemap"], true);
  },
});
