function Greeter(name) {
  var label = name;
}
let total = 1;
