#!/bin/bash
# test_msi.sh MSI VERSION PREFIX: installs the installer in a Wine prefix of its own, looks at what is there, removes it, and
# looks that all of it is gone.
set -euo pipefail
msi=$(realpath "$1")
version=$2
prefix=$3
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
environment='HKLM\System\CurrentControlSet\Control\Session Manager\Environment'
uninstall='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall'

wine() {
    CLUSUTIL_RUN_SECONDS=180 "$root/cmake/wine-run" "$prefix" "$@" </dev/null 2>&1 | tr -d '\r'
}

wrong() {
    echo "test_msi.sh: $1" >&2
    exit 1
}

searchPath() {
    wine reg query "$environment" /v PATH | sed -n 's/^ *PATH *REG[A-Z_]* *//p'
}

uninstallEntry() { # the key of clusctl's entry in the list of installed programs
    wine reg query "$uninstall" /s | awk '/^HKEY/ { key = $0 } /DisplayName +REG_SZ +clusctl$/ { print key }'
}

filesThere() {
    if [ -d "$folder" ]; then
        find "$folder" -type f | wc -l
    else
        echo 0
    fi
}

rm -rf "$prefix" "$prefix.log" "$prefix.lock"
"$root/cmake/wine-run" --start "$prefix"
trap '"$root/cmake/wine-run" --stop "$prefix"' EXIT
folder="$prefix/drive_c/Program Files/clusutil"
pathBefore=$(searchPath)
[ -n "$pathBefore" ] || wrong "the prefix has no search path"

# The tool alone.
wine msiexec /i "Z:$msi" /qn
[ -f "$folder/bin/clusctl.exe" ] || wrong "clusctl.exe is not installed"
[ -f "$folder/licenses/libcli11-dev.txt" ] || wrong "the licences are not installed"
[ ! -e "$folder/simulator" ] || wrong "the simulators were installed unasked"
[ "$(searchPath)" = "$pathBefore;C:\\Program Files\\clusutil\\bin\\" ] || wrong "the search path is $(searchPath)"
key=$(uninstallEntry)
[ -n "$key" ] || wrong "no entry in the list of installed programs"
wine reg query "$key" | grep -qE "DisplayVersion +REG_SZ +${version//./\\.}$" || wrong "the entry has another version"
[ "$(wine cmd /c clusctl --version)" = "clusctl $version" ] || wrong "clusctl does not run by its name: $(wine cmd /c clusctl --version)"

# The simulators as well.
wine msiexec /i "Z:$msi" ADDLOCAL=ALL /qn
export CLUSSIM_FILE='C:\Program Files\clusutil\simulator\examples\two-node-single-copy.json'
wine 'C:\Program Files\clusutil\simulator\clusctl.exe' cluster | grep -q EXCLUSTER || wrong "the simulated cluster does not answer"

wine msiexec /x "Z:$msi" /qn
[ "$(filesThere)" = 0 ] || wrong "after the removal $(filesThere) files are left: $(find "$folder" -type f | head -n 3)"
after=$(searchPath)
[ "${after%;}" = "${pathBefore%;}" ] || # Wine leaves the separator
    wrong "after the removal the search path is $after"
[ -z "$(uninstallEntry)" ] || wrong "after the removal the entry is still in the list of installed programs"
echo "$(basename "$msi"): installed, run and removed"
