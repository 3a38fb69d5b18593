#!/bin/bash
# Runs hostile_test: as a cluster and as a plain server, which a process is once and for all, each with half of the
# operations, and a new process with the next seed after each 50,000. Sums up what was done.
#
# usage: hostile.sh BUILD_TREE OPERATIONS SEED
set -euo pipefail
build=$1 operations=$2 seed=$3
most=50000

# attack DEPLOYMENT OPERATIONS
attack() {
    local left=$2 next=$seed count
    while [ "$left" -gt 0 ]; do
        count=$((left < most ? left : most))
        CLUSUTIL_HOSTILE_OPERATIONS=$count CLUSUTIL_HOSTILE_SEED=$next CLUSUTIL_RUN_SECONDS=3600 \
            cmake/wine-run "$build/wineprefix" "$build/bin/hostile_test.exe" --gtest_brief=1 \
            --gtest_filter="*/$1" >"$build/hostile-$1.log" 2>&1 || {
            cat "$build/hostile-$1.log"
            return 1
        }
        sed -n "s/\r//; s/^\([0-9]* operations\)/$1, \1/p" "$build/hostile-$1.log" | tee -a "$build/hostile-$1.sum"
        left=$((left - count))
        next=$((next + 1))
    done
}

rm -f "$build"/hostile-*.sum
result=0
attack Cluster "$(((operations + 1) / 2))" &
attack PlainServer "$((operations / 2))" || result=$?
wait $! || result=$?
cat "$build"/hostile-*.sum | awk '
    match($0, /[0-9]+ operations, seed [0-9]+: [0-9]+ platform calls/) {
        split(substr($0, RSTART), word, " ")
        ++processes
        operations += word[1]
        calls += word[5]
    }
    match($0, /guarded blocks: [0-9]+ of the local heap, [0-9]+ of/) {
        split(substr($0, RSTART), word, " ")
        blocks += word[3] + word[8]
    }
    END { printf "in all %d processes: %d operations, %d platform calls, %d guarded blocks\n", processes, operations, calls, blocks }'
exit "$result"
