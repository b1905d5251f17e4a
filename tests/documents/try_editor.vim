" Opens the listing of the longest example, tries the support for it and writes what is wrong to $FINDINGS.
edit examples/lantern-keeper.lst
call assert_equal(['varsul', 'cp932', ';'], [&filetype, &fileencoding, &commentstring[0]])
call assert_notequal(0, search('{灯台守の表札'))
for s:words in [['if', 'else', 'endif', 'if'], ['keywords "hello', 'keywords "name'], ['endanswer', 'keywords "hello']]
  call cursor(1, 1)
  call search('^    ' . s:words[0])
  for s:word in s:words
    call assert_match('^    ' . s:word, getline('.'))
    normal %
  endfor
endfor
call cursor(1, 1)
let s:label = matchstr(getline(search('jump L')), 'L\w*')
call search(s:label)
execute "normal \<C-]>"
call assert_equal(s:label . ':', getline('.'))
call assert_equal([0, 1, 2], [foldlevel(search('^    if')), foldlevel(search('^        ')), foldlevel(search('^            '))])
write! $FINDINGS.copy
call assert_equal(readfile('examples/lantern-keeper.lst'), readfile($FINDINGS . '.copy'))
" Two codes of one character, of which only the second is written back.
call writefile(['; id: FFFF(65535)', "    \"{\xEE\xEF\xFA\x40}\""], $FINDINGS . '.copy')
edit $FINDINGS.copy
call assert_true(&readonly)
call writefile(v:errors, $FINDINGS)
quitall!
