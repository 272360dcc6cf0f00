-- Run by Neovim with a script open: prints what it gets from the server, a line each.
local function fail(text)
  io.stdout:write("failed: " .. text .. "\n")
  vim.cmd("cquit")
end

local function wait(what, holds)
  if not vim.wait(30000, holds, 10) then fail("no " .. what) end
end

local function print_line(...) io.stdout:write(table.concat({ ... }, " ") .. "\n") end

local function request(method, more)
  local params = vim.tbl_extend("force", { textDocument = vim.lsp.util.make_text_document_params() },
                                more or {})
  local answers, err = vim.lsp.buf_request_sync(0, method, params, 30000)
  if err then fail(method .. ": " .. err) end
  for _, answer in pairs(answers) do return answer.result end
end

wait("client", function() return #vim.tbl_values(vim.lsp.buf_get_clients(0)) > 0 end)
wait("capabilities", function()
  return vim.tbl_values(vim.lsp.buf_get_clients(0))[1].server_capabilities.documentSymbolProvider
end)

-- The outline as Neovim shows it: the list of locations of vim.lsp.buf.document_symbol().
local function outline()
  vim.fn.setloclist(0, {})
  vim.fn.setqflist({})
  vim.lsp.buf.document_symbol()
  wait("outline", function() return #vim.fn.getqflist() + #vim.fn.getloclist(0) > 0 end)
  vim.cmd("cclose | lclose")
  local list = #vim.fn.getqflist() > 0 and vim.fn.getqflist() or vim.fn.getloclist(0)
  for _, item in ipairs(list) do print_line("symbol", item.lnum, item.text) end
end

outline()
vim.api.nvim_buf_set_lines(0, 0, 0, false, { "// \240\159\152\128", "let added = 1;" })
outline()
for _, fold in ipairs(request("textDocument/foldingRange")) do
  print_line("fold", fold.startLine + 1, fold.endLine + 1)
end
for _, symbol in ipairs(request("workspace/symbol", { query = "area" })) do
  print_line("found", symbol.name, symbol.containerName)
end
vim.lsp.stop_client(vim.lsp.get_active_clients())
wait("end", function() return #vim.lsp.get_active_clients() == 0 end)
vim.cmd("qall!")
