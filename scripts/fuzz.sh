#!/bin/bash
# fuzz.sh [SECONDS] [TARGET] [--seed N]: builds the fuzz targets and runs each of them, or the one named, for SECONDS, from
# everything that was found before.
# fuzz.sh --runs COUNT [TARGET] [--seed N]: lets it run so often, from the committed seeds alone: the same runs every time.
# fuzz.sh --report: writes the table of their runs and coverage in docs/testing.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh
usage() {
    echo "usage: ./dev fuzz [SECONDS | --runs COUNT] [TARGET] [--seed N] | --report   targets: $(cd tests/fuzz && ls -- *_fuzz.cpp | sed 's/_fuzz.cpp//' | xargs)"
}

if [ "$*" = --report ]; then
    need python3
    exec python3 scripts/fuzz_report.py
fi

seconds='' runs='' seed=1 named=''
while [ $# -gt 0 ]; do
    case "$1" in
        --runs | --seed)
            [[ "${2:-}" =~ ^[1-9][0-9]*$ ]] || usageError "$1 takes a number"
            if [ "$1" = --runs ]; then runs=$2; else seed=$2; fi
            shift
            ;;
        [0-9]*)
            [[ "$1" =~ ^[1-9][0-9]*$ ]] && [ -z "$seconds" ] || usageError "'$1' is no number of seconds"
            seconds=$1
            ;;
        *)
            [ -z "$named" ] || usageError "fuzz takes one target"
            named=$1
            ;;
    esac
    shift
done
[ -z "$runs" ] || [ -z "$seconds" ] || usageError "fuzz takes seconds or --runs"
seconds=${seconds:-60}
targets=()
for source in tests/fuzz/*_fuzz.cpp; do
    name=$(basename "$source" _fuzz.cpp)
    if [ -z "$named" ] || [ "$named" = "$name" ]; then
        targets+=("$name")
    fi
done
[ ${#targets[@]} -gt 0 ] || usageError "unknown fuzz target '$named'"

configureNative
logged "Building the fuzz targets" build/native/fuzz.log \
    cmake --build build/native --target "${targets[@]/#/fuzz_}" -j "$(jobs_)"

# The longest input, in bytes: what is not about length finds more in short ones.
longestInput() {
    case "$1" in
        cluster_lists | disk_info | log_settings | property_list | server_name | value_list) echo 1024 ;;
        command_line | faults | main_cf_edits | secrets | state | types | vcs_tools | web_site) echo 4096 ;;
        *) echo 24576 ;; # of a settings file 10,240 characters count
    esac
}

# libFuzzer's schedule by entropy costs more than half of the time where a run reaches much.
schedule() {
    case "$1" in
        vcs_tools) echo 0 ;;
        *) echo 1 ;;
    esac
}

result=0
for target in "${targets[@]}"; do
    # New inputs go to the first folder; the committed seeds are read only.
    program="build/native/bin/fuzz_$target"
    found="build/fuzz/corpus/$target"
    crashes="build/fuzz/crashes/$target"
    log="build/fuzz/$target.log"
    if [ -n "$runs" ]; then
        limit=(-runs="$runs" -reload=0)
        folder="build/fuzz/repeatable/$target"
        log="$folder.log" # the other one is what --report reads
        rm -rf "$folder"
        printf 'Fuzzing %s, %s runs from the seeds, seed %s ... ' "$target" "$runs" "$seed"
    else
        limit=(-max_total_time="$seconds")
        folder=$found
        printf 'Fuzzing %s for %s s, seed %s ... ' "$target" "$seconds" "$seed"
    fi
    mkdir -p "$found" "$crashes" "$folder"
    # One that runs so often may take its time; each run may not.
    if withFixedLayout timeout "$([ -n "$runs" ] && echo 0 || echo $((seconds + 120)))" "$program" "${limit[@]}" -seed="$seed" \
        -timeout=10 -rss_limit_mb=1024 -max_len="$(longestInput "$target")" -entropic="$(schedule "$target")" \
        -print_final_stats=1 -artifact_prefix="$crashes/" "$folder" "tests/fuzz/corpus/$target" >"$log" 2>&1; then
        counted=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        echo "no finding in ${counted:-0} runs"
        if [ -z "$runs" ]; then # the others may have been made before
            echo "$target ${counted:-0}" >>build/fuzz/runs.txt # scripts/fuzz_report.py adds them up
        fi
        [ "${counted:-0}" -gt 0 ] || { echo "fuzz_$target ran nothing; see $log" >&2; result=1; }
    else
        result=1
        input=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
        echo "FAILED"
        { grep -vE '^#[0-9]+\s' "$log" | tail -n 60; echo; echo "Repeat it: $program $input"; } >&2
    fi
    if [ "$folder" != "$found" ]; then
        find "$folder" -type f -exec cp -t "$found" {} +
    fi
done
exit "$result"
