vim.api.nvim_create_autocmd("FileType", {
  pattern = { "javascript", "javascriptreact", "typescript", "typescriptreact", "html" },
  callback = function(event)
    local config = { name = "quorl-js", cmd = { "quorl-js", "lsp" }, root_dir = vim.fn.getcwd() }
    if vim.lsp.start then return vim.lsp.start(config) end  -- Neovim 0.8 and later
    QuorlJs = QuorlJs or vim.lsp.start_client(config)
    vim.lsp.buf_attach_client(event.buf, QuorlJs)
  end,
})
