# Installs the Debian packages of the lists beside this file, for the commands
# of the repository's root. To be sourced by bash.

packages_folder=$(dirname "${BASH_SOURCE[0]}")

# The packages of the named lists ("build run") that dpkg does not know as
# installed, one a line.
missing_packages() {
    local wanted
    wanted=$(for list in "$@"; do sed 's/#.*//' "$packages_folder/$list.txt"; done | tr -s ' \t' '\n' | grep . | sort -u)
    # shellcheck disable=SC2086  # one argument a package
    comm -23 <(printf '%s\n' "$wanted") \
        <(dpkg-query -W -f='${db:Status-Status} ${Package}\n' $wanted 2>/dev/null | sed -n 's/^installed //p' | sort -u)
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
    if ! command -v dpkg-query >/dev/null; then
        echo "This is no Debian: the packages that are needed are listed in Packaging/packages ($*)." >&2
        return 0
    fi
    local missing
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    echo "Installing: $(echo "$missing" | tr '\n' ' ')"
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        echo "These packages are missing, and there is no sudo to install them with. As root:" >&2
        echo "    apt-get install $(echo "$missing" | tr '\n' ' ')" >&2
        return 1
    fi
    # A bare machine knows no package at all.
    compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null || as_administrator apt-get update -q || return 1
    # shellcheck disable=SC2086  # one argument a package
    set -- $missing
    # One that was not used for long knows versions that are gone.
    as_administrator apt-get install -q -y --no-install-recommends "$@" ||
        { as_administrator apt-get update -q && as_administrator apt-get install -q -y --no-install-recommends "$@"; }
}
