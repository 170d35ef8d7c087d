# Shared by the scripts: where things are, how they speak, what they install.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
tools=$root/build/tools
export PATH=$tools/bin:$PATH

say() { printf '%s\n' "$*" >&2; }
fail() {
    say "$*"
    exit 1
}

# Runs a command quietly; shows the end of its output only when it fails.
quietly() {
    local what=$1 log
    shift
    say "$what …"
    mkdir -p "$root/build/logs"
    log=$root/build/logs/$(printf '%s' "$what" | tr -c 'A-Za-z0-9\n' '-' | cut -c1-60).log
    if ! "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        fail "$what failed. The whole output is in ${log#"$root"/}."
    fi
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "Packages are missing and this needs root or sudo to install them: $*"
    fi
}

build_packages=(
    g++ cmake ninja-build pkg-config
    libgtk-4-dev libwebkitgtk-6.0-dev libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    libarchive-dev libboost1.81-dev libboost-json1.81-dev libicu-dev libssl-dev libplist-dev
    libvips-dev libraw-dev libpng-dev libseccomp-dev libx11-dev libgtest-dev libgmock-dev libbenchmark-dev
)
run_packages=(
    bubblewrap shared-mime-info desktop-file-utils adwaita-icon-theme hicolor-icon-theme librsvg2-common fonts-dejavu-core gstreamer1.0-plugins-base
    gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
)
headless_packages=(xvfb xauth openbox x11-utils imagemagick)
test_packages=(
    ffmpeg libreoffice-writer-nogui libreoffice-impress-nogui libarchive-tools libvips-tools
    python3 python3-gi gir1.2-gtk-4.0 xdotool xclip dbus procps
)
bench_packages=(unzip 7zip cpio)
check_packages=(clang-19 clang-tidy-19 clang-format-19 libclang-rt-19-dev)

# need PACKAGE...: installs the Debian packages that are missing.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    command -v apt-get >/dev/null || fail "These Debian packages are needed: ${missing[*]}"
    if [ -z "${apt_lists_fresh:-}" ]; then
        quietly "Reading the package lists" as_root apt-get -o DPkg::Lock::Timeout=600 update
        apt_lists_fresh=yes
    fi
    quietly "Installing ${#missing[@]} packages (a few minutes)" as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -o DPkg::Lock::Timeout=600 install -y --no-install-recommends "${missing[@]}"
}

# The page's tools want Node.js 20.19 and npm 11; an older system gets both into the build folder.
need_node() {
    node -e 'const [a, b] = process.versions.node.split(".").map(Number); process.exit(a > 20 || (a === 20 && b >= 19) ? 0 : 1)' \
        2>/dev/null && [ "$(npm --version 2>/dev/null | cut -d. -f1)" -ge 11 ] 2>/dev/null && return
    command -v npm >/dev/null || need nodejs npm
    local machine
    case $(uname -m) in
    x86_64) machine=x64 ;;
    aarch64) machine=arm64 ;;
    *) fail "Node.js 20.19 or newer is needed to build the page." ;;
    esac
    mkdir -p "$tools/bin"
    quietly "Fetching Node.js 20 and npm 11 into build/tools" npm install --prefix "$tools" --no-audit --no-fund \
        --ignore-scripts "node-linux-$machine@20.20.0" npm@11.6.2
    ln -sf "../node_modules/node-linux-$machine/bin/node" "$tools/bin/node"
    ln -sf ../node_modules/npm/bin/npm-cli.js "$tools/bin/npm"
    hash -r
}

# build PRESET: configures and builds it.
build() {
    local preset=$1
    need_node
    (cd "$root" && quietly "Configuring ($preset)" cmake --preset "$preset")
    say "Building ($preset) …"
    if [ -t 2 ]; then
        (cd "$root" && cmake --build --preset "$preset" >&2) || fail "The build failed."
    else
        quietly "Compiling ($preset)" cmake --build "$root/build/$preset"
    fi
}

# Starts an X server with a window manager for this script when there is no display, and ends it with the script.
need_display() {
    [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && return
    own_display
}

own_display() {
    need "${headless_packages[@]}"
    local pipe
    pipe=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1400x900x24 -nolisten tcp 3>"$pipe" >/dev/null 2>&1 &
    display_pid=$!
    local waited=0
    until [ -s "$pipe" ]; do
        kill -0 "$display_pid" 2>/dev/null && [ $waited -lt 100 ] || fail "The virtual display did not start."
        sleep 0.1
        waited=$((waited + 1))
    done
    export DISPLAY=:$(cat "$pipe")
    rm -f "$pipe"
    unset WAYLAND_DISPLAY
    openbox >/dev/null 2>&1 &
    manager_pid=$!
    trap 'kill "$manager_pid" "$display_pid" 2>/dev/null || true' EXIT
}
