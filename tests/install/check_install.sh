#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks the installed layout: both
# programs in bin, their text bundles in share/kelvo (where they look from bin), a desktop
# entry that desktop-file-validate accepts, and the icon it names.
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
fail() { echo "FAIL: $*" >&2; exit 1; }
for program in kelvo kelvo-menubar; do
  [ -x "$prefix/bin/$program" ] || fail "$program missing from $prefix/bin"
done
for bundle in Kelvo_KelvoKit Kelvo_KelvoMenuBar; do
  for language in en es; do
    [ -s "$prefix/share/kelvo/$bundle.bundle/$language.json" ] || fail "$bundle.bundle/$language.json missing from share/kelvo"
  done
done
entry=$(find "$prefix/share/applications" -name '*.desktop')
[ -n "$entry" ] || fail "no desktop entry"
desktop-file-validate "$entry" || fail "desktop entry invalid"
icon=$(sed -n 's/^Icon=//p' "$entry")
[ -s "$prefix/share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "icon $icon not installed"
# The installed tool runs, with the texts of its own prefix: a marked text shows.
sed -i 's/"cli.command.unknown": "[^"]*"/"cli.command.unknown": "MARKED %s"/' "$prefix/share/kelvo/Kelvo_KelvoKit.bundle/en.json"
out=$(LANG=C HOME="$prefix" "$prefix/bin/kelvo" help bogus 2>&1) && fail "help of an unknown command succeeded"
[ "$out" = "MARKED bogus" ] || fail "installed kelvo did not read its own texts: $out"
echo "installed layout ok under $prefix"
