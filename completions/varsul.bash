# bash completion for varsul and varsul-as

# Offers the options that are given, each with what it does, or files, of which those with the suffix
# come first. A file name follows the options in `with_file`.
_varsul_complete() {
    local suffix=$1 with_file=$2 current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} option
    shift 2
    if [[ " $with_file " == *" $previous "* ]]; then  # a file name, whatever it begins with
        suffix=
    elif [[ $current == -* ]]; then
        COMPREPLY=()
        for option; do
            [[ $option == "$current"* ]] && COMPREPLY+=("$option")
        done
        # What an option does is shown in a list of several; what is put into the line is its name.
        [[ ${#COMPREPLY[@]} -gt 1 && ${COMP_TYPE:-9} -ne 37 ]] || COMPREPLY=("${COMPREPLY[@]%% *}")
        compopt -o nosort 2>/dev/null
        return
    fi
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -X "!*$suffix" -- "$current")
    if [[ ${#COMPREPLY[@]} -eq 0 ]]; then  # where there is none of those, any file will do
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [[ -n $suffix ]]; then
        mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -d -- "$current")
    fi
}

_varsul() {
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
    _varsul_complete .scr '-o --output -t --text -E --error' "${options[@]}"
}

_varsul_as() {
    local options=(
        '-o          write the script to a file'
        '--output    write the script to a file'
        '--check     make the script, but write nothing'
        '-t          the text table of a listing with text labels'
        '--text      the text table of a listing with text labels'
        '-v          print the version'
        '--version   print the version'
        '-h          print a summary of the options'
        '-?          print a summary of the options'
        '--help      print a summary of the options'
    )
    _varsul_complete .lst '-o --output -t --text' "${options[@]}"
}

complete -F _varsul varsul
complete -F _varsul_as varsul-as
