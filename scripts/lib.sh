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

# Runs a command quietly but for how far it is; shows the end of its output only when it fails.
quietly() {
    local what=$1 log
    shift
    say "$what …"
    mkdir -p "$root/build/logs"
    log=$root/build/logs/$(printf '%s' "$what" | tr -c 'A-Za-z0-9\n' '-' | cut -c1-60).log
    if ! "$@" 2>&1 | progress "$what" >"$log"; then
        tail -n 60 "$log" >&2
        fail "$what failed. The whole output is in ${log#"$root"/}."
    fi
}

# Passes on what a step prints and says how far it is, from what ninja and apt tell: on a terminal in one line that
# renews itself, elsewhere in a line every ten seconds.
progress() {
    local what=$1 line far='' total='' unpacked=0 ready=0 told=$SECONDS ended=
    [ ! -t 2 ] || ended=$'\r\e[K'
    while IFS= read -r line || [ -n "$line" ]; do
        printf '%s\n' "$line"
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\  ]]; then
            far="${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} steps"
        elif [[ $line =~ ^[0-9]+\ upgraded,\ ([0-9]+)\ newly ]]; then
            total=${BASH_REMATCH[1]}
            continue
        elif [[ $line =~ dlstatus:.*file\ ([0-9]+)\ of\ ([0-9]+) ]]; then
            far="${BASH_REMATCH[1]} of ${BASH_REMATCH[2]} packages fetched"
        elif [[ $line =~ pmstatus:[^:]*:[0-9.]+:(Unpack|Install)(ing|ed)\  ]]; then
            case ${BASH_REMATCH[1]}${BASH_REMATCH[2]} in
            Unpacking) unpacked=$((unpacked + 1)) far="$unpacked of ${total:-?} packages unpacked" ;;
            Installed) ready=$((ready + 1)) far="$ready of ${total:-?} packages installed" ;;
            *) continue ;;
            esac
        else
            continue
        fi
        if [ -n "$ended" ]; then
            printf '\r\e[K%s: %s' "$what" "$far" >&2
        elif [ $((SECONDS - told)) -ge 10 ]; then
            say "$what: $far"
            told=$SECONDS
        fi
    done
    [ -z "$far" ] || printf '%s' "$ended" >&2
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

. "$root/scripts/packages.sh"

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

# The page's packages are there before the build, which then asks no network.
need_page_packages() {
    [ "$root/page/node_modules/.package-lock.json" -nt "$root/page/package-lock.json" ] && return
    need_node
    quietly "Installing the page's packages" npm ci --prefix "$root/page" --ignore-scripts --no-audit --no-fund --loglevel=error
}

# configure PRESET: also after a change of the presets, which the build folder does not notice by itself.
configure() {
    [ "$root/build/$1/build.ninja" -nt "$root/CMakePresets.json" ] && return
    need_node
    (cd "$root" && quietly "Configuring ($1)" cmake --preset "$1") || fail "$(packages_hint)"
}

# build PRESET [TARGET...]: configures and builds it, or the targets alone.
build() {
    local preset=$1
    shift
    need_page_packages
    configure "$preset"
    NINJA_STATUS='[%f/%t] ' quietly "Compiling ($preset)" cmake --build "$root/build/$preset" ${1:+--target "$@"}
}

# Starts an X server with a window manager for this script when there is no display, and ends it with the script.
need_display() {
    [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && return
    own_display
}

own_display() {
    need "${headless_packages[@]}"
    command -v Xvfb >/dev/null || fail "There is no display, and no Xvfb to make one. $(packages_hint)"
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
