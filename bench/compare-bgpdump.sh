#!/usr/bin/env bash
# Times `qorbgp-comm stats` against `bgpdump -m` over MRT files: whole-process
# wall time, PAIRS paired runs per file (the two tools alternate, and so does
# which of them goes first), medians, and the ratio of the medians. Beside
# them, the time the tool's own decoder takes to decompress the file and
# nothing more (`stats --decompress-only`), the floor the tool cannot go under.
#
#   bench/compare-bgpdump.sh [FILE...]
#
# With no file: every file of ../shared/data/mrt/ and a synthetic full table
# (a million paths, written first if missing). Environment: PAIRS (default 5);
# TOOL, the qorbgp-comm binary to time (default the Release build); DECODER,
# the binary whose --decompress-only is timed (default TOOL).
#
# Needs a Release build (./build.sh run or ./build.sh bench) and bgpdump.
set -euo pipefail
cd "$(dirname "$0")/.."
tool=${TOOL:-build/release/tools/qorbgp-comm}
decoder=${DECODER:-$tool}
pairs=${PAIRS:-5}
[ -x "$tool" ] || { echo "compare-bgpdump: build first: ./build.sh run" >&2; exit 2; }
command -v bgpdump >/dev/null || { echo "compare-bgpdump: bgpdump is not installed" >&2; exit 2; }

files=("$@")
if [ ${#files[@]} -eq 0 ]; then
   for f in ../shared/data/mrt/*; do
      [ "$(basename "$f")" = SOURCES.md ] || files+=("$f")
   done
   synth=build/synth-rib.mrt.gz
   [ -f "$synth" ] || "$tool" synth "$synth" --paths 1000000 >/dev/null
   files+=("$synth")
fi

# seconds <command...>: wall time of the command, its output discarded.
# $EPOCHREALTIME costs no process, so that the start-up of the tools on small
# files is what is measured.
seconds() {
   local start=$EPOCHREALTIME
   "$@" >/dev/null 2>&1 || true
   local end=$EPOCHREALTIME
   awk -v s="$start" -v e="$end" 'BEGIN { printf "%.4f\n", e - s }'
}

median() { sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

printf '%-46s %10s %10s %7s %12s\n' file "bgpdump s" "stats s" ratio "decompress s"
for file in "${files[@]}"; do
   ours=() theirs=() decode=()
   for ((i = 0; i < pairs; ++i)); do
      if ((i % 2 == 0)); then
         ours+=("$(seconds "$tool" stats "$file")")
         theirs+=("$(seconds bgpdump -m "$file")")
      else
         theirs+=("$(seconds bgpdump -m "$file")")
         ours+=("$(seconds "$tool" stats "$file")")
      fi
      decode+=("$(seconds "$decoder" stats --decompress-only "$file")")
   done
   o=$(printf '%s\n' "${ours[@]}" | median)
   t=$(printf '%s\n' "${theirs[@]}" | median)
   d=$(printf '%s\n' "${decode[@]}" | median)
   printf '%-46s %10.4f %10.4f %7.2f %12.4f\n' "$(basename "$file")" "$t" "$o" \
      "$(awk -v a="$t" -v b="$o" 'BEGIN { printf "%.2f", a / b }')" "$d"
done
