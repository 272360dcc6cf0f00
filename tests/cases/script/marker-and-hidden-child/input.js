var state = 1;
function addTTTTT(x) {
  state += x;
}

function outer() {
  on("TTTTT", function (e) {
    handle(e);
  });
  after();
  var note = "TTTTT";
}
TTTTTdebug(state); kept();
more(TTTTT
  , state); tail();
end();
TTTTT