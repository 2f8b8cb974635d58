#!/bin/bash
# What a user of a Wayland desktop sees of the offer to install the key-tap
# service, on a terminal; a folder stands in for the system's root.
#
#     offer_service.sh <repository> <build folder>
set -euo pipefail
repository=$1 build=$2
root=$(mktemp -d)
trap 'rm -rf "$root" "$build/install_manifest_tapd.txt"' EXIT

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

offer="
    . '$repository/Packaging/packages/install.sh'
    . '$repository/Packaging/tapd/offer.sh'
    as_administrator() { \"\$@\"; }
    install_packages() { :; }
    offer_tap_service '$build' '$root'"

# answering <answer>: the offer on a terminal of its own.
answering() {
    script -qec "WAYLAND_DISPLAY=wayland-1 bash -c \"$(sed 's/["$]/\\&/g' <<<"$offer")\"" /dev/null <<<"$1" | tr -d '\r'
}

placed() { (cd "$root" && find . ! -type d -printf '/%P\n' | LC_ALL=C sort); }

# On X11 there is no need for it.
said=$(WAYLAND_DISPLAY='' bash -c "$offer")
[ -z "$said" ] || fail "Offered on X11:" "$said"

said=$(answering n)
grep -q "It is not installed" <<<"$said" || fail "No is not understood:" "$said"
[ -z "$(placed)" ] || fail "Installed against the user's will:" "$(placed)"

said=$(WAYLAND_DISPLAY=wayland-1 bash -c "$offer" </dev/null)
grep -q "It is not installed" <<<"$said" || fail "Nobody was there to ask:" "$said"
[ -z "$(placed)" ] || fail "Installed without asking:" "$(placed)"

said=$(answering y)
announced=$(sed -n 's|^    /|/|p' <<<"$said")
grep -q /usr/libexec/quillmere-tapd <<<"$announced" || fail "The service itself is not announced:" "$said"
[ "$(placed)" = "$announced" ] || fail "Placed:" "$(placed)" "but announced:" "$announced"
[ -x "$root/usr/libexec/quillmere-tapd" ] || fail "The service cannot be started."
grep -q "Exec=/usr/libexec/quillmere-tapd" "$root/usr/share/dbus-1/system-services/org.quillmere.KeyTap1.service" ||
    fail "The bus would start something else."

said=$(WAYLAND_DISPLAY=wayland-1 bash -c "$offer" </dev/null)
[ -z "$said" ] || fail "Offered again:" "$said"
