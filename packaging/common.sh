# What the packaging scripts share; sourced from the root of the tree (bash), after scripts/common.sh.

version=$(sed -n 's/^project(VKTCfgTools VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
# The time that packages say they were made: the commit's, so that two runs give the same bytes.
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || echo 1700000000)
fi
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8
umask 022

# make_same_age FOLDER: gives everything in it the packages' time.
make_same_age() { find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +; }

# forget_build_time FOLDER: the one object that holds the time it was compiled at is compiled anew, at the packages' time.
forget_build_time() { rm -f "build/$1"/app/CMakeFiles/VKTCfgTools.dir/vkt_main.cpp.*; }

# changelog_section: prints what CHANGELOG.md says of this version, without the heading.
changelog_section() {
    awk -v head="## $version" 'index($0, "## ") == 1 { inside = index($0 " ", head " ") == 1; next } inside' CHANGELOG.md
}
