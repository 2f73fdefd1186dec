#!/bin/bash
# Installs what this project needs and the machine lacks: Debian packages, and the private Wine in
# the cache directory. Run again it finds nothing to do.
#
#     setup.sh [--quiet] [--wine10]
#
# --wine10 adds the later Wine with 64-bit programs and the compiler of such.
set -euo pipefail
tools=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
QUILLON_CACHE=${QUILLON_CACHE:-${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/quillon}

packages=(
  # the two builds
  g++ cmake ninja-build g++-mingw-w64-i686-posix mingw-w64-tools googletest
  ccache zlib1g-dev libz-mingw-w64-dev libssl-dev libcurl4-openssl-dev nlohmann-json3-dev
  # checks and fuzzing
  clang-14 clang-tidy-14 clang-format-14 libclang-rt-14-dev git
  # the private Wine and the tests that run in it
  libc6-i386 xvfb python3 python3-cryptography ca-certificates debian-archive-keyring
  # other people's servers, clients and codecs, which the tests work with
  dovecot-pop3d winbind mpop sharutils mpack zip unzip p7zip-full
  libemail-mime-perl
  # what the benchmarks compare with
  libgmime-3.0-0 ripmime
)

say() { printf 'setup: %s\n' "$*"; }
die() { printf 'setup: %s\n' "$*" >&2; exit 1; }

# dpkg-query fails when one of them is unknown to it, which is no failure here.
missing_packages() {
  local installed
  installed=$(dpkg-query -W -f '${Package} ${Status}\n' "${packages[@]}" 2> /dev/null \
    | sed -n 's/ install ok installed$//p') || true
  printf '%s\n' "${packages[@]}" | grep -vxF "${installed:--}" || true
}

# Exim is the mail server of the tests. On a machine that has another one it would be replaced, so
# there the tests do without.
add_exim() {
  local other
  other=$(dpkg-query -W -f '${Package} ${db:Status-Abbrev} ${Provides}\n' 2> /dev/null \
    | awk '$2 == "ii" && /mail-transport-agent/ && $1 !~ /^exim4/ { print $1; exit }')
  if [ -z "$other" ]; then
    packages+=(exim4-daemon-heavy)  # the light one has no SCRAM
  else
    say "$other is this machine's mail server: Exim is left out, and the tests that need it"
  fi
}

# Services that come with a package are not started: the tests run their own.
install_packages() {
  local root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo > /dev/null || die "missing packages: $*; install them as root, or install sudo"
    root=(sudo)
  fi
  say "installing $*"
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive bash -euc '
    policy=/usr/sbin/policy-rc.d
    if [ ! -e $policy ]; then
      trap "rm -f $policy" EXIT
      printf "#!/bin/sh\nexit 101\n" > $policy
      chmod +x $policy
    fi
    apt-get -qq update || echo "setup: some package indexes could not be read" >&2
    apt-get -qq -o DPkg::Lock::Timeout=300 -o Acquire::Retries=5 install -y \
      --no-install-recommends "$@"
  ' setup "$@" < /dev/null > "$scratch/apt.log" 2>&1 \
    || { tail -n 20 "$scratch/apt.log" >&2; die "apt-get could not install: $*"; }
}

command -v apt-get > /dev/null || die "this needs Debian 12: apt-get is missing"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

quiet=
wines=('')
for option in "$@"; do
  case $option in
    --quiet) quiet=1 ;;
    --wine10)
      wines+=(wine10)
      packages+=(g++-mingw-w64-x86-64-posix)
      ;;
    *) die "there is no option '$option'" ;;
  esac
done

add_exim
missing=$(missing_packages)
# shellcheck disable=SC2086  # one word per package
[ -z "$missing" ] || install_packages $missing

for QUILLON_WINE in "${wines[@]}"; do
  export QUILLON_WINE
  home=$QUILLON_CACHE/${QUILLON_WINE:-wine}
  mkdir -p "$home"
  exec 8> "$home/setup.lock"
  flock 8
  # Their children, a wineserver among them, must not keep the lock.
  "$tools/wine/layout.sh" "$home/root" 8>&-
  env -u WINEPREFIX "$tools/wine/prefix.sh" 8>&-
  exec 8>&-
done
[ -n "$quiet" ] || say "everything is there"
