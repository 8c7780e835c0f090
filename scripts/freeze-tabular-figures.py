#!/usr/bin/python3
"""Makes "Inter Tabular": Inter with its tabular figures as the default glyphs.

Qt before 6.7 cannot switch on an OpenType feature such as `tnum`, so the app ships a
second family whose character map points every figure (and the punctuation that goes
with numbers) straight at its tabular glyph. Run once when the bundled Inter changes:

    scripts/freeze-tabular-figures.py

Needs python3-fonttools (Debian) at commit time only; the output is committed.

The faces are kept as plain TrueType, not WOFF: FreeType would inflate a WOFF file again
each time Qt opens a face from it, which is most of what loading the fonts costs at start.
"""
import pathlib
import sys

from fontTools.ttLib import TTFont

FAMILY = "Inter Tabular"
FONTS = pathlib.Path(__file__).resolve().parent.parent / "resources" / "fonts"


def tabular_mapping(font):
    gsub = font["GSUB"].table
    mapping = {}
    for record in gsub.FeatureList.FeatureRecord:
        if record.FeatureTag != "tnum":
            continue
        for index in record.Feature.LookupListIndex:
            lookup = gsub.LookupList.Lookup[index]
            for subtable in lookup.SubTable:
                if lookup.LookupType == 7:  # extension
                    subtable = subtable.ExtSubTable
                mapping.update(getattr(subtable, "mapping", {}))
    return mapping


def freeze(source, target):
    font = TTFont(source)
    font.flavor = None
    mapping = tabular_mapping(font)
    if not mapping:
        sys.exit(f"{source.name}: no tabular figures to freeze")
    for table in font["cmap"].tables:
        for code, glyph in list(table.cmap.items()):
            if glyph in mapping:
                table.cmap[code] = mapping[glyph]
    names = font["name"]
    style = names.getDebugName(2) or "Regular"
    for record in list(names.names):
        if record.nameID in (1, 16):
            names.setName(FAMILY, record.nameID, record.platformID, record.platEncID, record.langID)
        elif record.nameID in (3, 4):
            names.setName(f"{FAMILY} {style}", record.nameID, record.platformID, record.platEncID, record.langID)
        elif record.nameID == 6:
            names.setName(f"{FAMILY.replace(' ', '')}-{style}", 6, record.platformID, record.platEncID, record.langID)
    font.save(target)
    print(f"{target.name}: {len(mapping)} glyphs made default")


for weight in ("400", "500", "600"):
    freeze(FONTS / f"inter-latin-{weight}-normal.ttf", FONTS / f"inter-tabular-latin-{weight}-normal.ttf")
