#!/usr/bin/env bash
# Checks that a shared library was built with what stops an overrun from becoming more: guards.sh OBJDUMP LIBRARY
set -euo pipefail

demand() {
    grep -qE "$1" <<<"$report" || { echo "$2" >&2; exit 1; }
}

case $2 in
    *.dll)
        report=$("$1" -p "$2")
        demand DYNAMIC_BASE "always loaded at the same address"
        demand NX_COMPAT "its data can be executed"
        report=$("$1" -d "$2")
        demand 'call.*__stack_chk_fail' "return addresses are not guarded"
        ;;
    *)
        report=$("$1" -p -T "$2")
        demand '^ *RELRO' "tables of addresses stay writable"
        demand '^ *FLAGS +0x0*8$' "addresses are bound when first used, and stay writable till then"
        demand __stack_chk_fail "return addresses are not guarded"
        demand '__[a-z]+_chk\b' "library calls are not checked against the size of their target"
        report=$("$1" -d --disassemble=_ZN10CTarvexDib6CreateEiii "$2")
        demand 'endbr(64|32)' "calls can lead into the middle of a function"
        report=$("$1" -d "$2")
        demand 'or[lq] +\$0x0,\(%[re]sp\)' "large frames can leap over the page behind the stack"
        ;;
esac
echo "guarded"
