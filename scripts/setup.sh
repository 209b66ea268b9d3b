#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those not yet installed.
# `setup.sh bench` also tries the optional ones of the benchmarks (libyang 2 for the
# comparison, valgrind for the instruction counts); the build goes on without them.
set -euo pipefail
job=${1:-}

# libyang-tools: yanglint, which the tests run over the generated YANG module and the
# tool's RFC 7951 output.
# The RESTCONF server: libcpp-httplib-dev (HTTP/HTTPS server, with OpenSSL), libcrypt-dev
# (crypt(3) of libxcrypt for the users file), pkg-config; its tests run curl, openssl (a
# certificate made by the test) and wrk (the load test).
packages=(cmake ninja-build g++ python3 libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev
          libcli11-dev clang-14 libclang-rt-14-dev libyang-tools
          help2man dpkg-dev file pkgconf abigail-tools lintian   # man page, packages, install check
          libcpp-httplib-dev libcrypt-dev curl openssl wrk)      # the RESTCONF server and its tests

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
optional=()
if [ "$job" = bench ]; then
  for p in libyang2-dev valgrind; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
      optional+=("$p")
    fi
  done
fi
[ ${#missing[@]} -eq 0 ] && [ ${#optional[@]} -eq 0 ] && exit 0

sudo=()
if [ "$(id -u)" -ne 0 ]; then sudo=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  "${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi
if [ ${#optional[@]} -gt 0 ]; then
  echo "setup: installing the optional ${optional[*]}"
  "${sudo[@]}" apt-get install -y --no-install-recommends "${optional[@]}" ||
    echo "setup: ${optional[*]} not installed; the benchmarks run without them"
fi
