# bash completion for varsul
_varsul() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local options='--kv --bh --qf -o --output -t --text -T --text-label -d --dump --no-int16-to-text
        -E --error --verbosity-parenthesis --omit-decl --omit-eval --omit-int32
        -V --verbose -v --version -? --help'
    case $previous in
        -o | --output | -t | --text | -E | --error) ;;  # a file name, whatever it begins with
        *)
            if [[ $current == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
                return
            fi
            ;;
    esac
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
} && complete -F _varsul varsul
