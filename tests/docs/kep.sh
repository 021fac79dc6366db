#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# kep.sh SOURCE: what ./kep would do, and the one line that it says when it cannot. Nothing is built.
set -eu
. "$(dirname "$0")/check.sh"
kep=$1/kep
unset KEP_BUILD_DIR KEP_DRY_RUN

# fake NAME BODY: a program that stands before the machine's own.
mkdir "$work/bin"
fake() {
    printf '#!/bin/sh\n%s\n' "$2" >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}
fake dpkg-query 'echo installed'
export PATH="$work/bin:$PATH"

# --- A mistake is named, with the closest word
expect_status 2 "$kep" tset
expect_lines errors 1
expect errors 'no command "tset"; did you mean "test"?'
expect_status 2 "$kep" foo
expect_lines errors 1
expect errors 'no command "foo" '
expect_status 2 "$kep" -n build relase
expect errors 'no preset "relase"; did you mean "release"?'
expect_status 0 "$kep" help
expect out 'test \[NAME-FILTER\] \[--preset PRESET\]'

# --- Tests by name and preset
expect_status 0 "$kep" -n test Routing --preset asan --repeat until-pass:2
expect out '^ctest .*/asan .*-R Routing --repeat until-pass:2$'
expect_status 0 "$kep" -n docs
expect out '^ninja .* docs manpages$'
expect_status 0 "$kep" -n run
expect_lines out 3
expect out '^ninja .* kepctl$'

# --- Another build folder, relative to the caller
cd "$work"
expect_status 0 "$kep" -n --build-dir "else where" build debug
expect out "cmake --preset debug -B $work/else where/debug$"
KEP_BUILD_DIR=$work/there expect_status 0 "$kep" -n build debug
expect out "$work/there/debug$"

# --- A folder that cannot be written
expect_status 1 "$kep" --build-dir /dev/null/build build
expect_lines errors 1
expect errors 'cannot write to /dev/null/build/release; name another folder: KEP_BUILD_DIR='

# --- A build tree that belongs to another place
mkdir -p build/release other
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$work/other" >build/release/CMakeCache.txt
touch other/CMakeLists.txt
expect_status 1 "$kep" --build-dir build build
expect_lines errors 1
expect errors "was made for $work/other; name another folder"

# --- Missing packages: installed, or the line to type
fake dpkg-query 'case $* in *ninja*) exit 1 ;; *) echo installed ;; esac'
fake id 'echo 0'
expect_status 0 "$kep" -n setup
expect out '^apt-get update && apt-get install --no-install-recommends ninja-build$'
fake id 'echo 1000'
fake sudo 'exit 1'
expect_status 1 "$kep" setup
expect_lines errors 1
expect errors 'type: sudo apt-get update && sudo apt-get install --no-install-recommends ninja-build$'

# --- Progress while they are installed; what apt-get says when it fails
fake id 'echo 0'
# shellcheck disable=SC2016 # the fake program expands it
fake apt-get 'case $1 in update) exit ;; esac
echo "0 upgraded, 2 newly installed, 0 to remove and 0 not upgraded."
for package in a b; do echo "Get:1 http://there $package"; done
for package in a b; do echo "Unpacking $package"; echo "Setting up $package"; done'
expect_status 0 "$kep" setup
expect errors '50 % of 2 packages downloaded'
expect errors '100 % of 2 packages installed'
fake apt-get 'echo "E: Could not get lock"; exit 100'
expect_status 1 "$kep" setup
expect errors 'E: Could not get lock'
expect errors 'apt-get failed, see above; to try by hand: apt-get update'
