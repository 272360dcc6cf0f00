// Puts the package together, and the page that shows it: make_package.mjs WASM FOLDER
import { createHash } from "node:crypto";
import { copyFileSync, mkdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";

const [wasm, folder] = process.argv.slice(2);
const target = `${folder}/package`;
const read = (name) => readFileSync(new URL(name, import.meta.url), "utf8");

// The same code for require(): its imports and exports are of these few forms.
function commonJs(name) {
  const exported = [];
  const text = read(`src/${name}.mjs`)
    .replace(/^import (\{.*\}) from "(node:.*)";$/gm, 'const $1 = require("$2");')
    .replace(/^import (\{.*\}) from "\.\/(.*)\.mjs";$/gm, 'const $1 = require("./$2.cjs");')
    .replace(/^export \{ (\w+) \} from "\.\/(.*)\.mjs";$/gm, 'exports.$1 = require("./$2.cjs").$1;')
    .replace(/^export (async function|function|class) (\w+)/gm, (_, word, each) => {
      exported.push(`exports.${each} = ${each};\n`);
      return `${word} ${each}`;
    })
    .replace("new URL(\"./quorl-js.wasm\", import.meta.url)", 'require.resolve("./quorl-js.wasm")');
  const result = `"use strict";\n${text}\n${exported.join("")}`;
  if (/^(import|export) |import\.meta/m.test(result)) throw new Error(`${name}: not CommonJS`);
  return result;
}

// A page of one file. Its policy allows its own script and style, and WebAssembly.
function playground() {
  const hash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
  const core = read("src/core.mjs").replace(/^export /gm, "");
  const script = `"use strict";\n${core}\n${read("playground/page.js")}`;
  const style = read("playground/page.css");
  if (/<\/script|<!--|<script/i.test(script) || /<\/style/i.test(style)) {
    throw new Error("the script or style would end the element it stands in");
  }
  const parts = {
    POLICY: `default-src 'none'; script-src ${hash(script)} 'wasm-unsafe-eval'; ` +
      `style-src ${hash(style)}; base-uri 'none'; form-action 'none'`,
    STYLE: style,
    SCRIPT: script,
    WASM: readFileSync(wasm).toString("base64"),
  };
  return read("playground/page.html").replace(/@(POLICY|STYLE|SCRIPT|WASM)@/g, (_, name) => parts[name]);
}

rmSync(target, { recursive: true, force: true });
mkdirSync(target, { recursive: true });
for (const name of ["package.json", "README.md", "LICENSE"]) {
  copyFileSync(new URL(name, import.meta.url), `${target}/${name}`);
}
for (const name of ["core", "node", "browser"]) {
  writeFileSync(`${target}/${name}.mjs`, read(`src/${name}.mjs`));
}
for (const name of ["core", "node"]) writeFileSync(`${target}/${name}.cjs`, commonJs(name));
// The same types under two names: TypeScript takes the form of a module from the extension.
for (const name of ["index.d.ts", "index.d.mts"]) writeFileSync(`${target}/${name}`, read("src/index.d.ts"));
copyFileSync(wasm, `${target}/quorl-js.wasm`);
writeFileSync(`${folder}/playground.html`, playground());
