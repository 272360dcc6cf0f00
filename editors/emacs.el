(require 'eglot)
(setq eglot-server-programs
      (cons '((js-mode js2-mode typescript-mode mhtml-mode html-mode)
              . ("quorl-js" "lsp"))
            eglot-server-programs))
(add-hook 'js-mode-hook #'eglot-ensure)
(add-hook 'mhtml-mode-hook #'eglot-ensure)
