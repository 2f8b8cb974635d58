# shellcheck shell=bash
# Installs the packages of the lists beside this file, for the commands of the
# repository's root. To be sourced by bash.
#
# A list has one entry a line: a package, or several of which one will do, as
# releases name them differently: "libboost1.81-dev|libboost-dev". The first one
# that the system has is taken.

packages_folder=$(dirname "${BASH_SOURCE[0]}")

# Which lists are this system's. Ubuntu has the names of Debian.
package_system() {
    if command -v apt-get >/dev/null; then
        echo debian
    elif command -v dnf >/dev/null; then
        echo fedora
    elif command -v pacman >/dev/null; then
        echo arch
    fi
}

# For each system: which of the named packages are installed, which it offers,
# how its knowledge of them is brought up to date, and how they are installed.
installed_debian() {
    dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p'
}
offered_debian() {
    apt-cache policy "$@" | awk '/^[^ ]/ { sub(":$", ""); name = $0 } /Candidate:/ && $2 != "(none)" { print name }'
}
refresh_debian() { as_administrator apt-get update -q; }
get_debian() { as_administrator apt-get install -q -y --no-install-recommends "$@"; }

installed_fedora() {
    local name
    for name; do if rpm -q --whatprovides "$name" >/dev/null 2>&1; then echo "$name"; fi; done
}
offered_fedora() {
    local name
    for name; do if [ -n "$(dnf -q repoquery --whatprovides "$name" 2>/dev/null)" ]; then echo "$name"; fi; done
}
refresh_fedora() { as_administrator dnf -q makecache --refresh; }
get_fedora() { as_administrator dnf install -y --setopt=install_weak_deps=False "$@"; }

installed_arch() { printf '%s\n' "$@" | grep -vxF -f <(pacman -T "$@"); }
offered_arch() {
    local name
    for name; do if pacman -Sp "$name" >/dev/null 2>&1; then echo "$name"; fi; done
}
# A part of Arch that is newer than the rest of it is not supported.
refresh_arch() { as_administrator pacman -Syu --noconfirm; }
get_arch() { as_administrator pacman -S --needed --noconfirm "$@"; }

# entries <system> <list>...: what the named lists ("build run") ask for.
entries() {
    local system=$1 list
    shift
    for list in "$@"; do sed 's/#.*//' "$packages_folder/$system/$list.txt"; done | tr -s ' \t' '\n' | grep . | sort -u
}

# without_any <names>, on standard input entries: those that have none of the names.
without_any() {
    awk -v names="$1" '
        BEGIN { split(names, list, "\n"); for (i in list) has[list[i]] = 1 }
        { count = split($0, choice, "|"); for (i = 1; i <= count; i++) if (choice[i] in has) next; print }'
}

# missing_packages <system> <list>...: the entries of which nothing is installed.
missing_packages() {
    local wanted
    wanted=$(entries "$@")
    # shellcheck disable=SC2046  # one argument a package
    without_any "$("installed_$1" $(tr '|' ' ' <<<"$wanted"))" <<<"$wanted"
}

# offered <system> <entries>: the packages of the entries that the system offers.
offered() {
    # shellcheck disable=SC2046  # one argument a package
    "offered_$1" $(tr '|' ' ' <<<"$2")
}

# chosen <names>, on standard input entries: the first package of each that is
# among the names, or else its first, so that the refusal names something.
chosen() {
    awk -v names="$1" '
        BEGIN { split(names, list, "\n"); for (i in list) has[list[i]] = 1 }
        {
            count = split($0, choice, "|")
            for (i = 1; i <= count; i++) if (choice[i] in has) break
            print choice[(i > count) ? 1 : i]
        }'
}

# Runs a command with the rights to install packages.
as_administrator() {
    if [ "$(id -u)" -eq 0 ]; then
        env DEBIAN_FRONTEND=noninteractive "$@"
    else
        sudo env DEBIAN_FRONTEND=noninteractive "$@"
    fi
}

# Installs what is missing of the named lists, and says what. Does nothing,
# quickly, when all is there.
install_packages() {
    local system missing on_offer
    system=$(package_system)
    if [ -z "$system" ]; then
        echo "What is needed is listed in Packaging/packages ($*), under the names of other systems." >&2
        return 0
    fi
    missing=$(missing_packages "$system" "$@")
    [ -n "$missing" ] || return 0
    echo "Installing: $(echo "$missing" | tr '\n' ' ')"
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        echo "These packages are missing, and there is no sudo to install them with: install them as root." >&2
        return 1
    fi
    # A bare machine knows no package at all.
    on_offer=$(offered "$system" "$missing")
    if [ -n "$(without_any "$on_offer" <<<"$missing")" ]; then
        "refresh_$system" || return 1
        on_offer=$(offered "$system" "$missing")
    fi
    # One that was not used for long knows versions that are gone.
    # shellcheck disable=SC2046  # one argument a package
    "get_$system" $(chosen "$on_offer" <<<"$missing") ||
        { "refresh_$system" && "get_$system" $(chosen "$(offered "$system" "$missing")" <<<"$missing"); }
}
