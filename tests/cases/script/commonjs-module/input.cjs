#!/usr/bin/env node
"use strict";

const util = require("util");
const { join, dirname } = require("path");
require("./register");

exports.VERSION = "2.1.0";

exports.greet = function (name) {
  return util.format("hello %s", name);
};

function Logger(prefix) {
  this.prefix = prefix;
}

Logger.prototype.write = function write(text) {
  console.log(this.prefix + ": " + text);
};

module.exports.Logger = Logger;
module.exports.defaults = {
  level: "info",
  target: join(dirname(__filename), "log")
};

if (require.main === module) {
  exports.greet("world");
}
