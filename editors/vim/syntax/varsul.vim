" Syntax of varsul's listings.
if exists('b:current_syntax')
  finish
endif

syntax case match
syntax match varsulComment /;.*$/
syntax match varsulDump /^; \x\{8}:.*$/
syntax match varsulId /^; id: \x\{2,4}(\d\+)$/
syntax match varsulReference /\<[LT]\x\{4}_\x\{4,}\>\|\%(\<\%(jump\|int32\)\s\+\)\@16<=\h\w*/
syntax match varsulLabel /^\s*\h\w*:=\@!/
syntax match varsulDirective /^\s*\zs\.\%(option\|data\|unknown\.byte\|unknown\)\>/ nextgroup=varsulOption skipwhite
syntax match varsulOption /--[a-z0-9-]\+/ contained
syntax match varsulStatement /^\s*\zs[a-z]\w*\>/
syntax match varsulUnknown /\<UNKNOWN_\x\x\>/
syntax keyword varsulBlock if else endif keywords answer endanswer enddata
syntax keyword varsulFlow jump bye end
syntax keyword varsulType byte int16 int32 eval decl
syntax match varsulVariable /\$\%(var\|str\)\[\d\+\]/
syntax match varsulFunction /\<[a-z]\+\ze(/
syntax match varsulNumber /\<\%(0x\x\+\|\d\+\)\>/
syntax match varsulOperator /:=\|[<>!=]=\|[<>]\|&&\|||\|[-+*\/]/
" A double-byte character may end in a byte that looks like a backslash; in an editor that has
" converted the file it is one character.
syntax region varsulText start=/"/ skip=/\\./ end=/"/ oneline contains=varsulEscape,varsulPassage
syntax match varsulEscape /\\[nt"\\]/ contained
syntax match varsulPassage /{[^}]*}\?/ contained contains=varsulEscape

highlight default link varsulComment Comment
highlight default link varsulDump Comment
highlight default link varsulId Title
highlight default link varsulLabel Label
highlight default link varsulReference Identifier
highlight default link varsulDirective PreProc
highlight default link varsulOption Constant
highlight default link varsulStatement Statement
highlight default link varsulUnknown Error
highlight default link varsulBlock Conditional
highlight default link varsulFlow Exception
highlight default link varsulType Type
highlight default link varsulVariable Identifier
highlight default link varsulFunction Function
highlight default link varsulNumber Number
highlight default link varsulOperator Operator
highlight default link varsulText String
highlight default link varsulEscape SpecialChar
highlight default link varsulPassage Special

let b:current_syntax = 'varsul'
