#!/usr/bin/python3
"""Packs the application icon's PNG sizes into the macOS .icns the app bundle uses.

The ICNS format is a header and a list of typed chunks; modern chunks hold PNG data as it
is, so no image library is needed. Run after scripts/render-app-icon.sh:

    scripts/make-icns.py
"""
import pathlib
import struct

APP = pathlib.Path(__file__).resolve().parent.parent / "resources" / "app"
# ICNS chunk types that hold PNG images, by pixel size.
CHUNKS = [("icp4", 16), ("icp5", 32), ("icp6", 64), ("ic07", 128), ("ic08", 256), ("ic09", 512)]

body = b""
for kind, size in CHUNKS:
    png = (APP / "icons" / f"{size}x{size}" / "apps" / "com.harrowmere.Tallyfen.png").read_bytes()
    body += kind.encode("ascii") + struct.pack(">I", 8 + len(png)) + png
icns = b"icns" + struct.pack(">I", 8 + len(body)) + body
(APP / "Tallyfen.icns").write_bytes(icns)
print(f"Tallyfen.icns: {len(icns)} bytes, {len(CHUNKS)} sizes")
