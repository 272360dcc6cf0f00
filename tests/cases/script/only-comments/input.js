/*
 * Licence text; it's free.
 */

// import nothing
   // indented
<!-- page comment
-->
