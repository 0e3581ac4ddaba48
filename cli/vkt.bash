# Completion of vkt for bash: made by "vkt --make=completion".
_vkt() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command= options= words= files= one
    local models="VKT510A VKT531A VKT530A VKT610B VKT630B VKT631B"
    for one in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $one in -*) ;; *) command=$one && break ;; esac
    done
    case $command in
    models) options="" words="" files= ;;
    fields) options="" words="$models" files= ;;
    default) options="--out" words="$models" files=1 ;;
    show) options="--frames --hex --c --binary --script --ac --out" words="" files=1 ;;
    set) options="--note --out" words="" files=1 ;;
    diff) options="--model" words="$(vkt ports 2>/dev/null | cut -d' ' -f1)" files=1 ;;
    ports) options="" words="" files= ;;
    read) options="--model --out" words="$(vkt ports 2>/dev/null | cut -d' ' -f1)" files=1 ;;
    write) options="--model --check --dry-run --ac" words="$(vkt ports 2>/dev/null | cut -d' ' -f1)" files=1 ;;
    timing) options="--clock --nominal --data --sample --all" words="" files= ;;
    monitor) options="--model --candump --seconds --check" words="$(vkt ports 2>/dev/null | cut -d' ' -f1)" files= ;;
    send) options="--model --channel --every --count --check" words="$(vkt ports 2>/dev/null | cut -d' ' -f1)" files= ;;
    program) options="--model --check --wait --journal --ac" words="$(vkt ports 2>/dev/null | cut -d' ' -f1)" files=1 ;;
    '') words="models fields default show set diff ports read write timing monitor send program" ;;
    esac
    case $before in -m | --model) words=$models files= ;; -o | --out) words= files=1 ;; esac
    case $word in -*) words="$options --json --verbose --quiet --help" files= ;; esac
    mapfile -t COMPREPLY < <(compgen -W "$words" ${files:+-f} -- "$word")
}
complete -F _vkt vkt
