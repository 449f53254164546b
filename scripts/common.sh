# shellcheck shell=bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Shared by run, test and bench; sourced with `top` set to the project's folder.

say() { printf '\033[1m==>\033[0m %s\n' "$*"; }

# build PRESET: configures once, builds what changed, shows progress.
build() {
    local preset=$1
    if [ ! -e "$top/build/$preset/build.ninja" ] || ! [ -e "$top/build/$preset/.configured" ]; then
        say "Configuring the $preset build"
        (cd "$top" && cmake --preset "$preset" >"$top/build/$preset.configure.log" 2>&1) || {
            tail -n 30 "$top/build/$preset.configure.log" >&2
            return 1
        }
        touch "$top/build/$preset/.configured"
    fi
    say "Building ($preset); the first time takes some minutes"
    (cd "$top" && NINJA_STATUS='[%f/%t %es] ' cmake --build "build/$preset" "${@:2}" | progress)
}

# One line that is rewritten on a terminal; every fortieth line elsewhere. Warnings and errors always show. No awk: Debian's
# gives nothing on before it has read thousands of characters.
progress() {
    local line last='' count=0
    while IFS= read -r line; do
        if [[ ! $line =~ ^\[[0-9]+/[0-9]+' ' ]]; then
            [ ! -t 1 ] || printf '\r\033[K'
            printf '%s\n' "$line"
        elif [ -t 1 ]; then
            printf '\r\033[K%s' "${line:0:100}"
        elif ((++count % 40 == 0)); then
            printf '%s\n' "$line"
            last=''
        else
            last=$line
        fi
    done
    if [ -t 1 ] || [ -n "$last" ]; then printf '%s\n' "$last"; fi
}

# A runtime directory for this user; Debian's minimal systems have none.
ensure_runtime_dir() {
    if [ -z "${XDG_RUNTIME_DIR:-}" ] || [ ! -w "${XDG_RUNTIME_DIR:-/nonexistent}" ]; then
        XDG_RUNTIME_DIR=$(mktemp -d "${TMPDIR:-/tmp}/kestrel-run.XXXXXX")
        chmod 0700 "$XDG_RUNTIME_DIR"
        export XDG_RUNTIME_DIR
        made_runtime_dir=$XDG_RUNTIME_DIR
    fi
}
