# Shell functions that the scripts in this folder share. To be sourced, by bash.
# shellcheck shell=bash

# Prints a command in the form in which it could be typed, then runs it.
run() {
    printf '$'
    printf ' %q' "$@"
    printf '\n'
    "$@"
}

# fail MESSAGE...: prints the lines on standard error and ends the script.
fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

# Runs a command as root.
as_root() {
    if [[ $EUID -eq 0 ]]; then
        run "$@"
    else
        run sudo "$@"
    fi
}

is_installed() {
    local status
    # shellcheck disable=SC2016  # the dollar is dpkg-query's
    status=$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) &&
        [[ $status == installed ]]
}

install_packages() {
    command -v apt-get >/dev/null || return
    [[ $EUID -eq 0 ]] || command -v sudo >/dev/null || return
    # One list of many that is out of step needn't be one that is wanted: the install decides.
    as_root apt-get update || echo "${0##*/}: not all package lists are up to date" >&2
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"
}

# need_packages PACKAGE...: installs those of the Debian packages that are missing. Where that
# can't be done, says which they are and ends the script.
need_packages() {
    local package
    local missing=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [[ ${#missing[@]} -eq 0 ]] && return
    install_packages "${missing[@]}" ||
        fail "${0##*/}: these packages are missing and could not be installed: ${missing[*]}" \
            "On Debian, install them as root and start again:" \
            "    apt-get update && apt-get install ${missing[*]}" \
            "On another system, install what corresponds to them and use cmake (see README.md)."
}

# apt_of ARCH FOLDER ARGUMENT...: apt-get for an architecture, with Debian's sources, whose state is
# kept in the folder. The system doesn't come to know of it.
apt_of() {
    local state=$2 kind release
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    mkdir -p "$state/lists/partial" "$state/cache/archives/partial"
    local source="[signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]"
    for kind in deb deb-src; do
        echo "$kind $source http://deb.debian.org/debian $release main"
    done >"$state/sources.list"
    : >"$state/status"
    apt-get -o APT::Architecture="$1" -o APT::Architectures::="$1" -o APT::Sandbox::User= \
        -o Dir::State="$state" -o Dir::State::status="$state/status" -o Dir::Cache="$state/cache" \
        -o Dir::Etc::sourcelist="$state/sources.list" -o Dir::Etc::sourceparts=/dev/null "${@:3}"
}
