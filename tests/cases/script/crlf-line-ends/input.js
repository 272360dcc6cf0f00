// head comment
function sum(a, b) {
  // add
	return a + b;
}

var t = "one \
two";
a();b();
last();
done();