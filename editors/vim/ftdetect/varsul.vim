" A listing is known by its first line, whatever its name makes of it.
autocmd BufRead,BufNewFile *.varsul setfiletype varsul
autocmd BufRead,StdinReadPost * if getline(1) =~# '^; id: \x\{2,4}(\d\+)$' | set filetype=varsul | endif
