#!/usr/bin/env bash
# Builds in build/ and runs one job:
#   scripts/run.sh main [ZANFE ARGS...]   the zanfe tool (default: one request on the built-in
#                                         configuration, three attributes of an NTP peer row)
#   scripts/run.sh test                   the whole test suite
#   scripts/run.sh bench [ARGS...]        the benchmarks
# Installing and building report on standard error, so that standard output of the main
# job is the tool's alone.
set -euo pipefail
cd "$(dirname "$0")/.."

job=${1:-main}
[ $# -gt 0 ] && shift
case "$job" in
  main|test|bench) ;;
  *)
    echo "usage: scripts/run.sh main [zanfe arguments] | test | bench [benchmark arguments]" >&2
    exit 2
    ;;
esac

bash scripts/setup.sh >&2
cmake -S . -B build -G Ninja >&2

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
  bench)
    cmake -S . -B build -DZAN_BENCH=ON >&2
    cmake --build build -j2 --target bench_columns bench_resolve bench_properties bench_keys zan_fe >&2
    build/bench/bench_columns "$@"
    build/bench/bench_resolve "$@"
    build/bench/bench_keys "$@"
    exec build/bench/bench_properties "$@"
    ;;
esac
