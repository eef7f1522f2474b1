#!/usr/bin/env bash
# Proves that Pixmora sets itself up on a bare Debian 12: builds (once, then
# cached under ~/.cache) a bookworm minbase root with debootstrap, puts a clean
# clone of the committed main branch into a fresh copy of it, and runs the
# README's two set-up commands there as root. Then builds the Debian packages,
# installs them into a second fresh copy of the bare root with apt, and runs
# the tool from /usr/bin on a photograph.
#
# If no bare root can be built here (no debootstrap, no mirror, not root), it
# says so in one line and exits 0; once a root exists, every step must pass.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
cache="${XDG_CACHE_HOME:-$HOME/.cache}/pixmora-fresh-machine"
root_tar="$cache/bookworm-minbase.tar"
archives="$cache/apt-archives"
photo=/usr/share/backgrounds/mate/nature/Storm.jpg

skip() {
  echo "check-fresh-machine: skipped: $*"
  exit 0
}

# The mirror apt already uses for bookworm on this machine.
apt_mirror() {
  local uri
  uri=$(grep -hs -A3 '^Types: deb' /etc/apt/sources.list.d/*.sources |
    awk '/^URIs:/ {print $2}' | grep -v security | head -n1 || true)
  if [ -z "$uri" ]; then
    uri=$(grep -hs '^deb ' /etc/apt/sources.list | awk '$3 ~ /^bookworm$/ {print $2}' |
      head -n1 || true)
  fi
  echo "${uri:-http://deb.debian.org/debian}"
}

build_bare_root() {
  [ -s "$root_tar" ] && return 0
  if ! command -v debootstrap >/dev/null; then
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq debootstrap >/dev/null 2>&1 ||
      skip "debootstrap is not installed and cannot be installed"
  fi
  local mirror staging
  mirror=$(apt_mirror)
  staging=$(mktemp -d "$cache/debootstrap.XXXXXX")
  echo "check-fresh-machine: building a bookworm minbase root from $mirror"
  if ! debootstrap --variant=minbase bookworm "$staging" "$mirror" >"$cache/debootstrap.log" 2>&1; then
    rm -rf "$staging"
    skip "debootstrap from $mirror failed (see $cache/debootstrap.log)"
  fi
  rm -rf "$staging/var/cache/apt/archives/"*.deb
  tar -C "$staging" -cf "$root_tar.part" .
  mv "$root_tar.part" "$root_tar"
  rm -rf "$staging"
}

# A fresh copy of the cached bare root, with the host's name resolution.
fresh_root() {
  local dir
  dir=$(mktemp -d "$cache/root.XXXXXX")
  tar -C "$dir" -xf "$root_tar"
  cp /etc/resolv.conf "$dir/etc/resolv.conf" 2>/dev/null || true
  echo "$dir"
}

# Runs a shell command as root inside ROOT, in its own mount and pid namespace,
# with a clean environment. Downloaded packages are kept between runs.
in_root() {
  local dir=$1 command=$2
  mkdir -p "$archives/partial"
  unshare --mount --pid --fork bash -euc '
    dir=$1; archives=$2; command=$3
    mount --rbind /dev "$dir/dev"
    mount -t proc proc "$dir/proc"
    mount -t sysfs sysfs "$dir/sys"
    mount -t tmpfs tmpfs "$dir/tmp"
    mount --bind "$archives" "$dir/var/cache/apt/archives"
    exec chroot "$dir" /usr/bin/env -i HOME=/root TERM=dumb LANG=C.UTF-8 \
      PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
      PIXMORA_BARE_ROOT=1 /bin/bash -euc "$command"
  ' in-root "$dir" "$archives" "$command"
}

# The two roots of this run, removed when it ends however it ends.
first=""
second=""

main() {
  [ "$(id -u)" -eq 0 ] || skip "needs root to build and enter a bare root"
  command -v unshare >/dev/null || skip "unshare is not available"
  mkdir -p "$cache"
  build_bare_root

  first=$(fresh_root)
  trap 'rm -rf "$first" ${second:+"$second"}' EXIT
  git clone -q --branch main "$repo" "$first/root/pixmora"
  echo "check-fresh-machine: README commands in a bare root ($first)"
  in_root "$first" 'cd /root/pixmora && bash scripts/main-job.sh && bash scripts/test.sh'
  in_root "$first" 'cd /root/pixmora && bash scripts/package.sh'

  second=$(fresh_root)
  mkdir -p "$second/root/debs"
  cp "$first"/root/pixmora/build-deb/*.deb "$second/root/debs/"
  cp "$first$photo" "$second/root/photo.jpg"
  echo "check-fresh-machine: installing the packages in another bare root"
  in_root "$second" '
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq /root/debs/libpixmora1_*.deb /root/debs/pixmora-tools_*.deb
    test "$(command -v pixmora)" = /usr/bin/pixmora
    pixmora --version
    pixmora effect grey /root/photo.jpg /root/photo-grey.png
    test -s /root/photo-grey.png
    apt-get install -y -qq /root/debs/libpixmora-dev_*.deb pkg-config
    pkg-config --modversion pixmora'
  echo "check-fresh-machine: passed"
}

main "$@"
