#!/usr/bin/env bash
# Builds everything with the address and the undefined-behaviour sanitizer and runs every test. The few that measure
# memory skip themselves there, since a sanitizer takes memory of its own.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages "${build_packages[@]}" "${tool_packages[@]}" "${test_packages[@]}"
cmake --preset asan >/dev/null
cmake --build --preset asan -- --quiet
UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 ctest --preset asan --parallel "$(nproc)" "$@"
