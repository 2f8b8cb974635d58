#!/bin/bash
# Makes the disk image that people download: the application, and where to drag
# it to.
#
#     Packaging/mac/image.sh build/release/bin/Quillmere.app Quillmere.dmg
#
# With QUILLMERE_SIGNING_IDENTITY and QUILLMERE_NOTARY_PROFILE (see sign.sh) the
# image is signed and notarised too.
set -euo pipefail

app=${1:?usage: image.sh Quillmere.app Quillmere.dmg}
image=${2:?usage: image.sh Quillmere.app Quillmere.dmg}
[ -d "$app/Contents/MacOS" ] || { echo "$app is no application" >&2; exit 1; }

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp -R "$app" "$folder/"
ln -s /Applications "$folder/Applications"
rm -f "$image"
hdiutil create -volname Quillmere -srcfolder "$folder" -format UDZO -ov "$image"

[ -n "${QUILLMERE_SIGNING_IDENTITY:-}" ] || exit 0
codesign --force --timestamp --sign "$QUILLMERE_SIGNING_IDENTITY" "$image"
[ -n "${QUILLMERE_NOTARY_PROFILE:-}" ] || exit 0
xcrun notarytool submit "$image" --keychain-profile "$QUILLMERE_NOTARY_PROFILE" --wait
xcrun stapler staple "$image"
