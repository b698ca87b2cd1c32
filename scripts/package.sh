#!/usr/bin/env bash
# Builds the Debian packages kelvo (the tool) and kelvo-menubar (the tray application) into
# build/packages/ with CPack, then checks them: lintian (an error fails the build; its
# report is printed), desktop-file-validate and appstreamcli. Install them with
#     sudo apt install ./build/packages/*.deb
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KELVO_BUILD_DIR:-$root/build}
packages=$build/packages
"$root/scripts/install-deps.sh" lintian
"$root/scripts/build.sh"

rm -rf "$packages"
cpack --config "$build/CPackConfig.cmake" -B "$packages" >/dev/null
# CPack's staging tree is no part of the result.
rm -rf "$packages/_CPack_Packages"

check=$(mktemp -d)
trap 'rm -rf "$check"' EXIT
for deb in "$packages"/*.deb; do dpkg -x "$deb" "$check"; done
desktop-file-validate "$check"/usr/share/applications/*.desktop
appstreamcli validate --no-net "$check"/usr/share/metainfo/*.metainfo.xml
echo "lintian:"
lintian --fail-on error --display-info "$packages"/*.deb
ls -1 "$packages"/*.deb
