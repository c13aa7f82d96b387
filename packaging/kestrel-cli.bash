# Completion of kestrel-cli for bash.
_kestrel_cli() {
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]:-} options=
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "list show chain convert check dump tank --codepage --help --version" -- "$word")
        return
    fi
    case $command in
        show) options=--listed ;;
        chain) options=--in ;;
        convert) options="--single --title --author --build --copyright" ;;
        tank) options="--json --to --flat --existing" ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ $command == tank && $COMP_CWORD -eq 2 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "list find test extract" -- "$word")
    elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == --existing ]]; then
        mapfile -t COMPREPLY < <(compgen -W "skip replace stop" -- "$word")
    elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == --in ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -G "$word*.[Dd][Ss]*")
    elif [[ $command == convert || ${COMP_WORDS[COMP_CWORD - 1]} == --to ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    elif [[ ($command == show || $command == chain) && $COMP_CWORD -eq 3 ]]; then
        local file=${COMP_WORDS[2]} name
        while IFS=$'\t' read -r name _; do
            [[ $name == "$word"* ]] && COMPREPLY+=("$(printf '%q' "$name")")
        done < <(kestrel-cli list "${file/#\~/$HOME}" 2>/dev/null)
    else
        compopt -o filenames
        local kind='.[Gg][Aa][Ss]'
        [[ $command != tank ]] || kind='.[Dd][Ss]*'
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -G "$word*$kind")
    fi
}
complete -F _kestrel_cli kestrel-cli
