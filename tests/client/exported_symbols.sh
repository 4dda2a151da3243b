#!/bin/sh
# Compares what the built plug-in exports with the checked-in list.
#
#     exported_symbols.sh LIBRARY LIST
#
# After a deliberate change of the exported functions and classes, write the list anew and read
# the difference before committing it:
#
#     tests/client/exported_symbols.sh build/release/lib/libqvr_touch.so - \
#         > tests/client/exported_symbols.txt
#
# Weak symbols (tables and type names of classes without a source file of their own) are left
# out: whether they are needed depends on the compiler and its optimisation.
set -eu

exported() {
    nm -D --defined-only --format=posix "$1" | awk '$2 !~ /[VWuvw]/ { print $1 }' | LC_ALL=C sort -u
}

if [ "$2" = - ]; then
    exported "$1"
    exit
fi
found=$(mktemp)
trap 'rm -f "$found"' EXIT
exported "$1" > "$found"
if ! diff -u "$2" "$found"; then
    echo "the plug-in exports other symbols than $2 lists (- is gone, + is new)" >&2
    exit 1
fi
