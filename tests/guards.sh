#!/usr/bin/env bash
# Checks that a shared library was built with what keeps an overrun from doing more harm: guards.sh OBJDUMP LIBRARY
# A row of the table has the format, the expression to find in objdump's report, and what is wrong without it.
set -euo pipefail

[[ $2 = *.dll ]] && format=dll || format=elf
options=$([ $format = dll ] || echo -T)
report=$("$1" -p -d $options "$2" | sed '/>:$/{N; s/\n//}') # a function's label and first instruction on one line
while read -r system expression fault; do
    [ "$system" != $format ] || grep -qE "$expression" <<<"$report" || { echo "$fault" >&2; exit 1; }
done <<'TABLE'
dll DYNAMIC_BASE                   it is always loaded at the same address
dll NX_COMPAT                      its data can be executed
dll call.*__stack_chk_fail         return addresses are not guarded
elf ^\s*RELRO                      tables of addresses stay writable
elf ^\s*FLAGS\s+0x0*8$             addresses are bound when first used, and stay writable until then
elf __stack_chk_fail               return addresses are not guarded
elf __[a-z]+_chk\b                 library calls are not checked against the size of their target
elf CTarvexDib6CreateEiii>:.*endbr calls can lead into the middle of a function
elf or[lq]\s+\$0x0,\(%[re]sp\)     a large frame can leap over the guard page of the stack
TABLE
echo "guarded"
