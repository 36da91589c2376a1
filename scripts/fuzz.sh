#!/usr/bin/env bash
# scripts/fuzz.sh SECONDS [FUZZER…]: builds the fuzzers and runs each for so long, two at a time; all of them unless some
# are named, such as PropertyList. Each starts from its corpus and works in a scratch folder. Prints how often each ran;
# what one finds is kept in build/fuzz/Findings, and the script fails then.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

seconds=${1:?how many seconds shall each fuzzer run?}
shift
fuzzers=("$@")
[ $# -gt 0 ] || fuzzers=($(ls Fuzz/Corpus))

install_packages "${build_packages[@]}" "${clang_packages[@]}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${fuzzers[@]/%/Fuzzer}" -- --quiet

scratch=$(mktemp -d "/dev/shm/ozvarine fuzz XXXXXX")
trap 'rm -rf "$scratch"' EXIT
findings=build/fuzz/Findings
mkdir -p "$findings"
# A leak of the libraries that only shows at the end is a finding like any other; what an input may cost is limited, too.
options=(-max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 -use_value_profile=1)

run_one() {
    local name=$1 result=passed
    mkdir -p "$scratch/$name/corpus" "$scratch/$name/tmp"
    TMPDIR=$scratch/$name/tmp UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
        "build/fuzz/bin/${name}Fuzzer" "${options[@]}" -artifact_prefix="$findings/$name-" \
        "$scratch/$name/corpus" "Fuzz/Corpus/$name" >"$scratch/$name/log" 2>&1 || result=FAILED
    local executions
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$scratch/$name/log")
    printf '%-18s %12s executions  %s\n' "$name" "${executions:-?}" "$result"
    [ $result = passed ] && return 0
    cp "$scratch/$name/log" "$findings/$name.log"
    grep -E -m 20 'ERROR|runtime error|Test unit written|^    #' "$scratch/$name/log" || tail -20 "$scratch/$name/log"
    return 1
}

failed=0
for name in "${fuzzers[@]}"; do
    [ "$(jobs -rp | wc -l)" -lt 2 ] || wait -n || failed=1
    run_one "$name" &
done
while [ -n "$(jobs -p)" ]; do
    wait -n || failed=1
done
exit $failed
