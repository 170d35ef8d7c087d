# What building, running, testing and checking need, by Debian's names, and how it gets there. A star stands for the
# newest version that the system knows. Sourced by lib.sh.
build_packages=(
    g++ cmake ninja-build pkg-config
    libgtk-4-dev libwebkitgtk-6.0-dev libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    libarchive-dev 'libboost-json*-dev' libicu-dev libssl-dev libplist-dev
    libvips-dev libraw-dev libpng-dev libseccomp-dev libfontconfig-dev libgdk-pixbuf-2.0-dev libx11-dev libgtest-dev libgmock-dev libbenchmark-dev
)
run_packages=(
    bubblewrap shared-mime-info desktop-file-utils adwaita-icon-theme hicolor-icon-theme librsvg2-common fonts-dejavu-core gstreamer1.0-plugins-base
    gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav
)
headless_packages=(xvfb xauth openbox x11-utils imagemagick)
test_packages=(
    ffmpeg libreoffice-writer-nogui libreoffice-impress-nogui libarchive-tools libvips-tools
    python3 python3-gi gir1.2-gtk-4.0 xdotool xclip xdg-utils dbus at-spi2-core procps
)
bench_packages=(unzip 7zip cpio)
package_packages=(dpkg-dev file lintian appstream)
check_packages=(python3 clang-19 clang-tidy-19 clang-format-19 libclang-rt-19-dev)

# Where Debian's package manager is not, nothing is installed and nothing refused: what is missing shows itself when it is
# used, and the names of that system are told then.
fedora_packages="gcc-c++ cmake ninja-build pkgconf gtk4-devel webkitgtk6.0-devel gstreamer1-devel
gstreamer1-plugins-base-devel libarchive-devel boost-devel libicu-devel openssl-devel libplist-devel vips-devel LibRaw-devel
libpng-devel libseccomp-devel fontconfig-devel gdk-pixbuf2-devel libX11-devel gtest-devel gmock-devel google-benchmark-devel nodejs npm bubblewrap
desktop-file-utils librsvg2 gstreamer1-plugins-good gstreamer1-plugins-bad-free gstreamer1-plugin-libav
xorg-x11-server-Xvfb openbox xprop xwininfo ImageMagick"
arch_packages="gcc cmake ninja pkgconf gtk4 webkitgtk-6.0 gstreamer gst-plugins-base-libs libarchive boost icu openssl
libplist libvips libraw libpng libseccomp fontconfig gdk-pixbuf2 libx11 gtest benchmark nodejs npm bubblewrap desktop-file-utils librsvg
gst-plugins-good gst-plugins-bad gst-libav xorg-server-xvfb openbox xorg-xprop xorg-xwininfo imagemagick"

packages_hint() {
    if command -v dpkg-query >/dev/null; then
        printf '%s\n' "Whatever is missing, scripts/setup installs it."
    elif command -v dnf >/dev/null; then
        printf '%s\n' "On this system: dnf install $fedora_packages"
    elif command -v pacman >/dev/null; then
        printf '%s\n' "On this system: pacman -S $arch_packages"
    else
        printf '%s\n' "These packages are needed, by Debian's names: ${build_packages[*]} ${run_packages[*]} nodejs npm"
    fi
}

# need PACKAGE...: installs the Debian packages that are missing.
need() {
    command -v dpkg-query >/dev/null || return 0
    local installed package pattern missing=() names=()
    installed=$(dpkg-query -W -f '${binary:Package} ${db:Status-Status}\n' "$@" 2>/dev/null |
        sed -n 's/^\([^: ]*\)[^ ]* installed$/\1/p') || true # It fails for names that it does not know.
    for package in "$@"; do
        pattern=^${package//\*/[0-9.]*}$
        grep -q "$pattern" <<<"$installed" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    command -v apt-get >/dev/null || fail "These Debian packages are needed: ${missing[*]}"
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
        fail "These packages are missing, and installing them takes root or sudo: ${missing[*]}"
    if [ -z "${apt_lists_fresh:-}" ]; then
        quietly "Reading the package lists" as_root apt-get -o DPkg::Lock::Timeout=600 update
        apt_lists_fresh=yes
    fi
    for package in "${missing[@]}"; do
        names+=("$(known_name "$package")") || exit 1
    done
    quietly "Installing ${names[*]:0:3}${names[3]:+ and others}" as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive \
        apt-get -o DPkg::Lock::Timeout=600 -o APT::Status-Fd=1 install -y --no-install-recommends "${names[@]}"
}

# The newest package that fits a name with a star.
known_name() {
    [[ $1 == *\** ]] || { printf '%s\n' "$1" && return; }
    apt-cache pkgnames "${1%%\**}" | grep -x "${1//\*/[0-9.]*}" | sort -V | tail -n 1 | grep . ||
        fail "This system has no package like $1."
}
