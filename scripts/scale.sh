#!/usr/bin/env bash
# The size benchmark: builds bench_scale in build/ (with libyang beside it when libyang 2 is
# installed: scripts/setup.sh bench), runs it (ARGS go to it; its own output goes to
# standard error) and prints one table of the figures and their growth.
#   scripts/scale.sh [BENCHMARK ARGS...]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh bench >&2
cmake -S . -B build -G Ninja -DZAN_BENCH=ON >&2
cmake --build build -j2 --target bench_scale zan_fe >&2
mkdir -p build/bench/results
build/bench/bench_scale --benchmark_out=build/bench/results/scale.json --benchmark_out_format=json "$@" >&2
exec python3 scripts/scale_table.py build/bench/results/scale.json
