// The page: shows the outline of the text as it is typed.
const EXAMPLE = `class Catalogue {
  constructor(path) {
    this.path = path;
  }

  #open() {
    return fetch(this.path);
  }
}

function main() {
  return new Catalogue("tea");
}
`;
const MAX_ITEMS = 5000; // more are of no use to a reader, and take seconds to lay out

const find = (id) => document.getElementById(id);
const [nameField, fileField, sourceField, list, state, main] =
  [find("name"), find("file"), find("source"), find("outline"), find("state"), document.querySelector("main")];
let parser = null;
let waiting = false;

function moduleBytes() {
  const text = atob(find("wasm").textContent);
  return Uint8Array.from(text, (byte) => byte.charCodeAt(0));
}

function showLines(item) {
  const lines = sourceField.value.split("\n");
  const begin = lines.slice(0, item.line - 1).join("\n").length + (item.line > 1 ? 1 : 0);
  const end = lines.slice(0, item.endLine).join("\n").length;
  sourceField.focus();
  sourceField.setSelectionRange(begin, end);
}

function rowOf(item, level) {
  const row = document.createElement("li");
  const lines = document.createElement("button");
  lines.textContent = item.line === item.endLine ? `${item.line}` : `${item.line}-${item.endLine}`;
  lines.addEventListener("click", () => showLines(item));
  const kind = document.createElement("span");
  kind.className = "kind";
  kind.textContent = item.kind;
  const name = document.createElement("span");
  if (item.name !== "") name.className = "name";
  name.textContent = "  ".repeat(level) + (item.name || (item.text ?? "").split("\n")[0]);
  row.append(lines, kind, name);
  return row;
}

function counted(count, noun) {
  return `${count} ${noun}${count === 1 ? "" : "s"}`;
}

function show() {
  waiting = false;
  try {
    const { items, omitted } = parser.outline(nameField.value || "example.js", sourceField.value);
    const levels = [];
    for (const item of items) levels.push(item.parent === null ? 0 : levels[item.parent] + 1);
    list.replaceChildren(...items.slice(0, MAX_ITEMS).map((item, at) => rowOf(item, levels[at])));
    const missing = omitted.map((each) => `${counted(each.lines, "line")} left out (${each.reason})`);
    const more = items.length > MAX_ITEMS ? [`the first ${MAX_ITEMS} are shown`] : [];
    state.textContent = [counted(items.length, "item"), ...more, ...missing].join(", ");
  } catch (error) {
    list.replaceChildren();
    state.textContent = error.message;
  }
}

// Once a frame, however fast somebody types.
function showSoon() {
  if (waiting || parser === null) return;
  waiting = true;
  requestAnimationFrame(show);
}

async function take(file) {
  if (file === undefined) return;
  nameField.value = file.name;
  sourceField.value = await file.text();
  showSoon();
}

sourceField.addEventListener("input", showSoon);
nameField.addEventListener("input", showSoon);
fileField.addEventListener("change", () => take(fileField.files[0]));
main.addEventListener("dragover", (event) => {
  event.preventDefault();
  main.classList.add("dragging");
});
main.addEventListener("dragleave", () => main.classList.remove("dragging"));
main.addEventListener("drop", (event) => {
  event.preventDefault();
  main.classList.remove("dragging");
  take(event.dataTransfer.files[0]);
});
WebAssembly.compile(moduleBytes()).then((module) => {
  parser = new Parser(module);
  if (sourceField.value === "") sourceField.value = EXAMPLE;
  show();
}, (error) => { state.textContent = error.message; });
