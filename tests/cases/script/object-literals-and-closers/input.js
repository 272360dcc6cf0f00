var settings = {
  theme: "dark",
  sizes: { small: 1, large: 2 },
  onChange: function (value) {
    notify(value);
  },
  toggle() {
    this.on = !this.on;
  },
};

function outer() {
  const inner = {
    a: 1
  };
  return inner;
}

setTimeout(function () {
  tick();
}, 100);

list.forEach(function (item) {
  use(item);
});

const frozen = Object.freeze({
  deep: {
    one: 1
  }});

var pair = [{ a: 1 }, { b: 2 }];
function late() {
  call({ done: true }); }
last();
