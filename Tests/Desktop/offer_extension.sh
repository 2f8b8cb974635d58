#!/bin/bash
# What a GNOME user sees of the offer to add the extension, on a terminal; a
# played installer says how things are.
#
#     offer_extension.sh <repository>
set -euo pipefail
repository=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

# The installer: says what the file "is" holds, and notes what it was told.
cat >"$folder/installer" <<'INSTALLER'
#!/bin/bash
folder=$(dirname "$0")
if [ "$1" = state ]; then cat "$folder/is"; else echo "$1" >>"$folder/told"; fi
INSTALLER
chmod +x "$folder/installer"

offer=". '$repository/Packaging/gnome/offer.sh'; offer_gnome_extension '$folder/installer'"

# answering <state> <answer>: the offer on a terminal of its own.
answering() {
    echo "$1" >"$folder/is"
    : >"$folder/told"
    script -qec "bash -c \"$(sed 's/["$]/\\&/g' <<<"$offer")\"" /dev/null <<<"$2" | tr -d '\r'
}

for state in present unsuitable; do
    said=$(answering "$state" y)
    [ -z "$(grep -v '^y$' <<<"$said")" ] || fail "Offered though $state:" "$said"
    [ ! -s "$folder/told" ] || fail "Added though $state."
done

said=$(answering absent n)
grep -q "It is not added" <<<"$said" || fail "No is not understood:" "$said"
[ ! -s "$folder/told" ] || fail "Added against the user's will."

for state in absent other; do
    said=$(answering "$state" y)
    grep -q "log out and in once" <<<"$said" || fail "What is to do next is not said:" "$said"
    [ "$(cat "$folder/told")" = add ] || fail "Not added."
done

echo absent >"$folder/is"
: >"$folder/told"
said=$(bash -c "$offer" </dev/null)
grep -q "It is not added" <<<"$said" || fail "Nobody was there to ask:" "$said"
[ ! -s "$folder/told" ] || fail "Added without asking."
