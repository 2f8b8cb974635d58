#!/bin/bash
# Makes a built Quillmere.app fit for other people's Macs: puts Qt into it, signs
# it for the hardened runtime and has the signature notarised.
#
#     Packaging/mac/sign.sh build/release/bin/Quillmere.app
#
# The environment says with what:
#     QUILLMERE_SIGNING_IDENTITY   "Developer ID Application: …", as the keychain has it
#     QUILLMERE_NOTARY_PROFILE     of `xcrun notarytool store-credentials`; without
#                                  one the application is signed only
# It runs outside of the sandbox, which has no keyboard taps, and needs no
# entitlement.
set -euo pipefail

app=${1:?usage: sign.sh Quillmere.app}
: "${QUILLMERE_SIGNING_IDENTITY:?is not set: the identity to sign with}"
[ -d "$app/Contents/MacOS" ] || { echo "$app is no application" >&2; exit 1; }

sign() {
    codesign --force --options runtime --timestamp --sign "$QUILLMERE_SIGNING_IDENTITY" "$@"
}

# The network's plug-in is loaded by name, so nothing else tells of it.
plugins=()
for plugin in "$app"/Contents/PlugIns/feednetwork.*; do plugins+=("-executable=$plugin"); done
macdeployqt "$app" "${plugins[@]}"

# From the inside out: a signature covers those of what it contains.
find "$app/Contents" -type f \( -name '*.dylib' -o -name '*.so' \) -print0 |
    while IFS= read -r -d '' library; do sign "$library"; done
for framework in "$app"/Contents/Frameworks/*.framework; do
    if [ -d "$framework" ]; then sign "$framework"; fi
done
sign "$app"
codesign --verify --deep --strict "$app"

[ -n "${QUILLMERE_NOTARY_PROFILE:-}" ] || exit 0
archive=$(mktemp -d)/Quillmere.zip
trap 'rm -rf "$(dirname "$archive")"' EXIT
ditto -c -k --keepParent "$app" "$archive"
xcrun notarytool submit "$archive" --keychain-profile "$QUILLMERE_NOTARY_PROFILE" --wait
xcrun stapler staple "$app"
