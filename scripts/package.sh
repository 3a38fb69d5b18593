#!/bin/bash
# package.sh: makes and checks the package, its symbols and the installer of clusctl out of what build/mingw-release holds.
# Installing, packing and the installer are done twice, at different times of day and with other settings around them, and have to
# give the same; the binaries are built once.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
source scripts/common.sh

tree=build/mingw-release
out=build/package
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$tree/CMakeCache.txt")
name="clusutil-$version-win64"
installer="clusctl-$version-x64.msi"
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
export SOURCE_DATE_EPOCH PYTHONDONTWRITEBYTECODE=1

# The functions below are steps of `logged`, in which bash does not end at a failing command by itself.
make() { # make FOLDER
    rm -rf "$1" &&
        cmake --install "$tree" --prefix "$1/installed" &&
        python3 scripts/package/package.py "$1/installed" "$1" "$name" "$version" &&
        rm -rf "$1/installed" &&
        python3 scripts/package/msi.py "$1/$name" "$1/$installer" "$version" &&
        (cd "$1" && sha256sum "$installer" "$name-symbols.zip" "$name.zip" >SHA256SUMS)
}

makeAgain() {
    (umask 077 && TZ=Pacific/Auckland LC_ALL=C make "$out/again") &&
        diff -u "$out/SHA256SUMS" "$out/again/SHA256SUMS" &&
        rm -rf "$out/again"
}

unpackAndRun() {
    local said
    rm -rf "$out/unpacked" && mkdir "$out/unpacked" &&
        cmake -E chdir "$out/unpacked" cmake -E tar xf "../$name.zip" &&
        python3 scripts/package/check_package.py "$out/unpacked/$name" "$version" "$out/$name-symbols.zip" &&
        said=$(cmake/wine-run "$tree/wineprefix" "$out/unpacked/$name/bin/clusctl.exe" --version | tr -d '\r') &&
        echo "$said" && [ "$said" = "clusctl $version" ] &&
        rm -rf "$out/unpacked"
}

# A program with Visual Studio's ABI calls what lib/msvc offers.
callFromVisualStudio() {
    local work="$out/msvc"
    rm -rf "$work" && mkdir "$work" &&
        cp "$out/$name"/bin/*.dll "$out/$name"/simulator/*.dll "$out/$name"/lib/msvc/*.lib "$work" &&
        cp examples/two-node-single-copy.json "$work/model.json" &&
        printf 'LIBRARY kernel32.dll\nEXPORTS\n    ExitProcess\n' >"$work/kernel32.def" &&
        llvm-dlltool -m i386:x86-64 -d "$work/kernel32.def" -l "$work/kernel32.lib" &&
        clang --target=x86_64-pc-windows-msvc -std=c11 -Wall -Wextra -Werror -ffreestanding -fshort-wchar -Os \
            -c scripts/package/c_caller.c -o "$work/c_caller.obj" &&
        lld-link /nologo /nodefaultlib /subsystem:console /entry:Start "/out:$work/c_caller.exe" "/libpath:$work" \
            "$work/c_caller.obj" clusutil.lib DebugLog.lib clussim.lib kernel32.lib &&
        (cd "$work" && CLUSSIM_FILE=model.json "$root/cmake/wine-run" "$root/$tree/wineprefix" ./c_caller.exe) &&
        rm -rf "$work"
}

# The newer version has the same programs.
tryInstaller() {
    local newerVersion="${version%.*}.$((${version##*.} + 1))" newer="$out/newer.msi"
    python3 scripts/package/msi.py "$out/$name" "$newer" "$newerVersion" &&
        timeout 500 scripts/package/test_msi.sh "$out/$installer" "$version" "$newer" "$newerVersion" "$root/$out/wineprefix" &&
        rm -rf "$newer" "$out"/wineprefix*
}

command -v wixl >/dev/null || fail "wixl, which makes the installer, is missing: it is in Debian's package wixl."
logged "Making the package and the installer" "$out.log" make "$out"
logged "Making them again, which gives the same bytes" "$out/again.log" makeAgain
logged "Checking the unpacked package" "$out/check.log" unpackAndRun
logged "Calling it with Visual Studio's ABI" "$out/msvc.log" callFromVisualStudio
logged "Installing, replacing and removing the installer" "$out/installer.log" tryInstaller
(cd "$out" && ls -l "$installer" "$name-symbols.zip" "$name.zip" SHA256SUMS)
