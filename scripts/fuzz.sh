#!/usr/bin/env bash
# Builds the libFuzzer harnesses (preset "fuzz": clang, ASan + UBSan) and runs each for a
# bounded time. Fails when one of them finds a crash, a sanitizer report or a rejected file;
# the input that did it is left in build/fuzz/findings/HARNESS/ and should be saved under
# tests/fuzz/HARNESS/regressions/ with a name that says what it holds.
#
#   scripts/fuzz.sh [HARNESS...]      (default: every harness)
#   FUZZ_SECONDS=N   time per harness (default 60)
#   FUZZ_SEED=N      fixed libFuzzer seed, for a repeatable run (default: a fresh one)
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${FUZZ_SECONDS:-60}"
harnesses=("$@")
if [ ${#harnesses[@]} -eq 0 ]; then harnesses=(jsontake bvh writer); fi

bash scripts/install-deps.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

seed_option=()
if [ -n "${FUZZ_SEED:-}" ]; then seed_option=(-seed="$FUZZ_SEED"); fi

failed=()
for harness in "${harnesses[@]}"; do
    corpus="build/fuzz/corpus/$harness"      # grows between runs; the seeds stay as they are
    findings="build/fuzz/findings/$harness"
    log="build/fuzz/$harness.log"
    mkdir -p "$corpus" "$findings"
    # git keeps no empty folder: a harness without regressions yet has only its seeds
    inputs=("$corpus" "tests/fuzz/$harness/seeds")
    if [ -d "tests/fuzz/$harness/regressions" ]; then inputs+=("tests/fuzz/$harness/regressions"); fi
    echo "== $harness: ${seconds} s"
    if ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=0" \
       UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1" \
       "build/fuzz/tests/fuzz/${harness}_fuzzer" "${seed_option[@]}" \
           -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
           -artifact_prefix="$findings/" "${inputs[@]}" >"$log" 2>&1; then
        grep -E "stat::number_of_executed_units|stat::average_exec_per_sec" "$log" || true
    else
        tail -n 40 "$log"
        echo "== $harness: FINDING, input left in $findings/ (log: $log)"
        failed+=("$harness")
    fi
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "Fuzzing found faults in: ${failed[*]}"
    exit 1
fi
