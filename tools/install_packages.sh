# Sourced by ./demo and ./check. install_packages NAME… installs the Debian packages of these names
# that are missing, and touches nothing when none is.

install_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null |
            grep --quiet --line-regexp installed || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These Debian packages are missing: ${missing[*]}. Install them as root." >&2
            exit 1
        }
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update --quiet=2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install --yes --quiet=2 --no-install-recommends "${missing[@]}" >/dev/null
}

build_packages=(cmake ninja-build g++ ccache libsimdjson-dev libsqlite3-dev)

# What the gateway is built with, and the broker that it is shown with.
gateway_packages=(pkg-config libmosquitto-dev libprotobuf-dev protobuf-compiler libmicrohttpd-dev libsystemd-dev mosquitto)

# What fetches the packages of the panel's page, and consumes in the tests what the gateway publishes.
# Node that is not Debian's brings npm along, and Debian's npm does not go with it.
node_packages=()
command -v npm >/dev/null || node_packages=(nodejs npm)

# What the panel in the browser is built with.
panel_packages=(libmicrohttpd-dev libgnutls28-dev libsodium-dev libsystemd-dev "${node_packages[@]}")

# The browser of its tests, with a font.
browser_packages=(chromium fonts-dejavu-core)
