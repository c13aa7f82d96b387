# Completion of kestrel-cli for bash.
_kestrel_cli() {
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]:-} options=
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "list show chain convert check dump --codepage --help --version" -- "$word")
        return
    fi
    case $command in
        show) options=--listed ;;
        chain) options=--in ;;
        convert) options="--single --title --author --build --copyright" ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ $command == convert || ${COMP_WORDS[COMP_CWORD - 1]} == --in ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
    elif [[ ($command == show || $command == chain) && $COMP_CWORD -eq 3 ]]; then
        local file=${COMP_WORDS[2]} name
        while IFS=$'\t' read -r name _; do
            [[ $name == "$word"* ]] && COMPREPLY+=("$(printf '%q' "$name")")
        done < <(kestrel-cli list "${file/#\~/$HOME}" 2>/dev/null)
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -G "$word*.[Gg][Aa][Ss]")
    fi
}
complete -F _kestrel_cli kestrel-cli
