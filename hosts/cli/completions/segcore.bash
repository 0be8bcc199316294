# bash completion for segcore
_segcore() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local general='--help --version --verbose --accept-damaged --max-pixels --stats'
    local results='--mask --cutout --alpha --svg --json --edges --edge-width --feather --smooth
        --fill-holes --drop-islands --keep-largest --no-keep-largest --crop --background --unseen
        --strip --compression --quality'
    local outputs='--preview --save-session --dump-steps --force --time-limit --time-budget'
    local words
    COMPREPLY=()
    case $previous in
        --stats)
            mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$current")
            [[ ${#COMPREPLY[@]} -gt 0 && $current != -* ]] && return
            ;;
        --edges)
            mapfile -t COMPREPLY < <(compgen -W 'soft hard' -- "$current")
            return
            ;;
        --unseen)
            mapfile -t COMPREPLY < <(compgen -W 'nearest zero' -- "$current")
            return
            ;;
        --dump-steps)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --mask | -m | --cutout | -o | --preview | -p | --svg | --json | --save-session | --marks | \
            --photo | --session | --from-mask | --background)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --box | --loop-add | --loop-remove | --snap-loop-add | --snap-loop-remove | --brush-add | \
            --brush-remove | --brush-radius | --snap-alpha | --passes | --from | --to | \
            --time-limit | --time-budget | --smooth | --fill-holes | --drop-islands | \
            --edge-width | --feather | --compression | --quality | --max-pixels)
            return # numbers
            ;;
        --alpha)
            [[ ${COMP_WORDS[1]} == snap ]] && return # a number
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
    esac
    case ${COMP_WORDS[1]} in
        "$current" | -*) [[ $COMP_CWORD -eq 1 ]] && words='cut replay matte snap --help --version' ;;
        cut)
            words="$general $results $outputs --box --loop-add --loop-remove
                --snap-loop-add --snap-loop-remove --brush-add --brush-remove --brush-radius
                --snap-alpha --marks --undo --redo --whole-object --touch-up --usual --passes
                --session"
            ;;
        replay) words="$general $results $outputs --photo" ;;
        matte) words="$general $results --from-mask" ;;
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
