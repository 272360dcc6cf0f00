// Prints what the TypeScript compiler's parser finds in script files, a JSON line a file.
//
//   node script_truth.js TYPESCRIPT_FOLDER <list of paths
//
// "expected" are the functions that are declared or the value of a name, the methods, constructors,
// accessors and classes that are the first on their line: the line is that of the name. "accepted"
// are those and every other function or class with a name, as LINE:NAME.
"use strict";
const fs = require("fs");
const ts = require(process.argv[2]);

const isFunctionValue = (node) =>
  node !== undefined && (ts.isFunctionExpression(node) || ts.isArrowFunction(node));
const isClassValue = (node) => node !== undefined && ts.isClassExpression(node);

// The node that names a thing, null if it has no name that could be written down.
function textOfName(name, source) {
  if (name === undefined) return null;
  if (ts.isIdentifier(name) || ts.isPrivateIdentifier(name) || ts.isNumericLiteral(name)) {
    return name.getText(source);
  }
  if (ts.isStringLiteralLike(name)) return name.getText(source).slice(1, -1);
  if (ts.isComputedPropertyName(name)) return name.getText(source);
  return null;
}

// The last name on the left of an assignment.
function assignedName(left) {
  if (ts.isIdentifier(left)) return left;
  if (ts.isPropertyAccessExpression(left)) return left.name;
  if (ts.isElementAccessExpression(left) && ts.isStringLiteralLike(left.argumentExpression)) {
    return left.argumentExpression;
  }
  if (ts.isNonNullExpression(left)) return assignedName(left.expression);
  return undefined;
}

// [name node, node that ends, whether it is expected] of a node that defines something.
function definitionOf(node) {
  if (ts.isFunctionDeclaration(node) || ts.isClassDeclaration(node) ||
      ts.isMethodDeclaration(node) || ts.isGetAccessor(node) || ts.isSetAccessor(node)) {
    return [node.name, node, true];
  }
  if (ts.isConstructorDeclaration(node)) return ["constructor", node, true];
  if (ts.isVariableDeclaration(node) || ts.isPropertyAssignment(node) ||
      ts.isPropertyDeclaration(node)) {
    const isValue = isFunctionValue(node.initializer) || isClassValue(node.initializer);
    if (isValue && !ts.isBindingName(node.name) || isValue && ts.isIdentifier(node.name)) {
      return [node.name, node.initializer, true];
    }
  }
  if (ts.isBinaryExpression(node) && node.operatorToken.kind === ts.SyntaxKind.EqualsToken &&
      (isFunctionValue(node.right) || isClassValue(node.right))) {
    let name = assignedName(node.left);
    // module.exports = function name
    if (name !== undefined && name.text === "exports" && node.right.name) name = node.right.name;
    return [name, node.right, true];
  }
  if ((ts.isParameter(node) || ts.isBindingElement(node)) &&
      (isFunctionValue(node.initializer) || isClassValue(node.initializer))) {
    return [node.name, node.initializer, false];
  }
  if (ts.isFunctionExpression(node) || ts.isClassExpression(node)) return [node.name, node, false];
  return null;
}

function constructorStart(node, source) {
  const token = node.getChildren(source).find((child) =>
    child.kind === ts.SyntaxKind.ConstructorKeyword || ts.isStringLiteralLike(child));
  return (token || node).getStart(source);
}

function truthOf(path) {
  const text = fs.readFileSync(path, "utf8");
  const kind = path.endsWith(".tsx") ? ts.ScriptKind.TSX
    : /\.[mc]?ts$/.test(path) ? ts.ScriptKind.TS
    : ts.ScriptKind.JSX;
  const source = ts.createSourceFile(path, text, ts.ScriptTarget.Latest, true, kind);
  const lineAt = (position) => source.getLineAndCharacterOfPosition(position).line + 1;
  const found = [];
  const accepted = new Set();
  const pending = [source];
  while (pending.length > 0) {
    const node = pending.pop();
    ts.forEachChild(node, (child) => { pending.push(child); });
    const definition = definitionOf(node);
    if (definition === null) continue;
    const [nameNode, value, isExpected] = definition;
    const isConstructor = nameNode === "constructor";
    const name = isConstructor ? nameNode : textOfName(nameNode, source);
    if (name === null || name === "") continue;
    const begin = isConstructor ? constructorStart(node, source) : nameNode.getStart(source);
    const line = lineAt(begin);
    accepted.add(line + ":" + name);
    if (!isExpected) continue;
    found.push({name, line, endLine: lineAt(value.getEnd()), begin,
                what: ts.SyntaxKind[node.kind]});
  }
  found.sort((a, b) => a.begin - b.begin);
  const lines = new Set();
  const expected = found.filter(({line}) => !lines.has(line) && lines.add(line));
  return {path, errors: source.parseDiagnostics.length, expected, accepted: [...accepted]};
}

for (const path of fs.readFileSync(0, "utf8").split("\n").filter(Boolean)) {
  process.stdout.write(JSON.stringify(truthOf(path)) + "\n");
}
