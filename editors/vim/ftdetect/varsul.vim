" A listing is known by its first line, whatever its name makes of it; so is a text table.
let s:listing = '^; id: \x\{2,4}(\d\+)$'
let s:text_table = '^# label\toffset\ttext$'

autocmd BufRead,BufNewFile *.varsul setfiletype varsul
" By its name, "*.lst", it has been taken for an assembler's: that is to leave no trace.
autocmd BufRead,StdinReadPost * if getline(1) =~# s:listing | unlet! b:did_ftplugin | set filetype=varsul | endif

" Double-byte texts are read in the scripts' own encoding, if they are not UTF-8 already, and written
" back in it. 'fileencodings' has no value for one buffer: it is changed while the file is read.
function! s:BeforeReading(file) abort
  let l:is_small = filereadable(a:file) && getfsize(a:file) >= 0 && getfsize(a:file) < 0x4000000
  let l:first = l:is_small ? get(readfile(a:file, '', 1), 0, '') : ''
  if l:first =~# s:listing || l:first =~# s:text_table
    let s:fileencodings = &fileencodings
    set fileencodings=ucs-bom,utf-8,cp932,latin1
  endif
endfunction

" Some codes share a character: written back they would all become the first one. Such a file is
" for reading only.
function! s:AfterReading(file) abort
  if !exists('s:fileencodings')
    return
  endif
  let &fileencodings = s:fileencodings
  unlet s:fileencodings
  if &l:fileencoding ==# 'cp932' && map(getline(1, '$'), 'iconv(v:val, &encoding, "cp932")') !=# readfile(a:file)
    setlocal readonly
    echomsg 'read only: some characters of this file would be written as others'
  endif
endfunction

autocmd BufReadPre * call s:BeforeReading(expand('<afile>:p'))
autocmd BufReadPost * call s:AfterReading(expand('<afile>:p'))
