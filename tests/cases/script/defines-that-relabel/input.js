#ifdef NODE
module.exports = run;
#endif

function run(queue) {
  queue.flush();
}
