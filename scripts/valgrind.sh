#!/usr/bin/env bash
# Runs the executable under valgrind over a new demo device, once with each of the main switches. Prints how many errors
# each run showed, and fails if there was one.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages "${build_packages[@]}" "${tool_packages[@]}" valgrind
cmake --preset release >/dev/null
cmake --build --preset release --target ozvarine ozdevice -- --quiet

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
build/release/bin/ozdevice create "$scratch/device" >/dev/null

failed=0
check() {
    local result=passed
    valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite \
        --log-file="$scratch/log" build/release/bin/ozvarine --device "$scratch/device" "$@" >/dev/null </dev/null ||
        result="FAILED (status $?)"
    printf '%-24s %s errors  %s\n' "$*" "$(grep -c 'at 0x' "$scratch/log" || true)" "$result"
    [ "$result" = passed ] || { failed=1; cat "$scratch/log"; }
}

check --dry-run -clean
check -clean
check -restore-togglable-items
check -printsettings
exit $failed
