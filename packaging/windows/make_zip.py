"""Makes a zip of the files that are named on standard input, one a line.

Usage: make_zip.py ARCHIVE
The names are written as UTF-8 and marked so, whatever the locale; the times are those of the files in the zone TZ. The
same files give the same bytes.
"""
import sys
import zipfile

with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
    for name in sys.stdin.read().splitlines():
        archive.write(name)
