" Editing varsul's listings: folds, partners of blocks, labels as tags.
if exists('b:did_ftplugin')
  finish
endif
let b:did_ftplugin = 1
let s:cpoptions = &cpoptions
set cpoptions&vim

setlocal comments=:; commentstring=;\ %s
setlocal expandtab shiftwidth=4 softtabstop=4 textwidth=0
setlocal foldmethod=expr foldlevel=99
" A block is a fold; lines without indentation go with the lower of their neighbours.
setlocal foldexpr=getline(v:lnum)=~#'^\\s'?indent(v:lnum)/4-1:-1

" CTRL-] on a label goes to its line, CTRL-T back.
function! s:Labels(pattern, flags, info) abort
  let l:tags = []
  for l:line in range(1, line('$'))
    let l:label = matchstr(getline(l:line), '^\s*\zs\h\w*\ze:=\@!')
    if l:label !=# '' && (a:flags =~# 'r' ? l:label =~# a:pattern : l:label ==# a:pattern)
      call add(l:tags, {'name': l:label, 'filename': expand('%:p'), 'cmd': string(l:line)})
    endif
  endfor
  return l:tags
endfunction
let &l:tagfunc = expand('<SID>') . 'Labels'

" % on if, else, endif, keywords or endanswer goes to the next of its kind, from the last to the
" first. The listing's indentation tells which belong together.
function! s:LineOf(kinds, flags, indent) abort
  " The next statement of this depth or above it, if it is one of these.
  let l:found = search('^ \{,' . a:indent . '}[^ ;]\&^\s', a:flags . 'nW')
  return getline(l:found) =~# '^ \{' . a:indent . '}\%(' . a:kinds . '\)\>' ? l:found : 0
endfunction

function! s:Partner() abort
  let l:word = matchstr(getline('.'), '^\s*\zs\%(if\|else\|endif\|keywords\|endanswer\)\>')
  if v:count || l:word ==# '' || col('.') > indent('.') + len(l:word)
    return '%'
  endif
  let l:indent = indent('.')
  let l:kinds = l:word =~# 'if\|else' ? ['if\|else', 'else\|endif'] : ['keywords', 'keywords\|endanswer']
  let l:view = winsaveview()
  call cursor(0, 1)
  if l:word =~# '^end'
    let l:line = 0
    let l:before = s:LineOf(l:kinds[0], 'b', l:indent)
    while l:before
      let l:line = l:before
      call cursor(l:line, 1)
      let l:before = getline('.') =~# '^\s*if\>' ? 0 : s:LineOf(l:kinds[0], 'b', l:indent)
    endwhile
  else
    call cursor(0, col('$'))
    let l:line = s:LineOf(l:kinds[1], '', l:indent)
  endif
  call winrestview(l:view)
  return l:line ? l:line . 'G' : '%'
endfunction
noremap <buffer> <expr> <silent> % <SID>Partner()

let b:undo_ftplugin = 'setlocal comments< commentstring< expandtab< shiftwidth< softtabstop< textwidth<'
      \ . ' foldmethod< foldlevel< foldexpr< tagfunc< | unmap <buffer> %'

let &cpoptions = s:cpoptions
unlet s:cpoptions
