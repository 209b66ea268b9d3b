#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those not yet installed.
set -euo pipefail

packages=(cmake ninja-build g++ python3 libgtest-dev libgmock-dev libbenchmark-dev nlohmann-json3-dev
          clang-14 libclang-rt-14-dev)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=()
if [ "$(id -u)" -ne 0 ]; then sudo=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update
"${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
