# bash completion for segcore
_segcore() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local general='--help --version --verbose --accept-damaged --stats'
    local outputs='--mask --cutout --preview --svg --json --save-session --dump-steps --force'
    local mask='--smooth --fill-holes --drop-islands --keep-largest --no-keep-largest'
    local words
    COMPREPLY=()
    case $previous in
        --stats)
            mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$current")
            [[ ${#COMPREPLY[@]} -gt 0 && $current != -* ]] && return
            ;;
        --dump-steps)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --mask | -m | --cutout | -o | --preview | -p | --svg | --json | --save-session | --marks | \
            --photo | --session)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --box | --loop-add | --loop-remove | --snap-loop-add | --snap-loop-remove | --brush-add | \
            --brush-remove | --brush-radius | --snap-alpha | --passes | --from | --to | --alpha | \
            --time-limit | --time-budget | --smooth | --fill-holes | --drop-islands)
            return # numbers
            ;;
    esac
    case ${COMP_WORDS[1]} in
        "$current" | -*) [[ $COMP_CWORD -eq 1 ]] && words='cut replay snap --help --version' ;;
        cut)
            words="$general $mask $outputs --time-limit --time-budget --box --loop-add --loop-remove
                --snap-loop-add --snap-loop-remove --brush-add --brush-remove --brush-radius
                --snap-alpha --marks --undo --redo --whole-object --touch-up --usual --passes
                --session"
            ;;
        replay) words="$general $mask $outputs --time-limit --time-budget --photo" ;;
        snap) words="$general --from --to --alpha --svg --json" ;;
    esac
    if [[ $COMP_CWORD -eq 1 || $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _segcore segcore
