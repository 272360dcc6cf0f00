// Runs "quorl-js lsp" for scripts and pages.
const vscode = require("vscode");
const { LanguageClient } = require("vscode-languageclient/node");

const LANGUAGES = ["javascript", "javascriptreact", "typescript", "typescriptreact", "html"];
let client;

exports.activate = () => {
  const settings = vscode.workspace.getConfiguration("quorl-js");
  client = new LanguageClient(
    "quorl-js", "Quorl JS", { command: settings.get("command"), args: ["lsp"] },
    {
      documentSelector: LANGUAGES.map((language) => ({ language })),
      initializationOptions: { imports: settings.get("imports") },
    });
  return client.start();
};

exports.deactivate = () => client && client.stop();
