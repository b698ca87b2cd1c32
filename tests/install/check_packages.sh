#!/usr/bin/env bash
# Makes the Debian packages of a built tree with CPack, unpacks them into a scratch root
# (dpkg -x) and checks them: every file where Debian expects it and in the right package,
# nothing outside /usr, versions and dependencies, a desktop entry and AppStream metadata
# that validate, a manual page with every command, and a tool that runs from the scratch
# root and whose bash completion offers commands, families and ids.
set -euo pipefail
# Readers in pipelines read to the end (no grep -q, no head): with pipefail, a writer cut
# off early by SIGPIPE would fail the check at random.
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
export HOME=$work/home PATH=/usr/bin:/bin LANG=C
mkdir -p "$HOME"

cpack --config "$build/CPackConfig.cmake" -B "$work/packages" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail "cpack failed"; }
tool=$(find "$work/packages" -maxdepth 1 -name 'kelvo_*.deb')
app=$(find "$work/packages" -maxdepth 1 -name 'kelvo-menubar_*.deb')
[ -f "$tool" ] && [ -f "$app" ] || fail "packages missing: $(ls "$work/packages")"

version=$(dpkg-deb -f "$tool" Version)
[ "$version" = "$(dpkg-deb -f "$app" Version)" ] || fail "the two packages differ in version"
dpkg-deb -f "$app" Depends | grep -F "kelvo (= $version)" >/dev/null || fail "kelvo-menubar does not need kelvo $version"
for deb in "$tool" "$app"; do
  dpkg-deb -f "$deb" Depends | grep 'libc6 (>=' >/dev/null || fail "$(basename "$deb"): no shared-library dependencies"
  outside=$(dpkg-deb -c "$deb" | awk '{print $6}' | grep -v '^\./usr/' | grep -vx '\./' || true)
  [ -z "$outside" ] || fail "$(basename "$deb") installs outside /usr: $outside"
  dpkg -x "$deb" "$work/root"
done

root=$work/root
# holds PACKAGE PATH...: the package has these files, not empty once unpacked.
holds() {
  local deb=$tool listing
  [ "$1" = kelvo-menubar ] && deb=$app
  listing=$(dpkg-deb -c "$deb" | awk '{print $6}')
  for path in "${@:2}"; do
    grep -x "\./$path" <<<"$listing" >/dev/null || fail "$path not in $1"
    [ -s "$root/$path" ] || fail "$path is empty"
  done
}
for package in kelvo kelvo-menubar; do
  holds $package usr/bin/$package usr/share/man/man1/$package.1.gz usr/share/doc/$package/{copyright,changelog.gz}
done
holds kelvo usr/share/kelvo/Kelvo_KelvoKit.bundle/{en,es}.json usr/share/bash-completion/completions/kelvo \
  usr/share/zsh/vendor-completions/_kelvo usr/share/fish/vendor_completions.d/kelvo.fish
holds kelvo-menubar usr/share/kelvo/Kelvo_KelvoMenuBar.bundle/{en,es}.json \
  usr/share/{applications/dev.kelvo.KelvoMenuBar.desktop,icons/hicolor/scalable/apps/dev.kelvo.KelvoMenuBar.svg} \
  usr/share/metainfo/dev.kelvo.KelvoMenuBar.metainfo.xml

desktop-file-validate "$root/usr/share/applications/dev.kelvo.KelvoMenuBar.desktop" || fail "desktop entry invalid"
appstreamcli validate --no-net "$root/usr/share/metainfo/dev.kelvo.KelvoMenuBar.metainfo.xml" >"$work/appstream.log" 2>&1 ||
  { cat "$work/appstream.log"; fail "AppStream metadata invalid"; }
zcat "$root/usr/share/doc/kelvo/changelog.gz" | sed -n 1p | grep -F "kelvo ($version)" >/dev/null || fail "changelog is not of $version"

# That the tool reads the texts of its own prefix, check_install.sh checks.
kelvo=$root/usr/bin/kelvo
"$kelvo" --version | grep -x "kelvo $version" >/dev/null || fail "kelvo --version is not $version"

commands=$("$kelvo" __complete commands)
manual=$(zcat "$root/usr/share/man/man1/kelvo.1.gz")
for command in $commands; do
  grep -q "^\.SS \"kelvo $command" <<<"$manual" || fail "the manual page leaves out $command"
done

# bash completion of the unpacked tool, as bash-completion would run it.
complete_words() {
  bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kelvo; printf "%s\n" "${COMPREPLY[@]}"' \
    _ "$root/usr/share/bash-completion/completions/kelvo" "$kelvo" "$@"
}
while IFS='|' read -r line expected; do
  read -ra words <<<"$line"
  [ "${line: -1}" = " " ] && words+=("")
  complete_words "${words[@]}" | grep -x -- "$expected" >/dev/null || fail "completing 'kelvo $line' does not offer $expected"
done <<'CASES'
 |scan
 |--catalog
prepare |clean
prepare clean --|--dry-run
clean --id per-|per-project-node_modules
--catalog linux clean --id |pip-cache
scan --family py|python
help |size
CASES
# The installed tool schedules itself, by its installed path (no user manager runs here).
env -u XDG_RUNTIME_DIR "$kelvo" schedule weekly >/dev/null || fail "kelvo schedule weekly failed"
grep -x "ExecStart=$kelvo scan --quiet --notify-above 5368709120" "$HOME/.config/systemd/user/kelvo-scan.service" \
  >/dev/null || fail "the scheduled scan does not run the installed program"
echo "packages ok: $(cd "$work/packages" && ls ./*.deb | xargs -n1 basename | tr '\n' ' ')"
