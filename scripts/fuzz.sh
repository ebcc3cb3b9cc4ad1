#!/usr/bin/env bash
# Builds the libFuzzer targets of tests/fuzz with clang in their own build folder and runs each
# for SECONDS (default 20) over its seed corpus. Fails on the first target that finds a crash,
# a leak, a sanitizer report or a broken check; the reproducer is left in the working folder
# as crash-*/leak-*/timeout-* (keep it under tests/fuzz/crashes/<target>/).
#
#   scripts/fuzz.sh [SECONDS]          TARVO_FUZZ_BUILD_DIR overrides the build folder
#   TARVO_FUZZ_JOBS=N                  parallel build jobs (default 2)
#   TARVO_FUZZ_TARGETS="valfold ..."   run only some targets
set -euo pipefail

seconds="${1:-20}"
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(realpath -m "${TARVO_FUZZ_BUILD_DIR:-$root/build-fuzz}")"
jobs="${TARVO_FUZZ_JOBS:-2}"
targets=(${TARVO_FUZZ_TARGETS:-json_rpc valfold command entity_list})

"$root/scripts/install-deps.sh" clang libclang-rt-14-dev

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
generator=()
command -v ninja >/dev/null && generator=(-G Ninja)

cmake -S "$root" -B "$build" "${generator[@]}" "${launcher[@]}" \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVO_FUZZ=ON -DTARVO_BUILD_TESTS=OFF -DTARVO_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$jobs" --target "${targets[@]/#/fuzz_}"

# Inputs the fuzzer adds go to a scratch folder, so the seed corpus in the tree stays as written.
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
status=0
for t in "${targets[@]}"; do
  mkdir -p "$work/$t"
  echo "== fuzz_$t: ${seconds}s"
  # Leak detection stays on: a target must not leak; -rss_limit_mb bounds a runaway allocation.
  rc=0
  (cd "$work" && UBSAN_OPTIONS=print_stacktrace=1 "$build/tests/fuzz/fuzz_$t" \
     -max_total_time="$seconds" -max_len=8192 -timeout=10 -rss_limit_mb=4096 \
     -print_final_stats=1 "$work/$t" "$root/tests/fuzz/corpus/$t" >"$work/$t.log" 2>&1) || rc=$?
  grep -E "^(Done|stat::number_of_executed_units|stat::average_exec_per_sec)" "$work/$t.log" || true
  if [ "$rc" -ne 0 ]; then
    tail -n 60 "$work/$t.log" >&2
    echo "fuzz_$t FAILED (exit $rc)" >&2
    for f in "$work"/crash-* "$work"/leak-* "$work"/timeout-* "$work"/oom-*; do
      [ -e "$f" ] || continue
      mkdir -p "$root/tests/fuzz/crashes/$t"
      mv "$f" "$root/tests/fuzz/crashes/$t/"
      echo "  reproducer: tests/fuzz/crashes/$t/$(basename "$f")" >&2
    done
    status=1
  fi
done
exit $status
