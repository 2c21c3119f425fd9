#!/usr/bin/env bash
# The library exports exactly the functions the header declares and the eight
# data symbols of the bridge state; it has its SONAME, no link to libjvm, and
# stays mapped once loaded (threads it attached are detached by its code when
# they end, and the runtime keeps its native method).
set -euo pipefail
header=$1 library=$2
declared=$( (grep -oE 'velmora_[A-Za-z0-9_]+\s*\(' "$header" | sed 's/\s*(//';
             printf '%s\n' jvm env cls sgc pwcls pwobj jvmlibHandle velmora_peach_intermediate_callback_fun) | sort -u)
exported=$(nm -D --defined-only "$library" | awk '$2 != "A" {print $3}' | sed 's/@.*//' | sort -u)
if [ "$declared" != "$exported" ]; then
  diff <(echo "$declared") <(echo "$exported") | sed 's/^</declared, not exported:/; s/^>/exported, not declared:/'
  exit 1
fi
readelf -d "$library" | grep -q 'Library soname: \[libvelmora.so.1\]' || { echo "SONAME is not libvelmora.so.1"; exit 1; }
if readelf -d "$library" | grep NEEDED | grep -q jvm; then echo "links libjvm"; exit 1; fi
readelf -d "$library" | grep -q 'Flags: .*NODELETE' || { echo "not linked with -z nodelete"; exit 1; }
nm -D -S --defined-only "$library" |
  awk '($3 == "B" || $3 == "D") && $2 !~ /^0*8$/ {print $4 " is 0x" $2 " bytes"; bad = 1} END {exit bad}'
echo "exports: $(echo "$exported" | wc -l) symbols as declared"
