(function (root) {
  "use strict";
  function Plugin(opts) {
    this.opts = opts;
  }
  root.Plugin = Plugin;
})(window);

(async () => {
  await boot();
})();

!function () {
  strict();
}();

var lib = (function () {
  var hidden = 0;
  return {
    next: function () {
      return ++hidden;
    }
  };
})();

$(document).ready(function () {
  go();
});

(function () { setup = (a) => a; })();
last();
