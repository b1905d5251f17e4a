# fish completion for varsul-as
complete -c varsul-as -k -xa '(__fish_complete_suffix .lst)'
complete -c varsul-as -o o -l output -rF -d 'write the script to a file'
complete -c varsul-as -l check -d 'make the script, but write nothing'
complete -c varsul-as -o t -l text -rF -d 'the text table of a listing with text labels'
complete -c varsul-as -o v -l version -d 'print the version'
complete -c varsul-as -o h -o '?' -l help -d 'print a summary of the options'
