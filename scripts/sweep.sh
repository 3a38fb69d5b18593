#!/bin/bash
# sweep.sh BUILD_TREE [PATTERN]: runs the fault sweeps of BUILD_TREE whole, one process a test: every call and allocation
# fails, also in the long operations, and each call with every one of several codes. Without a pattern the writers of
# files are killed too, oftener than otherwise; a pattern may name these, too ("Killed*"). Sums up what was done. Takes an hour or so.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

tree=$1
pattern=${2:-*}
prefix="$tree/wineprefix"
logs="$tree/sweep"
export CLUSUTIL_SWEEP=every CLUSUTIL_KILLS=200 CLUSUTIL_TEST_SECONDS=7200 CLUSUTIL_RUN_SECONDS=7200
export tree prefix logs

runOne() { # runOne "PROGRAM TEST"
    local program=${1%% *} name=${1#* } started=$SECONDS result=0
    local log="$logs/${name//\//_}.log"
    cmake/wine-run "$prefix" "$tree/bin/$program.exe" "--gtest_filter=$name" >"$log" 2>&1 </dev/null || result=$?
    if [ "$result" -ne 0 ] || ! grep -q 'PASSED.* 1 test\.' "$log"; then
        echo "FAILED  $name, exit code $result; see $log"
        return 1
    fi
    echo "passed  $name ($((SECONDS - started)) s)"
}
export -f runOne

testsOf() { # testsOf PROGRAM PATTERN
    cmake/wine-run "$prefix" "$tree/bin/$1.exe" --gtest_list_tests "--gtest_filter=$2" | tr -d '\r' |
        awk -v program="$1" '/^[^ ]/ { suite = $1; next } { print program " " suite $1 }'
}

rm -rf "$logs"
mkdir -p "$logs"
killing=Killed* # no other tests of these programs belong here
case "$pattern" in
    '*') ;;
    Killed*) killing=$pattern ;;
    *) killing= ;;
esac
tests=$(testsOf sweep_test "$pattern")
if [ -n "$killing" ]; then
    tests+=$'\n'$(testsOf common_test "$killing")$'\n'$(testsOf clusctlparts_test "$killing")
fi
tests=$(sed '/^$/d' <<<"$tests")
[ -n "$tests" ] || fail "no sweep is called '$pattern'"
result=0
xargs -P "$(jobs_)" -I{} bash -c 'runOne "{}"' <<<"$tests" || result=1
cat "$logs"/*.log | tr -d '\r' | awk -v tests="$(wc -l <<<"$tests")" '
    match($0, /swept: [0-9]+ runs, [0-9]+ failures$/) {
        split(substr($0, RSTART), word, " ")
        ++sweeps
        runs += word[2]
        failures += word[4]
    }
    match($0, /killed: [0-9]+ processes$/) {
        split(substr($0, RSTART), word, " ")
        kills += word[2]
    }
    END { printf "%d tests: %d sweeps, %d runs, %d failures injected, %d writers killed\n", tests, sweeps, runs, failures, kills }'
if [ "$result" -ne 0 ]; then
    echo "Some failed. One more time: ./dev sweep NAME" >&2
fi
exit "$result"
