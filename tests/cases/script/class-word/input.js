import { classNames } from "./names";
var subclassed = 1;
el.classList.add("on");
function classify(list) {
  el.classList.remove("off");
  var total = list.length;
}
function outer(node) {
  node.classList.add("in");
  let kind = node.className;
  if (node.classList.length) {
    use(node.classList);
  }
  return "subclass";
}
class Panel extends HTMLElement {
  className = "panel";
  render() {
    this.classList.add("x");
    var inner = 1;
  }
}
items.push("Class");
el.classList.forEach(function (c) {
  var seen = c;
});
export class Late {}
