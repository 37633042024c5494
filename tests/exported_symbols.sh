#!/bin/sh
# Fails unless create_object is the one symbol that LIBRARY exports: exported_symbols.sh LIBRARY
set -eu

case "$(uname -s)" in
Darwin) exported=$(nm -gU "$1" | awk '{ print $3 }') expected=_create_object ;;
*) exported=$(nm -D --defined-only "$1" | awk '{ print $3 }') expected=create_object ;;
esac
if [ "$exported" != "$expected" ]; then
    printf 'exported symbols of %s:\n%s\nexpected: %s\n' "$1" "$exported" "$expected" >&2
    exit 1
fi
