// Prints how fast the npm package is. Checks nothing.
//
// usage: node npm_times.js PACKAGE SCRIPT
"use strict";
const fs = require("fs");
const path = require("path");

const [folder, script] = process.argv.slice(2).map((each) => path.resolve(each));
const { load } = require(path.join(folder, "node.cjs"));
const SMALL_CALLS = 10000;

function secondsOf(call) {
  const begin = process.hrtime.bigint();
  call();
  return Number(process.hrtime.bigint() - begin) / 1e9;
}

// The best of five.
const best = (call) => Math.min(...Array.from({ length: 5 }, () => secondsOf(call)));

load().then((quorl) => {
  const source = fs.readFileSync(script);
  const speed = (call) => (source.length / 1e6 / best(call)).toFixed(1);
  const small = "let a = 1;\n";
  const times = best(() => {
    for (let count = 0; count < SMALL_CALLS; ++count) quorl.records("a.js", small);
  });
  console.log(`records ${speed(() => quorl.records("a.js", source))} MB/s`);
  console.log(`outline ${speed(() => quorl.outline("a.js", source))} MB/s`);
  console.log(`${small.length} bytes ${(times / SMALL_CALLS * 1e6).toFixed(1)} microseconds a call`);
});
