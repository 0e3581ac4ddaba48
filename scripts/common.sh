# What the scripts share; sourced from the root of the tree (bash).

jobs=$(nproc)
# Compiled sanitised Qt code takes up to 1 GB a job: small machines get fewer jobs than cores.
memory_gb=$(awk '/^MemAvailable/ { print int($2 / 1048576) }' /proc/meminfo)
if [ "$memory_gb" -lt "$jobs" ]; then jobs=$((memory_gb > 1 ? memory_gb : 1)); fi

if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

say() { printf '\n== %s\n' "$*"; }

# configure PRESET [cmake option...]
configure() {
    local preset=$1
    shift
    local log=build/$preset-configure.log
    mkdir -p build
    if ! cmake --preset "$preset" "$@" >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
}

# build FOLDER [target...]: builds what is configured in build/FOLDER.
build() {
    local folder=$1
    shift
    cmake --build "build/$folder" -j "$jobs" ${1:+--target "$@"}
}

# with_display COMMAND...: runs a command with a virtual display of its own.
with_display() {
    xvfb-run -a -s "-screen 0 1600x1000x24" "$@"
}
