#ifdef DEBUG
console.log("debug build");
#else
console.log("release build");
#endif
#ifndef TRACE
var trace = false;
#else
var trace = true;
#endif
#define LIMIT 10
#if LEVEL 2
var level = 2;
#elif LEVEL 1
var level = 1;
#else
var level = 0;
#endif
#ifndef A
#ifdef B
b();
#endif
silenced();
#endif
back();
#ifdef FEATURE_FLAG_FOR_THE_EXPERIMENTAL_CHECKOUT_V12
checkout();
#endif
                                                    deep();
