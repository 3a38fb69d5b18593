#!/bin/bash
# fuzz.sh [SECONDS] [TARGET]: builds the fuzz targets and runs each of them, or the one named, for SECONDS.
# fuzz.sh --report: writes the table of their runs and coverage in docs/testing.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh
usage() {
    echo "usage: ./dev fuzz [SECONDS] [TARGET] | --report   targets: $(cd tests/fuzz && ls -- *_fuzz.cpp | sed 's/_fuzz.cpp//' | xargs)"
}

if [ "$*" = --report ]; then
    need python3
    exec python3 scripts/fuzz_report.py
fi

[ $# -le 2 ] || usageError "fuzz takes at most two arguments"
seconds=${1:-60}
[[ "$seconds" =~ ^[1-9][0-9]*$ ]] || usageError "'$seconds' is no number of seconds"
targets=()
for source in tests/fuzz/*_fuzz.cpp; do
    name=$(basename "$source" _fuzz.cpp)
    if [ $# -lt 2 ] || [ "$2" = "$name" ]; then
        targets+=("$name")
    fi
done
[ ${#targets[@]} -gt 0 ] || usageError "unknown fuzz target '$2'"

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

result=0
for target in "${targets[@]}"; do
    # New inputs go to the first folder; the committed seeds are read only.
    program="build/native/bin/fuzz_$target"
    found="build/fuzz/corpus/$target"
    crashes="build/fuzz/crashes/$target"
    mkdir -p "$found" "$crashes"
    log="build/fuzz/$target.log"
    printf 'Fuzzing %s for %s s ... ' "$target" "$seconds"
    if withFixedLayout timeout "$((seconds + 120))" "$program" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 \
        -max_len="$(longestInput "$target")" -print_final_stats=1 -artifact_prefix="$crashes/" "$found" "tests/fuzz/corpus/$target" >"$log" 2>&1; then
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        echo "no finding in ${runs:-0} runs"
        echo "$target ${runs:-0}" >>build/fuzz/runs.txt # scripts/fuzz_report.py adds them up
        [ "${runs:-0}" -gt 0 ] || { echo "fuzz_$target ran nothing; see $log" >&2; result=1; }
    else
        result=1
        input=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
        echo "FAILED"
        { grep -vE '^#[0-9]+\s' "$log" | tail -n 60; echo; echo "Repeat it: $program $input"; } >&2
    fi
done
exit "$result"
