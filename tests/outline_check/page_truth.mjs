// Prints where parse5 finds the elements of pages, a JSON line a file.
//
//   node page_truth.mjs PARSE5_FOLDER <list of paths
//
// "elements" are those that the source has tags for, in its order: name and line of the opening tag.
// "scripts" are the lines on which the text of inline scripts begins.
import fs from "node:fs";
import path from "node:path";
import {pathToFileURL} from "node:url";

const {parse} = await import(pathToFileURL(path.join(process.argv[2], "dist", "index.js")).href);

// The tree's children, those of templates too.
const childrenOf = (node) => [...(node.childNodes || []), ...(node.content ? [node.content] : [])];

for (const file of fs.readFileSync(0, "utf8").split("\n").filter(Boolean)) {
  const source = fs.readFileSync(file, "latin1");
  const found = [];
  const pending = [parse(source, {sourceCodeLocationInfo: true})];
  while (pending.length > 0) {
    const node = pending.pop();
    pending.push(...childrenOf(node));
    const place = node.sourceCodeLocation;
    if (!node.tagName || !place) continue;
    const start = place.startTag || place;
    const endLine = place.endTag ? place.endTag.endLine : null;
    found.push({name: node.tagName, offset: start.startOffset, line: start.startLine, endLine,
                isScript: node.tagName === "script" && !node.attrs.some(({name}) => name === "src")});
  }
  found.sort((a, b) => a.offset - b.offset);
  const elements = found.filter((each, i) => i === 0 || each.offset !== found[i - 1].offset);
  process.stdout.write(JSON.stringify({path: file, elements}) + "\n");
}
