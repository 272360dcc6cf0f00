// Writes dist/page.html: the page with its style and script inside, and a policy that allows nothing
// but these two. The program puts its data where @DATA@ stands.
import { createHash } from "node:crypto";
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { build } from "esbuild";

const folder = new URL(".", import.meta.url);
const read = (name) => readFileSync(new URL(name, folder), "utf8");
const hash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
const libraries = ["d3-hierarchy"];

async function bundle(entry) {
  const result = await build({
    absWorkingDir: folder.pathname,
    entryPoints: [entry],
    bundle: true,
    minify: true,
    write: false,
    format: "iife",
    target: "es2022",
    charset: "ascii",
    legalComments: "none",
  });
  return result.outputFiles[0].text.trim();
}

const licences = libraries
  .map((name) => `${name}\n\n${read(`node_modules/${name}/LICENSE`).trim()}`)
  .join("\n\n");
const script = `/*! With parts of ${licences}\n*/\n${await bundle("src/main.ts")}`;
const style = await bundle("src/page.css");
if (/<\/script|<!--|<script/i.test(script) || /<\/style/i.test(style)) {
  throw new Error("the script or style would end the element it stands in");
}
const parts = {
  POLICY:
    `default-src 'none'; script-src ${hash(script)}; style-src ${hash(style)}; ` +
    "base-uri 'none'; form-action 'none'",
  STYLE: style,
  SCRIPT: script,
};
const page = read("src/page.html").replace(/@(POLICY|STYLE|SCRIPT)@/g, (_, name) => parts[name]);
if (page.split("@DATA@").length !== 2) throw new Error("@DATA@ must stand there once");
mkdirSync(new URL("dist", folder), { recursive: true });
writeFileSync(new URL("dist/page.html", folder), page);
