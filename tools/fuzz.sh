#!/bin/sh
# tools/fuzz.sh BUILD_DIR SECONDS PROGRAM:CORPUS...
# Runs each fuzzing program for SECONDS, all at once (one core each), on a copy of its committed
# seed corpus in tests/fuzz/corpus/CORPUS. Prints the executions each made; fails if any found a
# crash, a hang or a sanitizer report, whose input is then kept in BUILD_DIR/findings.
set -eu
build=$1
seconds=$2
shift 2
root=$(cd "$(dirname "$0")/.." && pwd)
findings="$build/findings"
mkdir -p "$findings"
export ASAN_OPTIONS="abort_on_error=1:detect_leaks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
symbolizer=$(command -v llvm-symbolizer || true)
[ -n "$symbolizer" ] && export ASAN_SYMBOLIZER_PATH="$symbolizer"

pids=""
for entry in "$@"; do
    program=${entry%%:*}
    corpus=${entry#*:}
    work="$build/corpus/$corpus"
    rm -rf "$work"
    mkdir -p "$work"
    cp "$root/tests/fuzz/corpus/$corpus"/* "$work/"
    # A slow input is a finding too: 20 s is far beyond any input of at most 64 kB.
    "$build/tests/fuzz/$program" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
        -max_len=65536 -print_final_stats=1 -artifact_prefix="$findings/$program-" "$work" \
        >"$build/$program.log" 2>&1 &
    pids="$pids $!:$program"
done

status=0
for entry in $pids; do
    pid=${entry%%:*}
    program=${entry#*:}
    if wait "$pid"; then
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$program.log")
        echo "$program: $runs executions in ${seconds} s, nothing found"
    else
        echo "$program: FAILED; its log follows ($build/$program.log)" >&2
        tail -n 60 "$build/$program.log" >&2
        status=1
    fi
done
exit $status
