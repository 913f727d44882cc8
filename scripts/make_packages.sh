#!/usr/bin/env bash
# Makes packages of built programs; ./package builds the programs first.
#
#   make_packages.sh zip VERSION WINDOWS_PROGRAMS TARGET
#   make_packages.sh deb VERSION VANTREL TARGET
set -euo pipefail
kind=$1
version=$2
built=$(realpath "$3")
target=$(realpath -m "$4")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mkdir -p "$target"

make_zip() {
    local name=quorn_vantrel-$version-windows stage=$target/zip
    rm -rf "$stage" "$target/$name.zip"
    mkdir -p "$stage/$name"
    cp "$built/quorn_vantrel.exe" "$built/vantrel.exe" "$stage/$name/"
    cp -r README.md LICENSE CHANGELOG.md docs "$stage/$name/"
    (cd "$stage" && python3 -m zipfile -c "$target/$name.zip" "$name")
    rm -rf "$stage"
    echo "$target/$name.zip"
}

# The packages of the libraries that the program needs.
dependencies_of() {
    local scratch
    scratch=$(mktemp -d)
    mkdir "$scratch/debian"
    printf 'Source: vantrel\nPackage: vantrel\nArchitecture: any\n' >"$scratch/debian/control"
    (cd "$scratch" && dpkg-shlibdeps -O "$1" 2>/dev/null) | sed 's/^shlibs:Depends=//'
    rm -rf "$scratch"
}

make_deb() {
    local architecture stage=$target/deb name
    rm -rf "$stage"
    architecture=$(dpkg --print-architecture)
    name=vantrel_${version}_$architecture.deb
    install -Ds -m 755 "$built" "$stage/usr/bin/vantrel"
    scripts/make_manual.py "$built" "$target/manual"
    install -D -m 644 "$target/manual/vantrel.1" "$stage/usr/share/man/man1/vantrel.1"
    gzip -9n "$stage/usr/share/man/man1/vantrel.1"
    install -D -m 644 "$target/manual/vantrel.bash" "$stage/usr/share/bash-completion/completions/vantrel"
    install -D -m 644 "$target/manual/_vantrel" "$stage/usr/share/zsh/vendor-completions/_vantrel"
    install -D -m 644 "$target/manual/vantrel.fish" "$stage/usr/share/fish/vendor_completions.d/vantrel.fish"
    install -D -m 644 LICENSE "$stage/usr/share/doc/vantrel/copyright"
    install -D -m 644 -t "$stage/usr/share/doc/vantrel" README.md CHANGELOG.md
    ln -s copyright "$stage/usr/share/doc/vantrel/LICENSE"
    cp -r --no-preserve=mode docs "$stage/usr/share/doc/vantrel/"
    mkdir -p "$stage/DEBIAN"
    cat >"$stage/DEBIAN/control" <<TEXT
Package: vantrel
Version: $version
Architecture: $architecture
Maintainer: The quorn_vantrel authors <quorn-vantrel@example.org>
Installed-Size: $(du -sk "$stage/usr" | cut -f 1)
Depends: $(dependencies_of "$built")
Section: utils
Priority: optional
Description: converter of PlayStation 2 and PSP disc images
 Converts disc images between ISO, IML layout, BIN/CUE, CSO and DAX, checks
 them, and lists and extracts their files.
TEXT
    dpkg-deb --root-owner-group --build "$stage" "$target/$name" >/dev/null
    rm -rf "$stage"
    echo "$target/$name"
}

"make_$kind"
