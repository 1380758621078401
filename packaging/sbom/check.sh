#!/bin/sh
# Looks whether a list of components has everything that SPDX 2.3 wants, and whether it is true for the artefacts
# beside it: each is described with its checksum, and nothing else is.
# Usage: packaging/sbom/check.sh LIST    says what is wrong and ends with 1
set -eu

if [ $# -ne 1 ] || [ ! -f "$1" ]; then
    echo "check.sh: name a list of components" >&2
    exit 2
fi
list=$1
wrong=$(jq -r '
# The licences of the SPDX list that have been looked at so far.
["MIT", "blessing", "Unicode-DFS-2016", "LGPL-2.1-or-later", "LGPL-3.0-only", "GPL-2.0-only", "GPL-3.0-only",
 "GPL-3.0-or-later", "ZPL-2.1", "BSD-2-Clause", "BSD-3-Clause", "Zlib", "Libpng", "libpng-2.0", "IJG", "FTL",
 "MIT-open-group", "CC0-1.0", "Apache-2.0", "Imlib2", "X11", "HPND", "CPL-1.0"] as $licences
| ["GCC-exception-3.1", "LZMA-exception", "Qt-GPL-exception-1.0"] as $exceptions
| ["DESCRIBES", "CONTAINS", "DYNAMIC_LINK", "STATIC_LINK"] as $kinds
| ["APPLICATION", "INSTALL", "SOURCE", "LIBRARY", "OTHER"] as $purposes
| def text: type == "string" and . != "";
  def identifier: text and test("^SPDXRef-[A-Za-z0-9.-]+$");
  ([.hasExtractedLicensingInfos[]? | .licenseId]) as $own
| def licence:
    text and ([splits(" (AND|OR) ")] | all(
      (. as $one | ($licences + $own) | index($one)) != null or
      (split(" WITH ") | length == 2 and (.[0] as $one | $licences | index($one)) != null
        and (.[1] as $one | $exceptions | index($one)) != null)));
  [.packages[]? | .SPDXID] as $ids
| (if .spdxVersion == "SPDX-2.3" then empty else "spdxVersion" end),
  (if .dataLicense == "CC0-1.0" then empty else "dataLicense" end),
  (if .SPDXID == "SPDXRef-DOCUMENT" then empty else "SPDXID of the document" end),
  (if .name | text then empty else "name of the document" end),
  (if .documentNamespace | text and test("^[a-z]+://[^#]+$") then empty else "documentNamespace" end),
  (if .creationInfo.created | text and test("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ$") then empty
   else "creationInfo.created" end),
  (if .creationInfo.creators | type == "array" and length > 0
     and all(test("^(Person|Organization|Tool): .")) then empty else "creationInfo.creators" end),
  (.hasExtractedLicensingInfos[]? | select((.licenseId | text and test("^LicenseRef-[A-Za-z0-9.-]+$") | not)
     or (.extractedText | text | not)) | "licence of our own: \(.licenseId)"),
  (if $ids | length > 1 then empty else "there are no packages" end),
  (if ($ids | unique | length) == ($ids | length) then empty else "an SPDXID stands twice" end),
  (.packages[]? | .SPDXID as $id |
    (if $id | identifier then empty else "SPDXID: \($id)" end),
    (if .name | text then empty else "\($id): name" end),
    (if .versionInfo | text then empty else "\($id): versionInfo" end),
    (if .downloadLocation | text then empty else "\($id): downloadLocation" end),
    (if .filesAnalyzed == false then empty else "\($id): filesAnalyzed without files" end),
    (if .licenseConcluded | licence then empty else "\($id): licenseConcluded \(.licenseConcluded)" end),
    (if .licenseDeclared | licence then empty else "\($id): licenseDeclared \(.licenseDeclared)" end),
    (if .copyrightText | text then empty else "\($id): copyrightText" end),
    (if .primaryPackagePurpose as $purpose | $purposes | index($purpose) then empty
     else "\($id): primaryPackagePurpose" end),
    (.checksums[]? | select(.algorithm != "SHA256" or (.checksumValue | text and test("^[0-9a-f]{64}$") | not))
      | "\($id): checksums"),
    (.externalRefs[]? | select((.referenceCategory | text | not) or (.referenceType | text | not)
      or (.referenceLocator | text and test("^pkg:deb/debian/[^ @]+@[^ @]+$") | not)) | "\($id): externalRefs")),
  (.relationships[]? |
    select((.relationshipType as $kind | $kinds | index($kind) | not)
      or (.spdxElementId as $id | ($ids + ["SPDXRef-DOCUMENT"]) | index($id) | not)
      or (.relatedSpdxElement as $id | $ids | index($id) | not)) | "relationship: \(tojson)"),
  ([.relationships[]? | .relatedSpdxElement] as $related | $ids - $related | .[] | "nothing leads to \(.)"),
  ([.relationships[]? | select(.relationshipType == "DESCRIBES") | .relatedSpdxElement] as $described
    | .packages[]? | select((.SPDXID as $id | $described | index($id) | not) == has("packageFileName"))
    | "\(.SPDXID): is an artefact or is not"),
  # A list that has lost what the artefacts are made of is as well-formed as any.
  (.relationships as $all | .packages[]? | select(.packageFileName | text) | .SPDXID as $id | .packageFileName as $file
    | ([$all[]? | select(.spdxElementId == $id and .relationshipType != "DESCRIBES") | .relatedSpdxElement]) as $held
    | (if $file | test("-windows-") then
         ["windows-qt6-base", "windows-sqlite3", "windows-gcc", "windows-mingw-w64", "qt-zlib", "qt-libpng",
          "qt-libjpeg", "qt-freetype", "qt-harfbuzz-ng", "qt-pcre2", "inside-qt6-translations-l10n"]
         + (if $file | endswith("-setup.exe") then ["windows-nsis"] else [] end)
       elif $file | test("^quillon_.*[.]deb$") then
         ["debian-qt6-base", "debian-sqlite3", "debian-icu", "debian-glib2.0", "inside-qt6-translations-l10n"]
       else [] end)
    | .[] | "SPDXRef-\(.)" | select(. as $part | $held | index($part) | not) | "\($file): holds no \(.)")
' "$list") || wrong="$list is no list of this kind"

# Against what lies beside it.
folder=$(dirname -- "$list")
described=$(jq -r '.packages[]? | select(.packageFileName) | "\(.checksums[0].checksumValue)  \(.packageFileName)"' \
    "$list" 2>/dev/null) || described=
present=$(cd "$folder" && find . -maxdepth 1 -type f ! -name '*.spdx.json' ! -name SHA256SUMS ! -name '*.log' -printf '%P\n' |
    sort | xargs -r sha256sum)
if [ "$(echo "$described" | sort -k 2)" != "$(echo "$present" | sort -k 2)" ]; then
    wrong="$wrong
the artefacts are others: $(printf '%s\n%s\n' "$described" "$present" | sort | uniq -u)"
fi
if [ -n "$wrong" ]; then
    echo "check.sh: what is wrong in $list:" >&2
    echo "$wrong" | sed '/^$/d; s/^/  /' >&2
    exit 1
fi
