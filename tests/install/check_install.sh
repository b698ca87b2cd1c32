#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks the installed layout: both
# programs with their text bundles beside them (where each looks first), links in bin, a
# desktop entry that desktop-file-validate accepts, and the icon it names.
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
fail() { echo "FAIL: $*" >&2; exit 1; }
libdir=$(find "$prefix" -type f -name kelvo-menubar -printf '%h\n')
[ -n "$libdir" ] || fail "kelvo-menubar not installed"
for program in kelvo kelvo-menubar; do
  [ -x "$libdir/$program" ] || fail "$program missing from $libdir"
  [ "$(readlink -f "$prefix/bin/$program")" = "$libdir/$program" ] || fail "bin/$program does not lead to $libdir/$program"
done
for bundle in Kelvo_KelvoKit Kelvo_KelvoMenuBar; do
  for language in en es; do
    [ -s "$libdir/$bundle.bundle/$language.json" ] || fail "$bundle.bundle/$language.json missing beside the programs"
  done
done
entry=$(find "$prefix/share/applications" -name '*.desktop')
[ -n "$entry" ] || fail "no desktop entry"
desktop-file-validate "$entry" || fail "desktop entry invalid"
icon=$(sed -n 's/^Icon=//p' "$entry")
[ -s "$prefix/share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "icon $icon not installed"
# The installed tool runs from its link.
out=$(LANG=C HOME="$prefix" "$prefix/bin/kelvo" config show 2>&1) || fail "installed kelvo failed: $out"
echo "installed layout ok under $prefix"
