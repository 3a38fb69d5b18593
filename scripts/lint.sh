#!/bin/bash
# lint.sh [--quick] [--update-exports]: all static checks on the sources and on the DLL built in build/mingw-debug. --quick leaves
# clang-tidy out. Every check runs; the exit code is 1 when one of them found something.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/common.sh
usage() {
    echo "usage: ./dev lint [--quick] [--update-exports]"
}

tree=build/mingw-debug
exports=src/clusutil.exports.txt
quick=0
updateExports=0
for argument in "$@"; do
    case "$argument" in
        --quick) quick=1 ;;
        --update-exports) updateExports=1 ;;
        *) usageError "unknown argument '$argument'" ;;
    esac
done

# clang reads the cross compiler's headers.
gccHeaders=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")/include/c++
cross=(--target=x86_64-w64-mingw32)
for folder in "$gccHeaders" "$gccHeaders/x86_64-w64-mingw32" "$gccHeaders/backward" /usr/x86_64-w64-mingw32/include; do
    cross+=("-isystem$folder")
done

sources() { # existing files of the project that match the patterns, committed or not
    local file
    git ls-files --cached --others --exclude-standard -- "$@" | sort -u | while read -r file; do
        [ ! -f "$file" ] || echo "$file"
    done
}

failed=()
check() { # check NAME FUNCTION: what the function prints is what is wrong
    local found
    printf '%-58s' "$1"
    if found=$("$2" 2>&1) && [ -z "$found" ]; then
        echo "ok"
    else
        echo "FAILED"
        printf '%s\n' "$found" | sed 's/^/    /'
        failed+=("$1")
    fi
}

format() {
    local file
    sources '*.h' '*.cpp' | while read -r file; do
        clang-format --dry-run -Werror "$file" 2>/dev/null || echo "$file: run clang-format -i $file"
    done
}

registered() {
    local file
    sources '*.cpp' | grep -vE '^tests/(fuzz|consumer/project)/' | while read -r file; do
        # Some tests are run natively only; their folder's CMakeLists.txt is read by tests/native.
        grep -qF "\"file\": \"$PWD/$file\"" "$tree/compile_commands.json" ||
            { grep -qF "part of tests/native" "${file%/*}/CMakeLists.txt" 2>/dev/null &&
                grep -qwF "${file##*/}" "${file%/*}/CMakeLists.txt"; } ||
            echo "$file is in no CMake target"
    done
}

leftovers() {
    git grep --untracked -nIwE 'TODO|FIXME|XXX|HACK' -- ':!scripts/lint.sh' ':!third_party/zlib' || true
    git grep --untracked -nIE '/(home|root|work)/|[A-Z]:\\\\?Users\\\\?[a-z]' -- ':!scripts/lint.sh' ':!third_party/zlib' || true
    git grep --untracked -nIP '\t' -- '*.cmake' '*.md' '*.sh' '*.py' '*CMakeLists.txt' || true
    git grep --untracked -nIP '[ \t]+$' -- '*.cmake' '*.md' '*.sh' '*.py' '*CMakeLists.txt' || true
}

scripts() {
    local file
    for file in dev cmake/wine-run .ci/run $(sources 'scripts/*.sh' 'examples/*.sh'); do
        bash -n "$file"
        [ -x "$file" ] || [ "$file" = scripts/common.sh ] || echo "$file is not executable"
    done
    for file in $(sources '*.py'); do
        python3 -c 'import ast, sys; ast.parse(open(sys.argv[1]).read(), sys.argv[1])' "$file"
    done
}

headersAlone() {
    local header standard
    for header in $(sources 'include/*.h'); do
        for standard in 11 14 17 20; do
            clang++ "${cross[@]}" "-std=c++$standard" -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Werror -Iinclude \
                -x c++ - <<<"#include \"$(basename "$header")\"" || echo "$header does not compile alone as C++$standard"
        done
    done
}

builtExports() {
    x86_64-w64-mingw32-objdump -p "$tree/bin/clusutil.dll" |
        sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\s*\[ *[0-9]*\] //p' | LC_ALL=C sort |
        while read -r name; do printf '%s  %s\n' "$name" "$(x86_64-w64-mingw32-c++filt "$name")"; done
}

checkExamples() {
    local file
    for file in tests/scripts/*_test.py; do
        python3 "$file" >"$tree/checks_test.log" 2>&1 || cat "$tree/checks_test.log"
    done
}

layers() {
    python3 scripts/check_layers.py
}

duplicates() {
    python3 scripts/check_duplicates.py
}

sizes() {
    python3 scripts/check_size.py
}

logPlaces() {
    python3 scripts/check_log_places.py
}

exportList() {
    if [ ! -s "$exports" ]; then
        echo "$exports is missing; ./dev lint --update-exports writes it"
    elif ! diff -u "$exports" <(builtExports); then
        echo "The exported names changed: callers that link against a removed one stop working."
        echo "If that is meant: ./dev lint --update-exports"
    fi
}

tidy() {
    local extra=() argument
    for argument in "${cross[@]}" -std=gnu++17 -Wno-unknown-warning-option; do
        extra+=("--extra-arg=$argument")
    done
    # Without the compiler's precompiled headers, which clang cannot read: so each source is seen to include what it needs.
    local log="$tree/clang-tidy.log" result=0 database=$tree/clang-tidy
    mkdir -p "$database"
    sed -E 's/ -Winvalid-pch -include [^ ]+//' "$tree/compile_commands.json" >"$database/compile_commands.json"
    sources 'src/*.cpp' 'common/*.cpp' 'support/*.cpp' 'simulator/*.cpp' 'tools/*.cpp' 'bench/*.cpp' |
        while read -r file; do ! grep -qF "\"file\": \"$PWD/$file\"" "$tree/compile_commands.json" || echo "$file"; done |
        xargs -P "$(jobs_)" -n 1 timeout 300 clang-tidy --quiet -p "$database" "${extra[@]}" >"$log" 2>&1 || result=$?
    grep -vE '^[0-9]+ warnings? |^Suppressed|^Use -header-filter' "$log" || true
    [ "$result" -eq 0 ] || echo "clang-tidy ended with $result; see $log"
}

if [ "$updateExports" -eq 1 ]; then
    builtExports >"$exports.new"
    diff -u "$exports" "$exports.new" || true
    [ -s "$exports.new" ] || fail "found no exports in $tree/bin/clusutil.dll"
    mv "$exports.new" "$exports"
fi

check "format (clang-format)" format
check "every .cpp is in a CMake target" registered
check "no leftovers, machine paths, tabs, trailing blanks" leftovers
check "scripts parse and are executable" scripts
check "examples of the checks (tests/scripts)" checkExamples
check "includes keep to the layers (docs/architecture.md)" layers
check "no six equal lines twice" duplicates
check "files of 450 lines, functions of 80 at most" sizes
check "one place for each log line (docs/log-places.md)" logPlaces
check "public headers alone, C++11 to C++20, clang" headersAlone
check "exported names ($exports)" exportList
[ "$quick" -eq 1 ] || check "clang-tidy" tidy

sources 'tests/*.cpp' 'tests/*.h' '*.py' '*.sh' | xargs wc -l | awk '$2 != "total" && $1 > 400 { print "note: " $2 " has " $1 " lines" }'

if [ ${#failed[@]} -gt 0 ]; then
    printf 'lint: %s of the checks failed\n' "${#failed[@]}" >&2
    exit 1
fi
echo "lint: all checks passed"
