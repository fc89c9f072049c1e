#!/usr/bin/env bash
# Set-up, build and run for QorBgpCommunity on Debian 12.
#
#   ./build.sh run     install what is missing, build (Release), write a synthetic RIB dump
#                      and print the community statistics of it
#   ./build.sh test    install what is missing, build (Sanitize), run every test, then
#                      the concurrency stress tests again under ThreadSanitizer, then
#                      every fuzz target for a few seconds
#   ./build.sh bench [FILE.attrs.gz...]
#                      install what is missing, build (Release), run the benchmarks, then
#                      the workload benchmark on the attribute files given (or a
#                      synthetic workload)
#
# Missing Debian packages are installed with apt-get when run as root; other
# users are told which to install.
set -euo pipefail
cd "$(dirname "$0")"

packages=(g++ cmake ninja-build ccache pkgconf libgtest-dev libgmock-dev libbenchmark-dev libabsl-dev libboost-dev zlib1g-dev libbz2-dev liblzma-dev libzstd-dev libisal-dev libcli11-dev nlohmann-json3-dev bgpdump clang-14 libclang-rt-14-dev doxygen)

install_missing() {
   local missing=()
   for p in "${packages[@]}"; do
      dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
   done
   [ ${#missing[@]} -eq 0 ] && return
   if [ "$(id -u)" -ne 0 ]; then
      echo "build.sh: missing Debian packages: ${missing[*]}" >&2
      echo "build.sh: run as root, or: sudo apt-get install ${missing[*]}" >&2
      exit 1
   fi
   echo "build.sh: installing ${missing[*]}"
   export DEBIAN_FRONTEND=noninteractive
   apt-get update -qq
   apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# configure <build type> <dir> [cmake options...]
configure() {
   local type=$1 dir=$2
   shift 2
   cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$type" "$@" >/dev/null
}

# configure_and_build <build type> <dir> [cmake options...]
configure_and_build() {
   configure "$@"
   cmake --build "$2" -j "$(nproc)"
}

# fuzz_options <target>: libFuzzer options of a target beyond the common ones.
# The MRT and decode targets take inputs as large as a whole BGP message in a
# record (so that one record can announce thousands of paths) under a memory
# limit; route-map patterns must match quickly.
fuzz_options() {
   case $1 in
      MrtReaderFuzz) echo "-max_len=140000 -rss_limit_mb=1024" ;;
      DecodeAttributeFuzz) echo "-max_len=70000 -rss_limit_mb=1024" ;;
      RouteMapRegexFuzz) echo "-timeout=2 -rss_limit_mb=1024" ;;
   esac
}

# run_fuzzers <seconds>: every fuzz target (one per folder of fuzz/corpus) for
# that long, over a copy of its seed corpus under build/fuzz, so that the
# inputs a run adds never land in the source tree. A crash stops the build,
# its input kept as build/fuzz/crash-<target>-*.
run_fuzzers() {
   local seconds=$1 corpus target
   for corpus in fuzz/corpus/*/; do
      target=$(basename "$corpus")
      rm -rf "build/fuzz/corpus/$target"
      mkdir -p build/fuzz/corpus
      cp -r "$corpus" "build/fuzz/corpus/$target"
      echo "build.sh: fuzzing $target for ${seconds}s"
      # shellcheck disable=SC2046 # the options are words
      if ! "build/fuzz/fuzz/$target" -max_total_time="$seconds" -timeout=10 $(fuzz_options "$target") \
            -artifact_prefix="build/fuzz/crash-$target-" "build/fuzz/corpus/$target" \
            >"build/fuzz/$target.log" 2>&1; then
         tail -n 60 "build/fuzz/$target.log" >&2
         echo "build.sh: $target failed; its input is build/fuzz/crash-$target-*" >&2
         exit 1
      fi
      grep -E '^Done [0-9]+ runs' "build/fuzz/$target.log" || true
   done
}

mode=${1:-run}
case "$mode" in
   run)
      install_missing
      configure_and_build Release build/release -DQORBGP_BUILD_TESTS=OFF
      # A synthetic full table (a million paths sharing a few thousand
      # community lists), then what the library makes of it.
      ./build/release/tools/qorbgp-comm synth build/synth-rib.mrt.gz --paths 1000000
      ./build/release/tools/qorbgp-comm stats build/synth-rib.mrt.gz
      ;;
   test)
      install_missing
      configure_and_build Sanitize build/sanitize -DQORBGP_WERROR=ON
      ctest --test-dir build/sanitize --output-on-failure -j "$(nproc)"
      # The concurrency stress tests again, under ThreadSanitizer.
      configure Tsan build/tsan -DQORBGP_WERROR=ON -DQORBGP_BUILD_BENCH=OFF
      cmake --build build/tsan -j "$(nproc)" --target QorBgpStressTests
      ctest --test-dir build/tsan --output-on-failure -E _NOT_BUILT
      # Every fuzz target for a few seconds (clang, libFuzzer, ASan + UBSan).
      configure RelWithDebInfo build/fuzz -DCMAKE_CXX_COMPILER=clang++-14 -DQORBGP_FUZZ=ON \
         -DQORBGP_BUILD_TESTS=OFF -DQORBGP_BUILD_BENCH=OFF -DQORBGP_WERROR=ON
      cmake --build build/fuzz -j "$(nproc)" --target qorbgp-fuzzers
      run_fuzzers 12
      ;;
   bench)
      install_missing
      configure_and_build Release build/release -DQORBGP_BUILD_TESTS=OFF
      ./build/release/bench/qorbgp-bench
      # The library against the floor on attribute files given after
      # "bench" (a synthetic workload without them).
      shift
      ./build/release/bench/qorbgp-workload-bench "$@"
      ;;
   *)
      echo "usage: ./build.sh [run|test|bench]" >&2
      exit 2
      ;;
esac
