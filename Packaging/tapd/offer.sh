# Offers to install the key-tap service. To be sourced by bash, after
# Packaging/packages/install.sh.

tapd_folder=$(dirname "${BASH_SOURCE[0]}")

# offer_tap_service <build folder> [<root folder>]
#
# On a Wayland desktop without the service: says what would be placed where, and
# places it if the user agrees. The root folder is where; / without it.
offer_tap_service() {
    local build=$1 root=${2:-} staged answer=
    [ -n "${WAYLAND_DISPLAY:-}" ] || return 0
    [ ! -e "$root/usr/share/dbus-1/system-services/org.quillmere.KeyTap1.service" ] || return 0
    staged=$(mktemp -d)
    DESTDIR=$staged cmake --install "$build" --component tapd --prefix /usr >/dev/null
    echo "On Wayland Quillmere sees its shortcuts through a system service, which is not installed yet."
    echo "Documentation/TapService.md tells what it does. These files would be placed:"
    find "$staged" ! -type d -printf '    /%P\n' | LC_ALL=C sort
    # Without a terminal there is nobody to ask.
    if [ -t 0 ]; then read -r -p "Install it, as administrator? [y/N] " answer; fi
    case $answer in
        [yY]*) place_tap_service "$build" "$staged" "$root" || echo "It could not be installed." ;;
        *)
            # Nothing that an uninstallation would have to remove.
            rm -f "$build/install_manifest_tapd.txt"
            echo "It is not installed. To do so later: sudo cmake --install $build --component tapd --prefix /usr"
            ;;
    esac
    rm -rf "$staged"
}

# place_tap_service <build folder> <staged files> <root folder>
place_tap_service() {
    install_packages service && as_administrator cp -r --no-preserve=ownership "$2/." "$3/" || return 1
    if [ -z "$3" ] && [ -d /run/systemd/system ]; then
        as_administrator "$tapd_folder/introduce" || return 1
    fi
    echo "Installed. To remove it: sudo cmake --build $1 --target uninstall"
}
