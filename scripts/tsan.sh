#!/usr/bin/env bash
# Builds what has threads with the thread sanitizer and runs its tests (those with the label "threads").
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages "${build_packages[@]}" "${tool_packages[@]}" "${test_packages[@]}" "${clang_packages[@]}"
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target platform_tests model_tests scenario_tests -- --quiet
TSAN_OPTIONS=halt_on_error=1 ctest --preset tsan -L threads --parallel "$(nproc)" "$@"
