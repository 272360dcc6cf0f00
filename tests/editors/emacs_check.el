;;; Run by Emacs in batch: prints what it gets from the server, a line each. -*- lexical-binding: t -*-

(setq eglot-sync-connect t
      eglot-autoshutdown nil
      vc-handled-backends nil)

(defun check-print (&rest words)
  (princ (format "%s\n" (mapconcat (lambda (word) (format "%s" word)) words " "))))

;; An entry of the index is (NAME . POSITION) or (NAME . ENTRIES).
(defun check-print-index (index depth)
  (dolist (entry index)
    (when (consp entry)
      (let ((place (cdr entry)))
        (check-print "symbol" depth (substring-no-properties (car entry))
                     (if (integer-or-marker-p place) (line-number-at-pos place) "-"))
        (when (and (consp place) (consp (car place)))
          (check-print-index place (1+ depth)))))))

(defun check-file (path)
  (find-file path)
  (unless (eglot-managed-p)
    (let ((contact (eglot--guess-contact)))
      (apply #'eglot contact)))
  (eglot--signal-textDocument/didOpen)
  (check-print-index (funcall imenu-create-index-function) 0)
  (goto-char (point-min))
  (insert "// \U0001F600\nlet added = 1;\n")
  (eglot--signal-textDocument/didChange)
  (check-print-index (funcall imenu-create-index-function) 0)
  (dolist (item (xref-backend-apropos 'eglot "area"))
    (check-print "found" (substring-no-properties (xref-item-summary item))))
  (set-buffer-modified-p nil)
  (eglot-shutdown (eglot-current-server)))
