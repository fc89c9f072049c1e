#!/usr/bin/env bash
# Times `qorbgp-comm stats` and `bgpdump -m` over the same MRT file, in one
# run, and prints the ratio. With no file argument it first writes a
# synthetic full table (a million paths).
#
#   bench/compare-bgpdump.sh [FILE]
#
# Needs a Release build (./build.sh run or ./build.sh bench) and bgpdump.
set -euo pipefail
cd "$(dirname "$0")/.."
tool=build/release/tools/qorbgp-comm
[ -x "$tool" ] || { echo "compare-bgpdump: build first: ./build.sh run" >&2; exit 2; }
command -v bgpdump >/dev/null || { echo "compare-bgpdump: bgpdump is not installed" >&2; exit 2; }

file=${1:-build/synth-rib.mrt.gz}
[ -f "$file" ] || "$tool" synth "$file" --paths 1000000

seconds() { # seconds <command...>: wall time of the command, its output discarded
   local start end
   start=$(date +%s.%N)
   "$@" >/dev/null 2>&1
   end=$(date +%s.%N)
   awk -v s="$start" -v e="$end" 'BEGIN { printf "%.3f", e - s }'
}

ours=$(seconds "$tool" stats "$file")
theirs=$(seconds bgpdump -m "$file")
printf 'file               %s\n' "$file"
printf 'qorbgp-comm stats  %6.2f s\n' "$ours"
printf 'bgpdump -m         %6.2f s\n' "$theirs"
printf 'ratio              %6.2f (bgpdump time / qorbgp-comm time)\n' \
   "$(awk -v a="$theirs" -v b="$ours" 'BEGIN { printf "%.2f", a / b }')"
