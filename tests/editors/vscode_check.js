// Speaks to the server with the libraries of VS Code's client, and prints what it gets, a line each.
//
// usage: vscode_check.js NODE_MODULES SERVER SCRIPT
const childProcess = require("child_process");
const fs = require("fs");
const path = require("path");
const url = require("url");

const [modules, server, script] = process.argv.slice(2);
const lsp = require(path.join(modules, "vscode-languageserver-protocol/node.js"));
const { TextDocument } = require(path.join(modules, "vscode-languageserver-textdocument"));

const print = (...words) => console.log(words.join(" "));
const printTree = (symbols, depth) => {
  for (const symbol of symbols) {
    print("symbol", depth, symbol.name, symbol.kind, symbol.range.start.line + 1,
          symbol.range.end.line + 1);
    printTree(symbol.children || [], depth + 1);
  }
};

async function main() {
  const child = childProcess.spawn(server, ["lsp", "--stdio"]);
  const connection = lsp.createProtocolConnection(
    new lsp.StreamMessageReader(child.stdout), new lsp.StreamMessageWriter(child.stdin));
  const ended = new Promise((resolve) => child.on("exit", resolve));
  const scanned = new Promise((resolve) => {
    connection.onRequest(lsp.WorkDoneProgressCreateRequest.type, ({ token }) => {
      connection.onProgress(lsp.WorkDoneProgress.type, token, (value) => {
        if (value.kind === "end") resolve(value.message);
      });
    });
  });
  connection.onRequest(lsp.RegistrationRequest.type, () => {});
  connection.listen();
  const folder = url.pathToFileURL(path.dirname(script)).href;
  const { capabilities } = await connection.sendRequest(lsp.InitializeRequest.type, {
    processId: process.pid, rootUri: folder,
    workspaceFolders: [{ uri: folder, name: "folder" }],
    capabilities: {
      general: { positionEncodings: ["utf-16"] },
      window: { workDoneProgress: true },
      workspace: { didChangeWatchedFiles: { dynamicRegistration: true } },
      textDocument: {
        documentSymbol: { hierarchicalDocumentSymbolSupport: true },
        foldingRange: { lineFoldingOnly: true, rangeLimit: 5000 },
      },
    },
  });
  print("encoding", capabilities.positionEncoding);
  connection.sendNotification(lsp.InitializedNotification.type, {});
  print("scanned", await scanned);

  const uri = url.pathToFileURL(script).href;
  let text = TextDocument.create(uri, "javascript", 1, fs.readFileSync(script, "utf8"));
  connection.sendNotification(lsp.DidOpenTextDocumentNotification.type, { textDocument: {
    uri, languageId: "javascript", version: 1, text: text.getText() } });
  const textDocument = { uri };
  const symbols = () => connection.sendRequest(lsp.DocumentSymbolRequest.type, { textDocument });
  printTree(await symbols(), 0);

  const start = { line: 0, character: 0 };
  const contentChanges = [{ range: { start, end: start }, text: "// \u{1F600}\nlet added = 1;\n" },
                          { range: { start: { line: 0, character: 3 },
                                     end: { line: 0, character: 5 } }, text: "ok" }];
  connection.sendNotification(lsp.DidChangeTextDocumentNotification.type,
                              { textDocument: { uri, version: 2 }, contentChanges });
  text = TextDocument.update(text, contentChanges, 2);
  printTree(await symbols(), 0);
  for (const fold of await connection.sendRequest(lsp.FoldingRangeRequest.type, { textDocument })) {
    print("fold", fold.startLine + 1, fold.endLine + 1);
  }
  const [selection] = await connection.sendRequest(
    lsp.SelectionRangeRequest.type, { textDocument, positions: [{ line: 1, character: 5 }] });
  for (let each = selection; each; each = each.parent) print("select", text.getText(each.range).length);
  for (const symbol of await connection.sendRequest(lsp.WorkspaceSymbolRequest.type,
                                                    { query: "area" })) {
    print("found", symbol.name, symbol.containerName);
  }
  await connection.sendRequest("unknown/method").catch((error) => print("error", error.code));
  await connection.sendRequest(lsp.ShutdownRequest.type);
  await connection.sendNotification(lsp.ExitNotification.type);
  print("exit", await ended);
}

main().then(() => process.exit(0), (error) => {
  print("failed:", error.stack);
  process.exit(1);
});
