#!/usr/bin/env bash
# Builds the static Qt that the Windows program is linked with, from the distribution's own qt6-base source package.
#
#   packaging/windows/build-qt-prefix.sh [--ready | --configure-only]
#
# The result lies in build/qtwin/prefix (another folder: QTWIN_DIR); its path is the last line printed. A prefix that
# is there already is kept. QTWIN_PREFIX names a ready prefix elsewhere, which is only checked. A build takes about 28
# minutes of processor time and 1.5 GB. Packages that are missing are installed.
# --ready builds nothing: it prints the path of a ready prefix, or ends with status 1.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${QTWIN_DIR:-$root/build/qtwin}
prefix=$work/prefix
archive=${QTWIN_ARCHIVE:-$root/../shared/windows/qt6-mingw-prefix.tar.xz}
unset LIBRARY_PATH # the host's libraries are none of the cross linker's

say() { echo "build-qt-prefix: $*" >&2; }
die() {
    say "$*"
    exit 1
}

# A prefix is whole when it has what the program links.
check_prefix() {
    local module
    for module in Core Gui Widgets Test; do
        [ -f "$1/lib/libQt6$module.a" ] || return 1
        [ -d "$1/lib/cmake/Qt6$module" ] || return 1
    done
    [ -f "$1/plugins/platforms/libqwindows.a" ]
}

# Unpacks the archive, if there is one; whole or not at all.
take_archive() {
    [ -f "$archive" ] || return 1
    (cd "$(dirname "$archive")" && sha256sum --quiet --check "$(basename "$archive").sha256" >&2) || return 1
    "$root/scripts/install.sh" windows-qt >&2 || return 1
    rm -rf "$work/unpacked" "$prefix"
    mkdir -p "$work/unpacked"
    tar -xJf "$archive" -C "$work/unpacked" >&2 || return 1
    if ! check_prefix "$work/unpacked/prefix"; then
        say "$archive holds no whole prefix"
        return 1
    fi
    mv "$work/unpacked/prefix" "$prefix"
    say "unpacked $archive"
}

# apt with a list of its own, which holds the source packages of the system's archives; the system's lists stay.
private_apt() {
    apt-get -q -o "Dir::Etc::sourcelist=$work/apt/src.sources" -o Dir::Etc::sourceparts=/dev/null \
        -o "Dir::State::lists=$work/apt/lists" -o "Dir::Cache::archives=$work/apt/archives" "$@" >&2
}

write_source_list() {
    local from=/etc/apt/sources.list.d/debian.sources
    if [ -f "$from" ]; then
        sed 's/^Types:.*/Types: deb-src/' "$from" >"$work/apt/src.sources"
        return
    fi
    [ -f /etc/apt/sources.list ] || die "the system names no archives to take the source from"
    # "deb [options] URI suite component..." as a stanza each.
    awk '$1 == "deb" {
        sub(/\[[^]]*\] */, "")
        uri = $2; suite = $3
        $1 = $2 = $3 = ""
        printf "Types: deb-src\nURIs: %s\nSuites: %s\nComponents:%s\n\n", uri, suite, $0
    }' /etc/apt/sources.list >"$work/apt/src.sources"
}

fetch_source() {
    [ -f "$work/source/CMakeLists.txt" ] && return
    mkdir -p "$work/apt/lists/partial" "$work/apt/archives/partial" "$work/download"
    write_source_list
    private_apt update
    (cd "$work/download" && private_apt source --download-only qt6-base)
    rm -rf "$work/source"
    dpkg-source -x "$work"/download/qt6-base_*.dsc "$work/source" >&2
}

# The host's tools (moc, rcc, uic) must be of the version they make code for.
check_host_tools() {
    local host source
    host=$(sed -n 's/^set(PACKAGE_VERSION "\(.*\)")/\1/p' /usr/lib/x86_64-linux-gnu/cmake/Qt6/Qt6ConfigVersionImpl.cmake)
    source=$(sed -n 's/^set(QT_REPO_MODULE_VERSION "\(.*\)")/\1/p' "$work/source/.cmake.conf")
    [ -n "$host" ] || die "qt6-base-dev is not installed"
    [ "$host" = "$source" ] || die "the source is version $source, the installed qt6-base-dev $host"
}

configure() {
    local off=(vulkan egl network sql dbus concurrent printsupport pkg_config glib icu zstd system_zlib system_pcre2
        system_doubleconversion system_png system_jpeg system_freetype system_harfbuzz jpeg gif tabletevent)
    local options=("${off[@]/#/-DFEATURE_}")
    cmake -S "$work/source" -B "$work/build" -G Ninja \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$prefix.new" -DBUILD_SHARED_LIBS=OFF -DQT_QMAKE_TARGET_MKSPEC=win32-g++ \
        -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
        -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_BENCHMARKS=OFF -DQT_BUILD_MANUAL_TESTS=OFF \
        -DQT_BUILD_TOOLS_WHEN_CROSSCOMPILING=OFF -DINPUT_opengl=no "${options[@]/%/=OFF}" >&2
}

if [ -n "${QTWIN_PREFIX:-}" ]; then
    check_prefix "$QTWIN_PREFIX" || die "$QTWIN_PREFIX is no whole prefix"
    cd "$QTWIN_PREFIX" && pwd
    exit 0
fi
if ! check_prefix "$prefix" && ! take_archive; then
    [ "${1:-}" != --ready ] || exit 1
    "$root/scripts/install.sh" build gui windows windows-qt >&2
    mkdir -p "$work"
    fetch_source
    check_host_tools
    configure
    [ "${1:-}" != --configure-only ] || exit 0
    cmake --build "$work/build" >&2
    rm -rf "$prefix" "$prefix.new"
    cmake --install "$work/build" >&2
    mv "$prefix.new" "$prefix"
    check_prefix "$prefix" || die "the build made no whole prefix in $prefix"
fi
echo "$prefix"
