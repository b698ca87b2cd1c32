#!/usr/bin/env bash
# Installs the build into a temporary prefix: the tool there reads the texts of its own
# prefix, and the icon the desktop entry names is installed. What each package holds, and
# that the entry validates, check_packages.sh checks on the same install rules.
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
fail() { echo "FAIL: $*" >&2; exit 1; }
icon=$(sed -n 's/^Icon=//p' "$prefix"/share/applications/*.desktop)
[ -s "$prefix/share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "icon '$icon' not installed"
# A marked text shows.
sed -i 's/"cli.command.unknown": "[^"]*"/"cli.command.unknown": "MARKED %s"/' "$prefix/share/kelvo/Kelvo_KelvoKit.bundle/en.json"
out=$(LANG=C HOME="$prefix" "$prefix/bin/kelvo" help bogus 2>&1) && fail "help of an unknown command succeeded"
[ "$out" = "MARKED bogus" ] || fail "installed kelvo did not read its own texts: $out"
echo "installed layout ok under $prefix"
