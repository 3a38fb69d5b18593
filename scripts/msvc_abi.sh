#!/bin/bash
# Builds the project for Visual Studio's ABI on Debian with the kit in the folder CLUSUTIL_MSVC_KIT, and tests it there: build,
# exported names, a program built by both compilers, the tests. Called by ./dev; below build/msvc-abi lies what it makes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh

work=$PWD/build/msvc-abi
exports=src/clusutil.exports-msvc.txt
updateExports=0
if [ "${1:-}" = --update-exports ]; then
    updateExports=1
    shift
fi

kit=$(cd "$CLUSUTIL_MSVC_KIT" && pwd)

# kitStep TEXT STEP [MINGW_BIN]: what the kit says of a problem is shown.
kitStep() {
    local text=$1 step=$2
    shift 2
    logged "$text" "$work/$step.log" env LC_ALL=C W="$work" JOBS="$(jobs_)" STEPS="$step" "$kit/build-and-run" "$PWD" "$@"
}

lockTree msvc-abi
kitStep "Preparing the tool chain" toolchain
kitStep "Building with clang-cl" project
kitStep "Comparing the exports' names" exports
built=$work/results/exports.txt
if [ "$updateExports" -eq 1 ]; then
    cp "$built" "$exports"
fi
diff -u "$exports" "$built" || fail "The decorated names changed; if that is meant: ./dev msvc-abi --update-exports"
kitStep "Running one program built by both compilers" driver build/mingw-debug/bin
grep '^driver ' "$work/driver.log"

startWine "$work/wineprefix"
testGroups=all
runTests msvc-abi/out "$@"
