# What ./dev and the scripts beside this file share; sourced by bash, not run.

fail() {
    echo "$1" >&2
    exit 1
}

usageError() {
    echo "dev: $1" >&2
    usage >&2
    exit 2
}

jobs_() {
    nproc 2>/dev/null || echo 2
}

# need PACKAGE...: installs what is missing of these Debian packages.
need() {
    if ! command -v dpkg-query >/dev/null; then
        return 0 # not Debian: the tools are the user's to provide, and their absence shows in the build
    fi
    local package missing=()
    for package in "$@"; do
        if ! dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return 0
    fi
    local sudo=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "Missing packages: ${missing[*]}. Install them as root, or install sudo."
        sudo=(sudo)
    fi
    mkdir -p build
    logged "Updating the package list" build/apt-update.log "${sudo[@]}" apt-get update
    logged "Installing ${missing[*]}" build/apt-install.log \
        "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}

# logged TEXT LOGFILE COMMAND...: runs the command quietly; its output goes to the log and, on failure, to standard error too.
logged() {
    local text=$1 log=$2 started=$SECONDS result=0
    shift 2
    mkdir -p "$(dirname "$log")"
    printf '%s ... ' "$text"
    "$@" >"$log" 2>&1 </dev/null || result=$?
    if [ "$result" -ne 0 ]; then
        echo "failed"
        {
            grep -nE -m 20 '(error|FAILED|CMake Error)' "$log" || true
            echo "--- the end of $log:"
            tail -n 40 "$log"
        } >&2
        echo "$text failed (exit code $result); everything it said is in $log" >&2
        exit "$result"
    fi
    echo "done ($((SECONDS - started)) s)"
}

# lockTree PRESET: one ./dev at a time works in a build tree; held until the script ends.
lockTree() {
    mkdir -p "build/$1"
    exec 8>"build/$1/.dev.lock"
    if ! flock -n 8; then
        echo "Another ./dev works in build/$1; waiting for it."
        flock 8
    fi
}

# startWine PREFIX: keeps one server for this prefix running until the script ends, and stops exactly that one.
startWine() {
    winePrefix=$1
    trap 'cmake/wine-run --stop "$winePrefix"' EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    cmake/wine-run --start "$winePrefix" 8>&-
}

# withFixedLayout COMMAND...: with some kernels' randomised memory layouts clang's sanitizers do not start every time. Some
# containers do not allow to switch that off.
withFixedLayout() {
    if setarch -R true 2>/dev/null; then
        setarch -R "$@"
    else
        "$@"
    fi
}

# configureNative: the project of the core's native tests and fuzz targets, in build/native.
configureNative() {
    need cmake ninja-build clang libclang-rt-dev googletest nlohmann-json3-dev libcli11-dev
    lockTree native
    logged "Configuring the native core" build/native/configure.log cmake -S tests/native -B build/native -G Ninja \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug
}

# buildForTests TREE [CTEST-ARGUMENT ...]: builds what the chosen tests need. The names of their groups, or "all", are in
# `testGroups` then.
buildForTests() {
    local tree=$1 targets
    shift
    testGroups=$(python3 scripts/choose_tests.py "build/$tree" "$@" | xargs)
    if [ "$testGroups" = all ]; then
        logged "Building $tree" "build/$tree/build.log" cmake --build "build/$tree" -j "$(jobs_)"
    elif [ -n "$testGroups" ]; then
        read -ra targets <<<"$testGroups"
        logged "Building for $testGroups" "build/$tree/build.log" \
            cmake --build "build/$tree" -j "$(jobs_)" --target "${targets[@]}"
    fi
}

# runTests TREE [CTEST-ARGUMENT ...]: ctest's own output and exit code, then how to repeat what failed. Only the programs of
# `testGroups` are looked at.
runTests() {
    local tree=$1 result=0 parallel failed
    shift
    parallel=$(($(jobs_) * 3 / 2)) # most tests wait for Wine's server part of the time
    failed="build/$tree/Testing/Temporary/LastTestsFailed.log"
    rm -f "$failed"
    unset CLUSUTIL_TEST_GROUPS
    if [ "$testGroups" != all ]; then
        export CLUSUTIL_TEST_GROUPS=$testGroups
    fi
    [ $# -ne 0 ] || set -- -LE night # those are ./dev sweep's
    withFixedLayout ctest --test-dir "build/$tree" --output-on-failure -j "$((parallel < 2 ? 2 : parallel))" \
        --no-tests=error "$@" 8>&- || result=$?
    if [ "$result" -ne 0 ] && [ -s "$failed" ]; then
        echo
        echo "Repeat one of them:"
        sed -e 's/^[0-9]*://' -e 's/[][().*+?^$|\\]/\\&/g' -e "s|.*|  ./dev test -R '^&\$'|" "$failed" | head -n 20
    fi
    return "$result"
}
