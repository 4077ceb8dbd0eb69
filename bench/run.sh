#!/bin/sh
# Runs every benchmark of the project against the build in $1 (default: build).
set -eu
build=${1:-build}
here=$(dirname "$0")
echo "== Vector layer at frame sizes, against the same loops compiled without vectorisation =="
"$build/bench/vector_bench" --benchmark_format=json 2>/dev/null | python3 "$here/report_vectors.py"
echo
echo "== Restoration quality against FFmpeg's adeclick, both at their defaults =="
"$build/bench/quality_bench"
echo
echo "== Renderer speed against FFmpeg's adeclick =="
python3 "$here/speed.py" "$build" 120
echo
echo "== The audio path in real time: block times and the cost of each stage =="
"$build/bench/realtime_bench"
