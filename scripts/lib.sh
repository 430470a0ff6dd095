# shellcheck shell=sh
# shellcheck disable=SC2034 # what is set here is for the scripts that source it

# Functions that the scripts beside this file share. POSIX sh, sourced, never run by itself:
#
#     . "$(dirname "$(readlink -f "$0")")/lib.sh"
#
# Sourcing it stops the script at the first error, sets ROOT to the project's folder and takes standard input
# away, so that nothing that is started from here can wait for an answer.

set -eu
exec </dev/null

ROOT=$(cd "$(dirname "$(readlink -f "$0")")/.." && pwd -P)
JOBS=$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)

# Prints what packaging/debian/control asks for to build, one package a line, the first where there is a choice. What
# every build takes, build-essential, is not among it.
build_depends() {
    awk '/^[^ \t#]/ { asked = /^Build-Depends:/ } asked' "$ROOT/packaging/debian/control" \
        | sed '/^#/d; s/^Build-Depends://' | tr ',' '\n' | sed 's/[][(|<:].*//; s/[ \t]//g; /^$/d'
}

# Packages of Debian 12 and 13, by what they are for.
PACKAGES_BUILD="g++ ccache $(build_depends | grep -v '^debhelper')"
PACKAGES_SHOW="adwaita-icon-theme fonts-dejavu-core fonts-liberation xdg-utils"
PACKAGES_VIRTUAL_DISPLAY="xvfb openbox xdotool x11-utils imagemagick"
PACKAGES_FORMAT="clang-format"
PACKAGES_LINT="clang-tidy clazy mandoc shellcheck python3 python3-pyflakes"
PACKAGES_COVERAGE="lcov"
PACKAGES_VALGRIND="valgrind libc6-dbg"
PACKAGES_FUZZ="clang libclang-rt-dev"
PACKAGES_TEST="qtbase5-private-dev locales python3 procps strace dbus dbus-x11 at-spi2-core python3-pyatspi xclip xauth
 btrfs-progs fuse3 libfuse3-dev mount pkg-config weston qtwayland5"
# What the recipes of examples/recipes run that are tested by running them.
PACKAGES_RECIPES="bzip2 fdupes file git gpg gpg-agent less libarchive-tools libglib2.0-bin p7zip-full
 pinentry-curses rename renameutils rsync sensible-utils trash-cli unzip xxd xz-utils zip zstd"
PACKAGES_PICTURES="optipng pngquant"
PACKAGES_PACKAGE="build-essential ccache debhelper dpkg-dev $(build_depends)"
PACKAGES_PACKAGE_TEST="appstream blhc desktop-file-utils devscripts librsvg2-bin lintian man-db mandoc"

say() {
    printf '%s\n' "$*"
}

warn() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

die() {
    warn "$*"
    exit 1
}

# Runs a command as root, without ever asking for a password.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
        sudo -n "$@"
    else
        return 126
    fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive NEEDRESTART_MODE=a \
        apt-get -q -y -o DPkg::Lock::Timeout=300 "$@"
}

# Prints the packages that are installed and those that they provide, one a line.
installed_packages() {
    # shellcheck disable=SC2016 # fields of dpkg-query
    dpkg-query -W -f '${db:Status-Status},${Package},${Provides}\n' 2>/dev/null | sed -n 's/^installed,//p' \
        | tr ',' '\n' | sed 's/(.*//; s/ //g'
}

# need PACKAGE...: installs those of the Debian packages that are missing, and says which.
need() {
    if ! command -v dpkg-query >/dev/null 2>&1; then
        warn "this is no Debian system; the equivalents of these packages have to be there: $*"
        return 0
    fi
    there=" $(installed_packages | tr '\n' ' ')"
    missing=
    for package in "$@"; do
        case $there in
        *" $package "*) ;;
        *) missing="$missing $package" ;;
        esac
    done
    [ -n "$missing" ] || return 0

    if ! as_root true; then
        die "missing packages:$missing
Installing them needs root, or sudo that asks for no password. Install them by hand and start again:
    apt-get install --no-install-recommends$missing"
    fi
    say "Installing:$missing"
    log=$(mktemp)
    apt_get update >"$log" 2>&1 || warn "the package lists could not be brought up to date; trying those that are there"
    # shellcheck disable=SC2086 # a list of words
    if ! apt_get install --no-install-recommends $missing >>"$log" 2>&1; then
        tail -n 30 "$log" >&2
        rm -f "$log"
        die "these packages could not be installed:$missing"
    fi
    rm -f "$log"
}

# build PRESET [TARGET...]: configures and builds; without a target, everything of that preset. What the tools
# say is shown only where they fail.
build() {
    preset=$1
    shift
    log=$(mktemp)
    if ! { cd "$ROOT" && cmake --preset "$preset" >"$log" 2>&1 \
        && cmake --build --preset "$preset" ${1:+--target "$@"} >>"$log" 2>&1; }; then
        grep -v '^\[[0-9]*/[0-9]*\]' "$log" | tail -n 200 >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# share_cache FOLDER: lets the compiler's cache give what was compiled below another folder or in another language.
share_cache() {
    export CCACHE_BASEDIR="$1" CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=locale
}

# own_sources: prints the C++ files of the project, one a line, from its root.
own_sources() {
    (cd "$ROOT" && for room in app panel fileops commands info check tests bench fuzz; do
        [ ! -d "$room" ] || find "$room" -type f \( -name '*.cpp' -o -name '*.h' \)
    done | LC_ALL=C sort)
}

# own_scripts: prints the shell scripts of the project, one a line, from its root.
own_scripts() {
    (cd "$ROOT" && find scripts .ci tests setup packaging -type f 2>/dev/null | LC_ALL=C sort | while IFS= read -r file; do
        case $(head -c 64 "$file" | head -n 1 | tr -d '\0') in
        '#!/bin/sh'* | '#!/bin/bash'* | '#!/usr/bin/env bash'* | '# shellcheck shell='*) printf '%s\n' "$file" ;;
        esac
    done)
}

# own_python: prints the Python files of the project, one a line, from its root.
own_python() {
    (cd "$ROOT" && find scripts tests bench packaging -type f 2>/dev/null | LC_ALL=C sort | while IFS= read -r file; do
        case $file in
        *.py) printf '%s\n' "$file" ;;
        *) case $(head -c 64 "$file" | head -n 1 | tr -d '\0') in
            '#!'*python3*) printf '%s\n' "$file" ;;
            esac ;;
        esac
    done)
}

# start_virtual_display WIDTHxHEIGHT FOLDER: starts Xvfb with openbox on a free display number and exports
# DISPLAY. Logs go to FOLDER. Their process ids are left in XVFB_PID and OPENBOX_PID; stop_virtual_display ends
# them.
start_virtual_display() {
    geometry=$1
    logs=$2
    rm -f "$logs/xvfb.number"
    mkfifo "$logs/xvfb.number"
    Xvfb -displayfd 5 -screen 0 "${geometry}x24" -nolisten tcp -noreset \
        5>"$logs/xvfb.number" >"$logs/xvfb.log" 2>&1 &
    XVFB_PID=$!
    number=$(timeout 30 head -n 1 "$logs/xvfb.number") || number=
    rm -f "$logs/xvfb.number"
    if [ -z "$number" ]; then
        cat "$logs/xvfb.log" >&2
        die "the virtual display did not start"
    fi
    DISPLAY=:$number
    export DISPLAY
    unset WAYLAND_DISPLAY
    XDG_CACHE_HOME=$logs openbox >"$logs/openbox.log" 2>&1 &
    OPENBOX_PID=$!
    wait_until 20 window_manager_runs || die "the window manager did not start"
}

stop_virtual_display() {
    for pid in ${OPENBOX_PID:-} ${XVFB_PID:-}; do
        kill "$pid" 2>/dev/null || :
        wait "$pid" 2>/dev/null || :
    done
    OPENBOX_PID=
    XVFB_PID=
}

window_manager_runs() {
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'
}

# wait_until SECONDS COMMAND...: tries the command until it succeeds; fails where it has not by then.
wait_until() {
    end=$(($(date +%s) + $1))
    shift
    until "$@"; do
        [ "$(date +%s)" -lt "$end" ] || return 1
        sleep 0.1
    done
}

# shows_settings FILE: whether the upper part of a screenshot of 1600 pixels has the colours that the settings give.
shows_settings() {
    colours=$(convert "$1" -crop 1600x60+0+40 -format %k info:) || return 1
    say "$colours colours"
    [ "$colours" -gt 20 ]
}

# --- Scripts that count checks. $work is a folder of theirs.

passed=0
failed=0
skipped=0

# check NAME COMMAND...: one check; what it says is shown where it fails.
check() {
    name=$1
    shift
    # shellcheck disable=SC2154 # the script's own
    if "$@" >"$work/said" 2>&1 </dev/null; then
        say "passed: $name"
        passed=$((passed + 1))
    else
        say "FAILED: $name"
        sed '/^\[[ 0-9/%]*\] /d; s/^/    /' "$work/said" | tail -n 200
        failed=$((failed + 1))
        return 1
    fi
}

skip() {
    say "skipped $1"
    skipped=$((skipped + 1))
}

# say_counts: the last line of the script, and its end: succeeds where something passed and nothing failed.
say_counts() {
    counts="$passed passed, $failed failed"
    [ "$skipped" -eq 0 ] || counts="$counts, $skipped skipped"
    say "$counts"
    [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
}
