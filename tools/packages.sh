# shellcheck shell=bash
# What Tallyroom needs from Debian, by purpose, and `need`, which installs what is missing. To be sourced.

declare -A tallyroom_packages=(
    [build]="g++ cmake ninja-build pkg-config libssl-dev libmount-dev libudev-dev libgit2-dev libcli11-dev nlohmann-json3-dev"
    [app]="qt6-base-dev qt6-svg-dev"
    [window]="qt6-wayland qt6-translations-l10n"
    [test]="git trash-cli libgtest-dev libgmock-dev xvfb xdotool openbox dbus-daemon at-spi2-core gir1.2-atspi-2.0 python3-gi zsh fish"
    [package]="librsvg2-bin dpkg-dev rpm file lintian mmdebstrap desktop-file-utils appstream xvfb xdotool"
    [fuzz]="clang-16 libclang-rt-16-dev"
    [ci]="ccache clang-format clang-tidy-16 shellcheck libbenchmark-dev"
    [pictures]="imagemagick"
    [bench]="libbenchmark-dev python3 gdu ncdu fd-find rdfind jdupes fdupes rmlint mmdebstrap"
)

# need PURPOSE...: returns once the packages for these purposes are there. Silent when they already are.
need() {
    local purpose package installed
    local -a list wanted=() missing=()
    for purpose in "$@"; do
        read -ra list <<<"${tallyroom_packages[$purpose]}"
        wanted+=("${list[@]}")
    done
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "No apt on this system: Tallyroom counts on ${wanted[*]} (Debian's names)." >&2
        return
    fi
    # dpkg-query fails when it knows nothing of a package: that one is missing, which is all we ask.
    # shellcheck disable=SC2016 # the braces are dpkg-query's
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true)
    for package in "${wanted[@]}"; do
        [[ $'\n'$installed$'\n' == *$'\n'"installed $package"$'\n'* ]] || missing+=("$package")
    done
    [[ ${#missing[@]} -eq 0 ]] || install_packages "${missing[@]}"
}

install_packages() {
    local -a as_root=()
    if [[ $EUID -ne 0 ]]; then
        if ! command -v sudo >/dev/null; then
            echo "Please install these packages as root, then try again: $*" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    local -a apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y
        -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300)
    local log
    log=$(mktemp)
    echo "Installing: $*" >&2
    if ! { "${apt[@]}" update && "${apt[@]}" install --no-install-recommends "$@"; } >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        rm -f "$log"
        echo "Could not install: $*" >&2
        return 1
    fi
    rm -f "$log"
}
