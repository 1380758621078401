#!/bin/sh
# Writes a list of what the artefacts of a release contain and are linked with, with versions and licences, to the
# standard output, as SPDX 2.3 in JSON.
# Usage: packaging/sbom/make.sh ARTEFACT...    made of the commit that is checked out, on this computer
# The libraries of a Debian package are read from its programs. What Qt for Windows contains of others is read from its
# source (QUILLON_WINDOWS_SOURCES, else build/windows/sources). A component that components.tsv does not know is an
# error: somebody has to look at its licence first.
set -eu

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
root=$(CDPATH='' cd -- "$here/../.." && pwd)
sources=${QUILLON_WINDOWS_SOURCES:-$root/build/windows/sources}
if [ $# -eq 0 ]; then
    echo "make.sh: name the artefacts" >&2
    exit 2
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
artefacts=$scratch/artefacts   # identifier, file name, checksum, purpose
components=$scratch/components # identifier, key, version, Debian source package, its version
relations=$scratch/relations   # identifier, kind, identifier
: >"$artefacts"
: >"$components"
: >"$relations"

history()
{
    git -c safe.directory='*' -C "$root" "$@"
}

identifier()
{
    printf 'SPDXRef-%s' "$1" | tr -c 'A-Za-z0-9.-' -
}

# Usage: component ARTEFACT KIND KEY VERSION [SOURCE SOURCE-VERSION]
component()
{
    if ! cut -f 1 "$here/components.tsv" | grep -qxF -e "$3"; then
        echo "make.sh: components.tsv does not know $3" >&2
        exit 1
    fi
    printf '%s\t%s\t%s\t%s\t%s\n' "$(identifier "$3")" "$3" "${4%+dfsg*}" "${5-}" "${6-}" >>"$components"
    printf '%s\t%s\t%s\n' "$1" "$2" "$(identifier "$3")" >>"$relations"
}

# Usage: installed ARTEFACT KIND KEY PACKAGE    with the version of an installed package of Debian
installed()
{
    # shellcheck disable=SC2016  # the format is dpkg-query's, not the shell's
    dpkg-query -W -f='${source:Upstream-Version} ${source:Package} ${source:Version}\n' "$4" | sed -n 1p \
        >"$scratch/version"
    read -r upstream source source_version <"$scratch/version"
    component "$1" "$2" "${3:-debian:$source}" "$upstream" "$source" "$source_version"
}

# What the programs of a Debian package are linked with.
debian_package()
{
    rm -rf "$scratch/content"
    dpkg-deb --extract "$2" "$scratch/content"
    find "$scratch/content/usr/bin" -type f -exec objdump -p {} + | sed -n 's/^ *NEEDED *//p' | sort -u \
        >"$scratch/libraries"
    [ -s "$scratch/libraries" ]
    folder=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
    while read -r library; do
        # The same library may have been found by the name of its folder in the root, too.
        owner=$(dpkg-query -S "*/$folder/$library" | sed -n '/^diversion/d; s/:.*//p' | sed -n 1p)
        installed "$1" DYNAMIC_LINK "" "$owner"
    done <"$scratch/libraries"
    installed "$1" CONTAINS inside:qt6-translations-l10n qt6-translations-l10n
}

# The version of a source package that has been unpacked, as its description tells it.
source_version()
{
    sed -n 's/^Version: //p' "$sources/$1"_*.dsc | sed -n 1p
}

windows_programs()
{
    for source in qt6-base sqlite3; do
        version=$(source_version $source)
        component "$1" STATIC_LINK windows:$source "$(echo "$version" | sed 's/-[^-]*$//')" $source "$version"
    done
    # Debian counts its cross compilers anew, behind the version of the compiler.
    # shellcheck disable=SC2016  # the format is dpkg-query's, not the shell's
    component "$1" STATIC_LINK windows:gcc "$(dpkg-query -W -f='${Version}' gcc-mingw-w64-x86-64-posix | sed 's/-.*//')"
    installed "$1" STATIC_LINK windows:mingw-w64 mingw-w64-x86-64-dev
    installed "$1" CONTAINS inside:qt6-translations-l10n qt6-translations-l10n
    # The line ends inside of its texts are not what the format allows.
    find "$sources"/qt6-base-* -name qt_attribution.json -exec sh -c 'for file; do tr "\000-\037" " " <"$file"; done' sh {} + |
        jq -r 'if type == "array" then .[] else . end | [.Id, .Version // ""] | @tsv' >"$scratch/attributions"
    [ -s "$scratch/attributions" ]
    qt=$(source_version qt6-base)
    while IFS="$(printf '\t')" read -r id version; do
        # What has no version of its own has that of the source it lies in.
        [ -n "$version" ] || version="in Qt $qt"
        if ! grep -q "^qt:$id	.*	-\$" "$here/components.tsv"; then
            component "$1" STATIC_LINK "qt:$id" "$version"
        fi
    done <"$scratch/attributions"
}

for file; do
    name=$(basename "$file")
    artefact=$(identifier "artefact-$name")
    purpose=APPLICATION
    case $name in
        *-dbgsym_*.deb) purpose=OTHER ;;
        *.deb) debian_package "$artefact" "$file" ;;
        *-windows-*.zip) windows_programs "$artefact" ;;
        *-windows-*-setup.exe)
            purpose=INSTALL
            windows_programs "$artefact"
            installed "$artefact" CONTAINS windows:nsis nsis ;;
        *.tar.*) purpose=SOURCE ;;
        *)
            echo "make.sh: nobody knows what $name contains" >&2
            exit 1 ;;
    esac
    printf '%s\t%s\t%s\t%s\n' "$artefact" "$name" "$(sha256sum "$file" | cut -d ' ' -f 1)" $purpose >>"$artefacts"
done

jq -n \
    --rawfile artefacts "$artefacts" --rawfile components "$components" --rawfile relations "$relations" \
    --rawfile known "$here/components.tsv" \
    --arg version "$(sed -n 's/^project(Quillon VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")" \
    --arg commit "$(history rev-parse HEAD)" \
    --arg created "$(date -u -d "@$(history log -1 --format=%ct)" +%Y-%m-%dT%H:%M:%SZ)" '
def rows: split("\n") | map(select(. != "" and (startswith("#") | not)) | split("\t"));
def escaped: @uri | gsub("%2F"; "/");
($known | rows | map({key: .[0], value: {name: .[1], licence: .[2], homepage: .[3]}}) | from_entries) as $about
| ($artefacts | rows | map({
    SPDXID: .[0], name: "Quillon", versionInfo: $version, packageFileName: .[1],
    checksums: [{algorithm: "SHA256", checksumValue: .[2]}], primaryPackagePurpose: .[3],
    supplier: "Organization: The Quillon authors", downloadLocation: "NOASSERTION", filesAnalyzed: false,
    licenseConcluded: "MIT", licenseDeclared: "MIT", copyrightText: "Copyright 2026 The Quillon authors"
  })) as $ours
| ($components | rows | unique | map($about[.[1]] as $known | {
    SPDXID: .[0], name: $known.name, versionInfo: .[2], homepage: $known.homepage,
    primaryPackagePurpose: "LIBRARY", supplier: "NOASSERTION", downloadLocation: "NOASSERTION", filesAnalyzed: false,
    licenseConcluded: $known.licence, licenseDeclared: $known.licence, copyrightText: "NOASSERTION"
  } + if .[3] == "" then {} else {externalRefs: [{
    referenceCategory: "PACKAGE-MANAGER", referenceType: "purl",
    referenceLocator: "pkg:deb/debian/\(.[3] | escaped)@\(.[4] | escaped)?arch=source"
  }]} end)) as $others
| {
    spdxVersion: "SPDX-2.3", dataLicense: "CC0-1.0", SPDXID: "SPDXRef-DOCUMENT",
    name: "quillon-\($version)", documentNamespace: "https://quillon.example/spdx/quillon-\($version)-\($commit)",
    creationInfo: {created: $created, creators: ["Organization: The Quillon authors", "Tool: packaging/sbom/make.sh"]},
    packages: ($ours + $others),
    relationships: (($ours | map({
        spdxElementId: "SPDXRef-DOCUMENT", relationshipType: "DESCRIBES", relatedSpdxElement: .SPDXID
      })) + ($relations | rows | unique | map({
        spdxElementId: .[0], relationshipType: .[1], relatedSpdxElement: .[2]
      }))),
    hasExtractedLicensingInfos: [
      {licenseId: "LicenseRef-public-domain", name: "Public domain",
       extractedText: "The author has placed this work in the public domain."},
      {licenseId: "LicenseRef-ICC", name: "ICC License",
       extractedText: "This profile is made available by the International Color Consortium, and may be copied, distributed, embedded, made, used, and sold without restriction. Altered versions of this profile shall have the original identification and copyright information removed and shall not be misrepresented as the original profile."}
    ]
  }'
