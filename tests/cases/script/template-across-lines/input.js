const page = `
  <ul class="menu">
    ${items.map((i) => `<li>${i}</li>`).join("")}
  </ul>
`;
const sql = `
  SELECT * FROM t WHERE name = 'x'
  -- it's a comment
`;
run(page);
// not removed: the apostrophe above is still open
