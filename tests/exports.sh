#!/usr/bin/env bash
# Compares what a shared library exports with the lists of what it should: exports.sh OBJDUMP LIBRARY LIST...
# An ELF library also exports weak names (of inlined code) and names of the linker and of the sanitizers, which are left
# out. Its FILE is called _IO_FILE.
set -euo pipefail

case $2 in
    *.dll) "$1" -p "$2" | sed -n '/^\[Ordinal\/Name Pointer\]/,/^$/s/^\t\[.*\] //p' ;;
    *) "$1" -T "$2" | sed -n "/\*UND\*/d; /^[0-9a-f]* *[wu]/d; s/^[0-9a-f]\{8,\} .* //p" ;;
esac | c++filt | sed 's/\b_IO_FILE\b/_iobuf/g' |
    grep -vE '^(vtable |VTT |typeinfo |_edata$|_end$|__bss_start$|__(start|stop)___sancov_)' | LC_ALL=C sort -u |
    diff <(LC_ALL=C sort "${@:3}") - && echo "as listed"
