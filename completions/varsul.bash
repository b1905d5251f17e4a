# bash completion for varsul
_varsul() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} suffix= i
    local options=(
        '--kv                    the script is one of Kelvorath (default)'
        '--bh                    the script is one of Brenhollow'
        '--qf                    the script is one of Quillfen'
        '-o                      write the listing to a file'
        '--output                write the listing to a file'
        '-t                      write a table of all texts to a file'
        '--text                  write a table of all texts to a file'
        '-T                      show labels in place of texts'
        '--text-label            show labels in place of texts'
        '-d                      show the bytes of each line'
        '--dump                  show the bytes of each line'
        '--no-int16-to-text      keep tables of numbers that end like texts'
        '-E                      write the messages to a file'
        '--error                 write the messages to a file'
        '--verbosity-parenthesis put every operation in parentheses'
        '--omit-decl             leave out the word decl'
        '--omit-eval             leave out the word eval'
        '--omit-int32            leave out the word int32'
        '-V                      more messages, twice for a trace'
        '--verbose               more messages, twice for a trace'
        '-v                      print the version'
        '--version               print the version'
        '-?                      print a summary of the options'
        '--help                  print a summary of the options'
    )
    case $previous in
        -o | --output | -t | --text | -E | --error) ;;  # a file name, whatever it begins with
        *)
            if [[ $current == -* ]]; then
                COMPREPLY=()
                for i in "${options[@]}"; do
                    [[ $i == "$current"* ]] && COMPREPLY+=("$i")
                done
                # What an option does is shown in a list of several; what is put into the line is its name.
                [[ ${#COMPREPLY[@]} -gt 1 && ${COMP_TYPE:-9} -ne 37 ]] || COMPREPLY=("${COMPREPLY[@]%% *}")
                compopt -o nosort 2>/dev/null
                return
            fi
            suffix=.scr
            ;;
    esac
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -X "!*$suffix" -- "$current")
    if [[ ${#COMPREPLY[@]} -eq 0 ]]; then  # where there is no script, any file will do
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [[ -n $suffix ]]; then
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -d -- "$current")
    fi
} && complete -F _varsul varsul
