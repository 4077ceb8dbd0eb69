"""Formats vector_bench's JSON output: nanoseconds per element, and the gain over the plain loop."""
import json
import sys

runs = json.load(sys.stdin)["benchmarks"]
ns = {}
for r in runs:
    ns[r["name"]] = r["cpu_time"] / r["elements"]  # cpu_time is in ns per iteration

print(f"{'primitive':<28}{'n':>6}{'ns/element':>12}{'plain loop':>12}{'gain':>7}")
for name, value in ns.items():
    if "_plainLoop" in name:
        continue
    base, n = name.rsplit("/", 1)
    plain = ns.get(f"{base}_plainLoop/{n}")
    row = f"{base.removeprefix('BM_'):<28}{n:>6}{value:>12.3f}"
    row += f"{plain:>12.3f}{plain / value:>6.1f}x" if plain else f"{'':>12}{'':>7}"
    print(row)
