/** Doc of the file. */
var a = 1; // trailing note; [kept] out
/* x */var b = 2;
/*
 * "quoted" and it's fine
 */
var c = "/* not a comment */"; /* gone */ var d = '//';
var url = `https://example.com/${a}`;
/* strict */"use strict"; // stays: it lies in a string
var pipe = 6; // a 6" pipe
[1, 2].forEach(log);
var re = /it's/; // kept comment
var q = 'end';
f("a\"b // c", 'd\'e'); // out
var tpl = "<p><!-- note --></p>";
