#!/bin/bash
# Lays out a private Wine from Debian's packages, without touching the machine's own packages or
# architectures:
#
#     layout.sh DIRECTORY
#
# makes DIRECTORY hold a complete Wine, or leaves nothing there: everything is unpacked beside it and
# moved into place at the end. Downloads are kept until then, so that an interrupted run goes on
# where it stopped. QUILLON_WINE says which: nothing for the 32-bit one of this release, wine10 for
# that of the next release, with 32-bit and 64-bit programs.
set -euo pipefail

target=$1
work=$target.partial

say() { printf 'wine: %s\n' "$*"; }
die() { printf 'wine: %s\n' "$*" >&2; exit 1; }

# wine32 and wine64 are the loaders, fonts-wine is for windows, libgnutls30 gives Schannel, libwine-dev
# holds the IDL files that widl imports.
machine_release=bookworm
case ${QUILLON_WINE:-} in
  '')
    release=$machine_release suites=("$machine_release")
    architectures=(i386)
    packages=(wine wine32 fonts-wine libgnutls30 libwine-dev)
    size=150
    # Written another way, and laid out the same.
    earlier_recipes=(
      d52296426fa0df13630b20028d90abd1ee3fb2c48990e2e54311795953f77af1
      f4d41dcf8d8a091980550e05a47175919bc2dbdbae2380458d26f8c8684bb44b
    )
    ;;
  wine10)
    # Two names of the same; while a mirror is brought up to date, one can be out of step.
    release=trixie suites=(trixie stable)
    architectures=(amd64 i386)
    # It has the newer release's C library, so its programs see a machine of their own: inside.sh.
    # Wine has winbind's ntlm_auth speak NTLM; the first one finds that of the machine.
    packages=(wine wine64 wine32:i386 fonts-wine libgnutls30t64 libgnutls30t64:i386 base-files libc-bin coreutils
      winbind libgssapi-krb5-2 libgssapi-krb5-2:i386)
    size=350
    earlier_recipes=()
    ;;
  *) die "there is no QUILLON_WINE '$QUILLON_WINE'" ;;
esac

# Where this machine has its own packages from, unless QUILLON_DEBIAN_MIRROR says otherwise; other
# releases are there as well. The machine's release may stand there under its code name or another
# one.
find_mirror() {
  mirror=${QUILLON_DEBIAN_MIRROR:-}
  [ -n "$mirror" ] || mirror=$(apt-get indextargets \
    --format '$(RELEASE)|$(CODENAME)|$(COMPONENT)|$(REPO_URI)' 'Created-By: Packages' \
    | awk -F '|' -v release="$machine_release" \
      '($1 == release || $2 == release) && $3 == "main" && !found { print $4; found = 1 }')
  [ -n "$mirror" ] \
    || die "this machine's package sources do not have $machine_release main: set QUILLON_DEBIAN_MIRROR"
}

# Resolves against an empty machine of those architectures: own lists, own cache, own status. Only
# the release's main index is used; the others can be out of step between architectures.
private_apt() {
  local architecture options=()
  for architecture in "${architectures[@]}"; do
    options+=(-o "APT::Architectures::=$architecture")
  done
  apt-get -qq \
    -o Dir::State="$work/apt/state" -o Dir::State::status="$work/apt/status" \
    -o Dir::Cache="$work/apt/cache" -o Dir::Etc::sourcelist="$work/apt/sources.list" \
    -o Dir::Etc::sourceparts=/dev/null -o Dir::Etc::preferencesparts=/dev/null \
    -o APT::Architecture="${architectures[0]}" "${options[@]}" -o APT::Get::List-Cleanup=false \
    -o APT::Install-Recommends=false -o APT::Sandbox::User= -o Acquire::Retries=5 \
    -o Acquire::http::Timeout=30 -o Debug::NoLocking=true -o Acquire::Languages=none \
    -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= \
    -o APT::Keep-Downloaded-Packages=true "$@"
}

# Reads the package index from the mirror, which signed it as that of the release.
read_index() {
  local suite arch keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  [ -r "$keyring" ] || die "missing $keyring (package debian-archive-keyring)"
  arch=$(IFS=,; echo "${architectures[*]}")
  for suite in "${suites[@]}"; do
    say "reading the $arch package index of $mirror ($suite)"
    rm -rf "$work/apt/state"
    mkdir -p "$work/apt/state/lists/partial"
    echo "deb [arch=$arch signed-by=$keyring] $mirror $suite main" > "$work/apt/sources.list"
    private_apt update || continue
    [ "$(private_apt indextargets --format '$(CODENAME)' | sort -u)" != "$release" ] || return 0
  done
  die "the package index of $mirror cannot be read (is the network up?)"
}

download() {
  mkdir -p "$work/apt/cache/archives/partial"
  : > "$work/apt/status"
  read_index
  say "downloading Wine and what it needs (about $size MB)"
  private_apt -y --download-only install "${packages[@]}" \
    || die "the Wine packages cannot be downloaded from $mirror; run again to go on"
}

unpack() {
  say "unpacking"
  rm -rf "$work/root"
  mkdir -p "$work/root"
  local deb
  for deb in "$work"/apt/cache/archives/*.deb; do
    dpkg -x "$deb" "$work/root" || { rm -f "$deb"; die "$deb is damaged; run again"; }
  done
}

# What the packages' own install scripts would have done, and two thirds of the size away: the DLLs
# carry debug information, and every prefix gets a copy of each.
mend() {
  local root=$work/root dlls kind strip
  [ "$release" != bookworm ] || ln -sfn wineserver32 "$root/usr/lib/wine/wineserver"
  for dlls in "$root"/usr/lib/*/wine/*-windows; do
    case $dlls in
      */x86_64-windows) kind=x86_64 strip=strip ;;
      *) kind=i686 strip=i686-w64-mingw32-strip ;;
    esac
    find "$dlls" -name '*.a' -delete
    find "$dlls" -type f ! -name '*.tlb' -exec head -c 2 {} \; -printf ' %p\n' \
      | sed -n 's/^MZ //p' | xargs -n 50 -P 2 "$strip" --strip-debug 2>/dev/null || true
    cp "$root/usr/$kind-w64-mingw32/lib/zlib1.dll" "$dlls/"
  done
}

# A complete Wine laid out in this very way needs nothing, wherever its packages came from.
recipe=$({ echo "$release ${packages[*]}"; declare -f private_apt unpack mend; } | sha256sum)
if [ -f "$target/recipe" ]; then
  read -r laid_out _ < "$target/recipe"
  for known in "${recipe%% *}" "${earlier_recipes[@]}"; do
    [ "$laid_out" != "$known" ] || exit 0
  done
fi
mkdir -p "$work"
find_mirror
download
unpack
mend
echo "$recipe" > "$work/root/recipe"
rm -rf "$target"
mv "$work/root" "$target"
rm -rf "$work"
say "laid out in $target"
