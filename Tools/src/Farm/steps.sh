cores=${SLURM_CPUS_ON_NODE:-${CUE_THREADS:-}}
if [ -n "$cores" ]; then export POCL_MAX_PTHREAD_COUNT="$cores"; fi
cd "$work" || exit 4

# keep NAME COMMAND...: its output is the report, its status is kept, SIGTERM reaches it
keep() {
    local name=$1 attempt=0 child='' status=0
    shift
    rm -f "$folder/report/$name.status"
    while [ -e "$folder/report/$name.$attempt.jsonl" ]; do attempt=$((attempt + 1)); done
    trap 'kill -TERM $child' TERM
    "$@" >"$folder/report/$name.$attempt.jsonl" 2>>"$folder/log/$name.log" &
    child=$!
    while :; do
        wait "$child"
        status=$?
        kill -0 "$child" 2>/dev/null || break
    done
    echo "$status" >"$folder/report/$name.status"
    exit "$status"
}

# frames NAME LIST
frames() {
    local options=("--frames=$2" --skip-existing --keep-going --progress json)
    if [ -n "$cores" ]; then options+=(--threads "$cores"); fi
    keep "$1" "$lenscorrect" render "${render[@]}" "${options[@]}"
}

case $1 in
    warm)
        device=()
        for option in "${render[@]}"; do
            case $option in --device=*) device=("$option") ;; esac
        done
        keep warm "$lenscorrect" devices --json "${device[@]}"
        ;;
    chunk)
        chunk=${2:-$SLURM_ARRAY_TASK_ID}
        frames "$chunk" "$(sed -n "$((chunk + 1))p" "$folder/chunks.txt")"
        ;;
    frames) frames "$2" "$2" ;;
    summary) exec "$lenscorrect" summary "$folder" ;;
esac
