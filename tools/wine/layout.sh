#!/bin/bash
# Lays out the private 32-bit Wine from Debian's i386 packages, without touching the machine's own
# packages or architectures:
#
#     layout.sh DIRECTORY
#
# makes DIRECTORY hold a complete Wine, or leaves nothing there: everything is unpacked beside it and
# moved into place at the end. Downloads are kept until then, so that an interrupted run goes on
# where it stopped.
set -euo pipefail

target=$1
work=$target.partial
release=bookworm

say() { printf 'wine: %s\n' "$*"; }
die() { printf 'wine: %s\n' "$*" >&2; exit 1; }

# wine32 is the loader, fonts-wine is for windows, libgnutls30 gives Schannel, libwine-dev holds the
# IDL files that widl imports.
packages=(wine wine32 fonts-wine libgnutls30 libwine-dev)

# Where this machine has its own packages of the release from, unless QUILLON_DEBIAN_MIRROR says
# otherwise. The release may stand there under its code name or another one.
find_mirror() {
  mirror=${QUILLON_DEBIAN_MIRROR:-}
  [ -n "$mirror" ] || mirror=$(apt-get indextargets \
    --format '$(RELEASE)|$(CODENAME)|$(COMPONENT)|$(REPO_URI)' 'Created-By: Packages' \
    | awk -F '|' -v release="$release" \
      '($1 == release || $2 == release) && $3 == "main" && !found { print $4; found = 1 }')
  [ -n "$mirror" ] \
    || die "this machine's package sources do not have $release main: set QUILLON_DEBIAN_MIRROR"
}

# Resolves against an empty machine of architecture i386: own lists, own cache, own status. Only the
# release's main index is used; the others can be out of step between architectures.
private_apt() {
  apt-get -qq \
    -o Dir::State="$work/apt/state" -o Dir::State::status="$work/apt/status" \
    -o Dir::Cache="$work/apt/cache" -o Dir::Etc::sourcelist="$work/apt/sources.list" \
    -o Dir::Etc::sourceparts=/dev/null -o Dir::Etc::preferencesparts=/dev/null \
    -o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Get::List-Cleanup=false \
    -o APT::Install-Recommends=false -o APT::Sandbox::User= -o Acquire::Retries=5 \
    -o Acquire::http::Timeout=30 -o Debug::NoLocking=true -o Acquire::Languages=none \
    -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= \
    -o APT::Keep-Downloaded-Packages=true "$@"
}

download() {
  mkdir -p "$work/apt/state/lists/partial" "$work/apt/cache/archives/partial"
  : > "$work/apt/status"
  local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  [ -r "$keyring" ] || die "missing $keyring (package debian-archive-keyring)"
  echo "deb [arch=i386 signed-by=$keyring] $mirror $release main" > "$work/apt/sources.list"
  say "reading the i386 package index of $mirror"
  private_apt update || die "the package index of $mirror cannot be read (is the network up?)"
  say "downloading Wine and what it needs (about 150 MB)"
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
  local root=$work/root
  local dlls=$root/usr/lib/i386-linux-gnu/wine/i386-windows
  ln -sfn wineserver32 "$root/usr/lib/wine/wineserver"
  find "$dlls" -name '*.a' -delete
  find "$dlls" -type f ! -name '*.tlb' -exec head -c 2 {} \; -printf ' %p\n' \
    | sed -n 's/^MZ //p' | xargs -n 50 -P 2 i686-w64-mingw32-strip --strip-debug 2>/dev/null || true
  cp "$root/usr/i686-w64-mingw32/lib/zlib1.dll" "$dlls/"
}

# A complete Wine laid out in this very way needs nothing, wherever its packages came from. The
# first recipe was written another way, and laid out the same.
recipe=$({ echo "$release ${packages[*]}"; declare -f private_apt unpack mend; } | sha256sum)
first_recipe='d52296426fa0df13630b20028d90abd1ee3fb2c48990e2e54311795953f77af1  -'
case $(cat "$target/recipe" 2>/dev/null) in
  "$recipe" | "$first_recipe") exit 0 ;;
esac
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
