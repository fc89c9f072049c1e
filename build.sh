#!/usr/bin/env bash
# Set-up, build and run for QorBgpCommunity on Debian 12.
#
#   ./build.sh run     install what is missing, build (Release), write a synthetic RIB dump
#                      and print the community statistics of it
#   ./build.sh test    install what is missing, build (Sanitize), run every test, then
#                      the concurrency stress tests again under ThreadSanitizer
#   ./build.sh bench   install what is missing, build (Release), run the benchmarks
#
# Missing Debian packages are installed with apt-get when run as root; other
# users are told which to install.
set -euo pipefail
cd "$(dirname "$0")"

packages=(g++ cmake ninja-build ccache libgtest-dev libgmock-dev libbenchmark-dev libabsl-dev libboost-dev zlib1g-dev libbz2-dev libcli11-dev nlohmann-json3-dev bgpdump)

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
      ctest --test-dir build/tsan --output-on-failure -R Stress
      ;;
   bench)
      install_missing
      configure_and_build Release build/release -DQORBGP_BUILD_TESTS=OFF
      ./build/release/bench/qorbgp-bench
      ;;
   *)
      echo "usage: ./build.sh [run|test|bench]" >&2
      exit 2
      ;;
esac
