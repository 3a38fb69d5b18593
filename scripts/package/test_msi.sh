#!/bin/bash
# test_msi.sh MSI VERSION NEWER_MSI NEWER_VERSION PREFIX: installs the installer in a Wine prefix of its own, looks at what is
# there, lets the newer one replace it, removes that, and looks that all of it is gone.
set -euo pipefail
msi=$(realpath "$1")
version=$2
newer=$(realpath "$3")
newerVersion=$4
prefix=$5
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

installedVersions() { # of clusctl, as the list of installed programs has them
    wine reg query "$uninstall" /s | awk '/^HKEY/ { key = $0 }
        /DisplayName +REG_SZ +clusctl$/ { wanted[key] = 1 } / DisplayVersion +REG_SZ/ { version[key] = $NF }
        END { for (key in wanted) print version[key] }'
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
[ "$(installedVersions)" = "$version" ] || wrong "in the list of installed programs clusctl is '$(installedVersions)'"
said=$(wine cmd /c clusctl --version)
[ "$said" = "clusctl $version" ] || wrong "clusctl does not run by its name: $said"

# The simulators as well.
wine msiexec /i "Z:$msi" ADDLOCAL=ALL /qn
export CLUSSIM_FILE='C:\Program Files\clusutil\examples\two-node-single-copy.json'
wine 'C:\Program Files\clusutil\simulator\clusctl.exe' cluster | grep -q EXCLUSTER ||
    wrong "the simulated cluster does not answer"

# A newer version takes its place.
wine msiexec /i "Z:$newer" /qn
[ "$(installedVersions)" = "$newerVersion" ] || wrong "after the newer version clusctl is installed as '$(installedVersions)'"
# By its path: Wine's removal leaves an empty folder in the search path, behind which its cmd finds nothing.
said=$(wine 'C:\Program Files\clusutil\bin\clusctl.exe' --version)
[ "$said" = "clusctl $version" ] || wrong "after the newer version clusctl does not run: $said"
[ "$(searchPath | grep -o clusutil | wc -l)" = 1 ] || wrong "after the newer version the search path is $(searchPath)"

wine msiexec /x "Z:$newer" /qn
[ "$(filesThere)" = 0 ] || wrong "after the removal $(filesThere) files are left: $(find "$folder" -type f | head -n 3)"
after=$(searchPath | sed 's/;*$//') # Wine leaves the separators
[ "$after" = "${pathBefore%;}" ] || wrong "after the removal the search path is $after"
[ -z "$(installedVersions)" ] || wrong "after the removal clusctl is still in the list of installed programs"
echo "$(basename "$msi"): installed, run and removed"
