#!/usr/bin/env bash
# Checks that an installed zanfe is complete and usable, from a configured and built tree:
#   tests/install/check.sh BUILD_DIR            every check below
#   tests/install/check.sh BUILD_DIR abi        the ABI guard only
#   tests/install/check.sh BUILD_DIR update-abi rewrite the ABI records from this build
#
#  1. ABI guard: the names libzanfe.so exports against abi/libzanfe1.symbols (Debian's
#     format, dpkg-gensymbols -c4: a name more or less fails), and every type and function
#     declaration of the C interface headers against abi/interface.abi (abidiff). A change
#     that is meant updates the records in the same commit (update-abi).
#  2. cmake --install into a temporary prefix: each library's SONAME, libzanfe.so needing
#     nothing of ours, the installed zanfe, its man page and its bash completion.
#  3. The consumer project in this folder, built out of tree once through the installed CMake
#     package and once through the pkg-config files; both must print the row exactly as the
#     installed zanfe renders it.
#  4. cpack -G DEB: the three packages' contents (dpkg-deb -c), their dependencies, lintian.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
src=$(cd "$here/../.." && pwd)
build=$(cd "${1:?usage: check.sh BUILD_DIR [abi|update-abi]}" && pwd)
mode=${2:-all}
fe=$build/frame/libzanfe.so
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "install check: $*" >&2; exit 1; }
step() { echo "install check: $*" >&2; }

headers=("$src/frame/zan_fe.h" "$src/frame/data_objects.h" "$src/frame/traversal.h"
         "$src/frame/leaf_conversions.h" "$src/platform/include/zan/leaf.h")
version=$(sed -n 's/^project(zanfe VERSION \([0-9.]*\).*/\1/p' "$src/CMakeLists.txt")

# ---------------------------------------------------------------- 1. ABI guard
abi() {
  mkdir -p "$work/gensymbols/debian"
  printf 'Source: zanfe\n\nPackage: libzanfe1\nArchitecture: any\n' > "$work/gensymbols/debian/control"
  python3 "$here/abi_probe.py" "${headers[@]}" > "$work/probe.c"
  cc -g -O0 -shared -fPIC -I"$src/frame" -I"$src/platform/include/zan" -o "$work/probe.so" "$work/probe.c"
  abidw --no-corpus-path --no-comp-dir-path --no-show-locs "$work/probe.so" > "$work/interface.abi"
  if [ "$1" = update ]; then
    (cd "$work/gensymbols" && dpkg-gensymbols -plibzanfe1 -v"$version" -e"$(readlink -f "$fe")" \
       -O"$here/abi/libzanfe1.symbols" -q)
    cp "$work/interface.abi" "$here/abi/interface.abi"
    step "ABI records rewritten: $(grep -c '@Base' "$here/abi/libzanfe1.symbols") exported names"
    return
  fi
  (cd "$work/gensymbols" && dpkg-gensymbols -plibzanfe1 -v"$version" -e"$(readlink -f "$fe")" \
     -I"$here/abi/libzanfe1.symbols" -O"$work/symbols" -c4) ||
    fail "libzanfe.so exports other names than tests/install/abi/libzanfe1.symbols (see the diff above;" \
         "if meant: tests/install/check.sh BUILD_DIR update-abi)"
  abidiff --no-show-locs "$here/abi/interface.abi" "$work/interface.abi" ||
    fail "the C interface's types changed against tests/install/abi/interface.abi (see above;" \
         "if meant: tests/install/check.sh BUILD_DIR update-abi)"
  step "ABI: $(grep -c '@Base' "$here/abi/libzanfe1.symbols") exported names and the interface types unchanged"
}
case "$mode" in
  abi) abi check; exit ;;
  update-abi) abi update; exit ;;
  all) abi check ;;
  *) fail "unknown mode '$mode' (want abi or update-abi)" ;;
esac

# ---------------------------------------------------------------- 2. install
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" > /dev/null
libdir=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build/CMakeCache.txt")
for lib in zanfe zanplatform zanconfig; do
  so=$prefix/$libdir/lib$lib.so.1
  [ -e "$prefix/$libdir/lib$lib.so" ] || fail "no development link lib$lib.so"
  readelf -d "$so" | grep -q "(SONAME).*\[lib$lib.so.1\]" || fail "lib$lib.so.1 has no SONAME lib$lib.so.1"
done
[ -e "$prefix/$libdir/libzanengine.a" ] || fail "no libzanengine.a"
if readelf -d "$prefix/$libdir/libzanfe.so.1" | grep "(NEEDED)" | grep -q "libzan"; then
  fail "libzanfe.so.1 needs a library of ours"
fi
for h in zan_fe.h data_objects.h traversal.h leaf_conversions.h leaf.h platform.hpp database.hpp config.hpp engine.hpp; do
  [ -e "$prefix/include/zan/$h" ] || fail "header zan/$h not installed"
done
zanfe=$prefix/bin/zanfe
path='ntp_peer_server[peer_server_key=10.0.0.1]'
expected=$(env -u ZANFE_LIBRARY "$zanfe" get "$path")
[ "$(env -u ZANFE_LIBRARY "$zanfe" --version)" = "zanfe $version" ] || fail "zanfe --version"
[ -s "$prefix/share/man/man1/zanfe.1.gz" ] || fail "no man page"
# The completion asks the installed zanfe; bash splits the word at '=' and keeps what
# stands before the break, so the reply is the rest.
line="$zanfe ls vrf[vrf_key_vrf_name=red]/vrf_a"
reply=$(COMP_LINE=$line bash -c 'source "$1"; COMP_POINT=${#COMP_LINE}; COMP_WORDS=(zanfe "red]/vrf_a");
  COMP_CWORD=1; _zanfe; printf "%s\n" "${COMPREPLY[@]}"' _ "$prefix/share/bash-completion/completions/zanfe")
[ "$reply" = "red]/vrf_afi" ] || fail "completion of vrf[vrf_key_vrf_name=red]/vrf_a gave '$reply'"
step "installed: SONAMEs, headers, zanfe, man page, completion"

# ---------------------------------------------------------------- 3. consumers
cmake -S "$here" -B "$work/by-cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build "$work/by-cmake" > /dev/null
[ "$("$work/by-cmake/consumer")" = "$expected" ] || fail "the consumer built through the CMake package renders otherwise"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
# shellcheck disable=SC2046
c++ -std=c++20 -o "$work/by-pkg-config" "$here/consumer.cpp" $(pkg-config --cflags --libs zanengine zanconfig) \
  -Wl,-rpath,"$(pkg-config --variable=libdir zanfe)"
[ "$("$work/by-pkg-config" "$(pkg-config --variable=soname zanfe)")" = "$expected" ] ||
  fail "the consumer built through pkg-config renders otherwise"
step "consumers through find_package(zanfe CONFIG) and pkg-config render the row as zanfe does"

# ---------------------------------------------------------------- 4. Debian packages
(cd "$build" && cpack -G DEB > /dev/null)
deb() { echo "$build/packages/$1_${version}-1_$(dpkg --print-architecture).deb"; }
contents() {   # PACKAGE FILE...: each file is in the package
  local list; list=$(dpkg-deb -c "$(deb "$1")" | awk '{print $6}')
  local pkg=$1; shift
  for f in "$@"; do grep -qx "./usr/$f" <<<"$list" || fail "package $pkg lacks /usr/$f"; done
}
contents libzanfe1 "$libdir/libzanfe.so.1" "$libdir/libzanfe.so.1.$(cut -d. -f2- <<<"$version")"
contents libzanfe-dev include/zan/zan_fe.h include/zan/engine.hpp "$libdir/libzanfe.so" "$libdir/libzanengine.a" \
  "$libdir/cmake/zanfe/zanfeConfig.cmake" "$libdir/pkgconfig/zanfe.pc"
contents zanfe bin/zanfe bin/zanfe-restconf "$libdir/libzanplatform.so.1" share/man/man1/zanfe.1.gz share/bash-completion/completions/zanfe \
  "share/yang/modules/zanfe/$(basename "$(ls "$build"/generated/yang/zan-config@*.yang)")" \
  share/yang/modules/zanfe/ietf-netconf-acm@2012-02-22.yang
[ "$(dpkg-deb -c "$(deb libzanfe1)" | grep -c '\.so')" = 2 ] || fail "libzanfe1 holds more than the library"
dpkg-deb -f "$(deb zanfe)" Depends | grep -q "libstdc++6" || fail "zanfe's dependencies lack what dpkg-shlibdeps finds"
dpkg-deb -f "$(deb libzanfe-dev)" Depends | grep -q "libzanfe1 (= $version-1)" || fail "libzanfe-dev does not depend on libzanfe1"
if command -v lintian > /dev/null; then
  # Findings we accept, each explained in README.md ("Packages").
  lintian --suppress-tags no-copyright-file,no-changelog,package-name-doesnt-match-sonames,maintscript-calls-ldconfig \
    --fail-on error "$build"/packages/*.deb || fail "lintian found errors in the packages"
fi
step "packages: $(cd "$build/packages" && ls ./*.deb | tr '\n' ' ')"
