#!/usr/bin/env bash
# The bash completion of zanfe against a built zanfe: each case is a command line typed up
# to the cursor and the words the completion must offer (all of them, in any order) as bash
# would show them, that is with what stands before bash's last word break in front.
#   test_completion.sh COMPLETION_SCRIPT ZANFE
set -uo pipefail
script=$1 zanfe=$2
source "$script"
failures=0

complete_line() {   # LINE: the candidates, one per line, sorted
    COMP_LINE=$1 COMP_POINT=${#1}
    local word=${1##*[ =:]}
    COMP_WORDS=(zanfe "$word") COMP_CWORD=1
    COMPREPLY=()
    _zanfe
    local keep=${1%"$word"}
    keep=${keep##* }
    [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]/#/$keep}" | sort
}

check() {   # LINE EXPECTED...
    local line="$zanfe $1"; shift
    local got want
    got=$(complete_line "$line")
    want=$([ $# -eq 0 ] || printf '%s\n' "$@" | sort)
    if [ "$got" != "$want" ]; then
        echo "FAIL: '$line'"; echo "  want: $(echo $want)"; echo "  got:  $(echo $got)"
        failures=$((failures + 1))
    fi
}

# Commands and options, from zanfe --help.
check "res" resolve
check "ty" type types
check "get --with" --with-state
check "--tr" --trace
check "ls --a" --all
check "get --" --json --with-state --attrs --values --format --help --version --trace --lib --db --fail
check "tables --j"
# Path segments and key names, from zanfe ls.
check "ls vrf[vrf_key_vrf_name=red]/vrf_a" "vrf[vrf_key_vrf_name=red]/vrf_afi"
check "get ntp_peer_serv" ntp_peer_server
check "get ntp_peer_server[pe" "ntp_peer_server[peer_server_key="
check "key vrf[vrf_k" "vrf[vrf_key_vrf_name="
check "get nothing_like_this"
# A command takes one path: nothing after it.
check "get ntp_peer_server x"
# Table and type names.
check "columns tbl_ntp_peer_e" tbl_ntp_peer_eol
check "type ntp_peer_cp_c" ntp_peer_cp_cp ntp_peer_cp_cp_1_cp
# Values of options are not guessed.
check "resolve --kind "
check "get --attrs a,b ntp_peer_serv" ntp_peer_server
check "--lib x get ntp_peer_serv"
exit $((failures > 0))
