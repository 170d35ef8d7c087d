# Bare Debian systems in a folder, for scripts that prove something where nothing is installed. Sourced after lib.sh.
# A system is entered with namespaces of its own: its mounts and processes end with the script, however that ends.
debian=bookworm
roots=${XDG_CACHE_HOME:-$HOME/.cache}/quillmere-fresh
refused=3 # The status of a script that was not allowed to try.

# Ends the script where bare systems cannot be made, and keeps out a second script that makes them.
begin_roots() {
    if [ "$(id -u)" -ne 0 ]; then
        say "A bare system needs root: sudo $0"
        exit $refused
    fi
    if ! isolated mount -t tmpfs tmpfs /mnt 2>/dev/null; then
        say "This machine refuses namespaces or mounts even to root, so no bare system can be entered here."
        exit $refused
    fi
    mkdir -p "$roots"/{copies,apt,npm}
    exec 8>"$roots/lock"
    flock --nonblock 8 || { say "Waiting for another bare system to be done …" && flock 8; }
    # With the lock held, whatever lies there was left by a script that was killed.
    rm -rf --one-file-system "$roots"/copies/* "$roots"/base.new
    # Downloads that nothing has asked for in a month.
    find "$roots/apt" -name '*.deb' -atime +30 -delete
}

isolated() {
    setpriv --pdeathsig KILL unshare --mount --propagation private --ipc --pid --fork --kill-child "$@"
}

# The machine's own sources of Debian, as lines of sources.list; Debian's main site on another system.
debian_sources() {
    local lines
    lines=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 2>/dev/null |
        awk -v suite="$debian" '$2 ~ "^" suite "(-updates|-security)?$" && $3 == "main" { print "deb", $0 }' | sort -u)
    printf '%s\n' "${lines:-deb http://deb.debian.org/debian $debian main}"
}

# What was built before serves for a month, as long as the sources stay the same.
make_base() {
    local mirror
    if [ -f "$roots/base/etc/apt/sources.list" ] && [ -n "$(find "$roots/base.made" -mtime -30 2>/dev/null)" ] &&
        debian_sources | cmp -s - "$roots/base/etc/apt/sources.list"; then
        return
    fi
    need debootstrap
    mirror=$(debian_sources | awk -v suite="$debian" '$3 == suite { print $2; exit }')
    quietly "Making a bare Debian system ($debian)" debootstrap --variant=minbase \
        --cache-dir="$roots/apt" "$debian" "$roots/base.new" "$mirror"
    debian_sources >"$roots/base.new/etc/apt/sources.list"
    rm -rf --one-file-system "$roots/base"
    mv "$roots/base.new" "$roots/base"
    touch "$roots/base.made"
}

# The roads to the network that this machine uses: proxies, keys, certificates, the registry of npm.
take_over_network() {
    local copy=$1 file
    cp -L /etc/resolv.conf /etc/hosts "$copy/etc/"
    for file in /etc/apt/trusted.gpg.d/* /etc/apt/auth.conf /etc/apt/auth.conf.d/* /usr/local/share/ca-certificates/*; do
        [ -f "$file" ] && install -D -m 644 "$file" "$copy$file"
    done
    apt-config dump 2>/dev/null | grep -i '^Acquire::https\?::Proxy' >"$copy/etc/apt/apt.conf.d/90network" || true
    [ ! -f /etc/ssl/certs/ca-certificates.crt ] ||
        install -D -m 644 /etc/ssl/certs/ca-certificates.crt "$copy/opt/machine-certificates.crt"
    cat /etc/npmrc /usr/etc/npmrc /usr/local/etc/npmrc "$HOME/.npmrc" 2>/dev/null |
        grep -v -E '^ *(cafile|nodedir|prefix|cache) *=' >"$copy/root/.npmrc" || true
    chmod 600 "$copy/root/.npmrc"
}

# make_root NAME: a throw-away copy of the bare system; its folder is in $new_root.
make_root() {
    make_base
    new_root=$roots/copies/$1
    cp -a --reflink=auto "$roots/base" "$new_root"
    take_over_network "$new_root"
    # No services, no waiting for the disk, downloads kept for the next time.
    install -m 755 /dev/stdin "$new_root/usr/sbin/policy-rc.d" <<<$'#!/bin/sh\nexit 101'
    echo force-unsafe-io >"$new_root/etc/dpkg/dpkg.cfg.d/fresh"
    printf '%s\n' 'Acquire::Languages "none";' 'APT::Keep-Downloaded-Packages "true";' 'Acquire::Retries "3";' \
        >"$new_root/etc/apt/apt.conf.d/90fresh"
}

# in_root FOLDER COMMAND...: runs a command as root of the system in that folder, with none of this one's environment.
in_root() {
    local folder=$1 name pass=()
    shift
    for name in http_proxy https_proxy no_proxy HTTP_PROXY HTTPS_PROXY NO_PROXY npm_config_registry NPM_CONFIG_REGISTRY; do
        [ -z "${!name:-}" ] || pass+=("$name=${!name}")
    done
    if [ -f "$folder/opt/machine-certificates.crt" ]; then
        pass+=(npm_config_cafile=/opt/machine-certificates.crt NODE_EXTRA_CA_CERTS=/opt/machine-certificates.crt)
    fi
    isolated bash -euc "$(declare -f enter); enter \"\$@\"" enter "$folder" "$roots" \
        env -i HOME=/root USER=root LANG=C.UTF-8 TERM=dumb PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        "${pass[@]}" "$@" </dev/null 8>&-
}

# Runs as the first process of the namespaces. The new system becomes a real root (not chroot, where the sandboxes of the
# engine and of the converters could not change theirs).
enter() {
    local folder=$1 roots=$2 node
    shift 2
    mount --bind "$folder" "$folder"
    mkdir -p "$folder/root/.npm"
    mount --bind "$roots/apt" "$folder/var/cache/apt/archives"
    mount --bind "$roots/npm" "$folder/root/.npm"
    cd "$folder"
    mount -t proc -o nosuid,nodev,noexec proc proc
    mount -t sysfs -o ro,nosuid,nodev,noexec sysfs sys
    mount -t tmpfs -o mode=755 tmpfs run
    mount -t tmpfs -o mode=755 tmpfs dev
    mkdir dev/pts dev/shm run/lock
    mount -t devpts -o newinstance,ptmxmode=0666,mode=620,gid=5 devpts dev/pts
    mount -t tmpfs -o mode=1777 tmpfs dev/shm
    for node in null zero full random urandom tty; do
        : >"dev/$node"
        mount --bind "/dev/$node" "dev/$node"
    done
    ln -s pts/ptmx dev/ptmx
    ln -s /proc/self/fd dev/fd
    ln -s fd/0 dev/stdin
    ln -s fd/1 dev/stdout
    ln -s fd/2 dev/stderr
    pivot_root . .
    umount -l .
    cd /
    exec "$@"
}
