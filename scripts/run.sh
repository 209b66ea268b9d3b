#!/usr/bin/env bash
# Builds in build/ and runs one job:
#   scripts/run.sh main [ZANFE ARGS...]   the zanfe tool (default: one request on the built-in
#                                         configuration, three attributes of an NTP peer row)
#   scripts/run.sh test                   the whole test suite
#   scripts/run.sh bench [ARGS...]        every benchmark suite (ARGS go to each), then one table
#                                         of the figures and the ratios to libyang
#   scripts/run.sh sanitize               the whole test suite built with the address and
#                                         undefined-behaviour sanitizers (build-asan/)
#   scripts/run.sh tsan                   the concurrency test under the thread sanitizer
#                                         (build-tsan/)
#   scripts/run.sh fuzz [SECONDS]         each libFuzzer target for SECONDS (default 30) from
#                                         its seed corpus (build-fuzz/, clang)
#   scripts/run.sh install                the install check (tests/install/check.sh): the ABI
#                                         guard, an install into a temporary prefix, the consumer
#                                         project through the CMake package and pkg-config, and
#                                         the Debian packages
#   scripts/run.sh ci                     test, install, sanitize, tsan and a short fuzz run:
#                                         what CI runs
# Installing and building report on standard error, so that standard output of the main
# job is the tool's alone.
set -euo pipefail
cd "$(dirname "$0")/.."

job=${1:-main}
[ $# -gt 0 ] && shift
case "$job" in
  main|test|bench|sanitize|tsan|fuzz|install|ci) ;;
  *)
    echo "usage: scripts/run.sh main [zanfe arguments] | test | bench [benchmark arguments]" \
         "| sanitize | tsan | fuzz [seconds] | install | ci" >&2
    exit 2
    ;;
esac

bash scripts/setup.sh "$job" >&2

# The fuzz targets, built apart with clang; each runs `seconds` from a copy of its corpus,
# so that what a run finds does not change the repository.
fuzz() {
  local seconds=$1
  CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZAN_FUZZ=ON -DZAN_TESTS=OFF -DZAN_BENCH=OFF >&2
  cmake --build build-fuzz -j2 --target fuzz_path fuzz_config fuzz_resolve fuzz_vlist fuzz_differential fuzz_uri zan_fe >&2
  for target in path config resolve vlist differential uri; do
    local corpus=build-fuzz/corpus/$target artifacts=build-fuzz/artifacts/$target/
    rm -rf "$corpus" && mkdir -p "$corpus" "$artifacts" && cp tests/fuzz/corpus/$target/* "$corpus"/
    echo "fuzz: $target for ${seconds}s" >&2
    ZANFE_LIBRARY=$PWD/build-fuzz/frame/libzanfe.so \
      build-fuzz/tests/fuzz/fuzz_$target -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 \
      -artifact_prefix="$artifacts" \
      "$corpus" 2>&1 | grep -E "stat::number_of_executed_units|stat::peak_rss|ERROR|SUMMARY|Done" >&2
  done
}

sanitize() {
  cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZAN_SANITIZE=ON -DZAN_BENCH=OFF >&2
  cmake --build build-asan -j2
  # use_tls=0: the leak checker's scan of the thread-local blocks of a dlopen'ed library
  # crashes now and then with this C library; without it, memory held only through
  # thread-local cells would be reported, never missed.
  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    LSAN_OPTIONS=use_tls=0:print_suppressions=0:suppressions=$PWD/tests/lsan.supp \
    ctest --test-dir build-asan --output-on-failure -j2
}

tsan() {
  cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZAN_TSAN=ON -DZAN_BENCH=OFF >&2
  cmake --build build-tsan -j2 --target test_concurrency zan_fe
  TSAN_OPTIONS=halt_on_error=1 build-tsan/tests/engine/test_concurrency
}

case "$job" in
  sanitize) sanitize; exit ;;
  tsan) tsan; exit ;;
  fuzz) fuzz "${1:-30}"; exit ;;
esac

# Installed under /usr (the Debian packages' prefix, and the multiarch library folder);
# the install check installs into a temporary prefix instead.
cmake -S . -B build -G Ninja -DCMAKE_INSTALL_PREFIX=/usr >&2

case "$job" in
  main)
    cmake --build build -j2 --target zanfe_tool zan_fe >&2
    [ $# -eq 0 ] && set -- get 'ntp_peer_server[peer_server_key=10.0.0.1]' \
      --attrs peer_server_key,compound_0.peer_or_server.descriminator,__uri__
    exec build/tools/zanfe "$@"
    ;;
  test)
    cmake --build build -j2
    exec ctest --test-dir build --output-on-failure -j2
    ;;
  install)
    cmake --build build -j2 --target zanfe_tool zan_fe zanconfig zanengine zanfe_man >&2
    exec bash tests/install/check.sh build
    ;;
  ci)
    cmake --build build -j2
    ctest --test-dir build --output-on-failure -j2
    bash tests/install/check.sh build
    sanitize
    tsan
    fuzz 20
    ;;
  bench)
    # Every suite, figures as JSON in build/bench/results; the suites' own output goes to
    # standard error and one table of the figures (with the ratios to libyang when the
    # comparison is built) to standard output.
    cmake -S . -B build -DZAN_BENCH=ON >&2
    targets=$(ninja -C build -t targets all)
    suites=(bench_vlist)
    if grep -q '^bench_peer:' <<<"$targets"; then
      suites+=(bench_peer)   # holds bench_resolve, bench_properties and bench_columns
    else
      suites+=(bench_resolve bench_properties bench_columns)
    fi
    if grep -q '^bench_keys:' <<<"$targets"; then suites+=(bench_keys); fi
    cmake --build build -j2 --target "${suites[@]}" zan_fe >&2
    mkdir -p build/bench/results
    rm -f build/bench/results/*.json
    for s in "${suites[@]}"; do
      build/bench/$s --benchmark_out=build/bench/results/$s.json --benchmark_out_format=json "$@" >&2
    done
    exec python3 scripts/bench_table.py build/bench/results/*.json
    ;;
esac
