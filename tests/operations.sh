#!/bin/sh
# Fails unless two headers declare the same virtual operations in the same order, which hosts call by
# their place in the table: operations.sh HEADER HEADER
set -eu

# Name and types of each operation, a line each; the names of parameters may differ.
operations() {
    tr -s ' \n' ' ' <"$1" | grep -oE 'virtual [A-Za-z]+ pub_[a-z_]+\([^)]*\)' |
        sed -e 's/\([ *]\)[a-z_]*\([,)]\)/\1\2/g' -e 's/( */(/'
}

[ "$(operations "$1" | wc -l)" -eq 18 ] || {
    echo "$1 does not declare 18 operations:" >&2
    operations "$1" >&2
    exit 1
}
first=$(operations "$1") second=$(operations "$2")
if [ "$first" != "$second" ]; then
    printf '%s:\n%s\n%s:\n%s\n' "$1" "$first" "$2" "$second" >&2
    exit 1
fi
