#!/bin/bash
# sweep.sh BUILD_TREE [PATTERN]: runs the fault sweeps of BUILD_TREE whole, one process a test: every call and allocation
# fails, also in the long operations, and each call with every one of several codes. Takes an hour or so.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

tree=$1
pattern=${2:-*}
program="$tree/bin/sweep_test.exe"
prefix="$tree/wineprefix"
logs="$tree/sweep"
export CLUSUTIL_SWEEP=every CLUSUTIL_TEST_SECONDS=7200 CLUSUTIL_RUN_SECONDS=7200
export program prefix logs

runOne() { # runOne TEST
    local name=$1 started=$SECONDS result=0
    local log="$logs/${name//\//_}.log"
    cmake/wine-run "$prefix" "$program" "--gtest_filter=$name" >"$log" 2>&1 </dev/null || result=$?
    if [ "$result" -ne 0 ] || ! grep -q 'PASSED.* 1 test\.' "$log"; then
        echo "FAILED  $name, exit code $result; see $log"
        return 1
    fi
    echo "passed  $name ($((SECONDS - started)) s)"
}
export -f runOne

rm -rf "$logs"
mkdir -p "$logs"
tests=$(cmake/wine-run "$prefix" "$program" --gtest_list_tests "--gtest_filter=$pattern" | tr -d '\r' |
    awk '/^[^ ]/ { suite = $1; next } { print suite $1 }')
[ -n "$tests" ] || fail "no sweep is called '$pattern'"
if ! xargs -P "$(jobs_)" -I{} bash -c 'runOne {}' <<<"$tests"; then
    echo "Some sweeps failed. One more time: ./dev sweep NAME" >&2
    exit 1
fi
