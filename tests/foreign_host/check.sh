#!/bin/sh
# Builds the project as a packager does, installs it into an empty prefix, builds the foreign host there,
# and compares what that host and the installed artifact_host extract with what the build tree's own
# host does.
#   check.sh CMAKE GENERATOR SOURCE_DIR SCRATCH_DIR BUILT_HOST DEMO_PROGRAM [CMAKE_ARGUMENT...]
set -eu

cmake=$1 generator=$2 source_dir=$3 scratch=$4 built_host=$5 demo_program=$6
shift 6
prefix=$scratch/prefix
volume=$scratch/volume
tables=Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite
export QT_QPA_PLATFORM=minimal

fail() {
    echo "foreign_host: $*" >&2
    exit 1
}

# build SOURCE FOLDER [ARGUMENT...]
build() {
    from=$1 into=$2
    shift 2
    "$cmake" -S "$from" -B "$into" -G "$generator" "$@"
    "$cmake" --build "$into" --parallel 2
}

rm -rf "$scratch"
mkdir -p "$scratch/built" "$scratch/installed" "$scratch/foreign"

# As Debian configures a package: with this prefix libraries lie in a folder of the architecture's name,
# and the build type brings no flags of its own.
build "$source_dir" "$scratch/package" -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_BUILD_TYPE=None \
    -DBUILD_TESTING=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_UNITY_BUILD=ON "$@"
if grep -e -Werror "$scratch/package/compile_commands.json"; then
    fail "a packager's build treats warnings as errors"
fi
for part in tests demo bench fuzz; do
    [ ! -e "$scratch/package/$part" ] || fail "a packager's build has $part in it"
done
"$cmake" --install "$scratch/package" --prefix "$prefix"

build "$source_dir/tests/foreign_host" "$scratch/foreign_build" -DCMAKE_PREFIX_PATH="$prefix" "$@"
"$cmake" -E rm -rf "$scratch/package"

"$demo_program" "$volume"
# 6: complete but for what the warnings list, which is a hive whose logs are not applied.
"$built_host" extract "$volume" --result "$scratch/built" --quiet --like-the-suite >"$scratch/built.txt" ||
    [ $? -eq 6 ]
"$prefix/bin/artifact_host" extract "$volume" --result "$scratch/installed" --quiet --like-the-suite >"$scratch/installed.txt" ||
    [ $? -eq 6 ]
"$scratch/foreign_build/foreign_host" "$volume" "$scratch/foreign" >"$scratch/foreign.txt"

# Of what artifact_host prints, the counts without their total.
awk 'NF == 2 && $1 != "total" { print $1, $2 }' "$scratch/built.txt" >"$scratch/expected.txt"
[ -s "$scratch/expected.txt" ] || fail "the built host counts no table"
diff "$scratch/expected.txt" "$scratch/foreign.txt" || fail "the foreign host counts other rows"
for other in installed foreign; do
    cmp "$scratch/built/$tables" "$scratch/$other/$tables" || fail "the $other host's tables differ"
done
