// Prints the outline of a file: node outline.mjs FILE
import { readFileSync } from "node:fs";
import { load } from "quorl-js";

const [file] = process.argv.slice(2);
const quorl = await load();
for (const { line, kind, name } of quorl.outline(file, readFileSync(file)).items) {
  if (name !== "") console.log(line, kind, name);
}
