#!/bin/sh
# Builds the bundle once more, from a copy of the sources in another folder with nothing compiled
# before, the C++ runtime included, and compares both to the byte.
#
#     clean_build.sh SOURCE BUNDLE WORK
set -eu
source=$1
bundle=$2
work=$3

rm -rf "$work"
mkdir -p "$work/build/macos-tools"
cd "$source"
git ls-files --cached --others --exclude-standard | tar -cf - -T - | tar -xf - -C "$work"
for tool in zig sdk packages complete; do
    ln -s "$source/build/macos-tools/$tool" "$work/build/macos-tools/$tool"
done
(cd "$work" && ./dev macos)

for file in Info.plist MacOS/qvr_touch; do
    cmp "$bundle/Contents/$file" "$work/build/macos-cross/lib/qvr_touch.bundle/Contents/$file"
done
rm -rf "$work"
