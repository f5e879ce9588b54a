"""Counts the polygons in a PDF file: straight-edged subpaths that are filled, on pages and in forms."""

import re
import subprocess

_OBJECT = re.compile(rb"\n\d+ 0 obj\n(.*?)\nstream\n(.*?)\nendstream\nendobj", re.DOTALL)
# What is no content stream; a filter is left only where qpdf cannot undo it.
_OTHER = re.compile(rb"/Subtype /(?:Image|XML|Type1C|CIDFontType0C|OpenType)|/Length[123] "
                    rb"|/FunctionType|/ShadingType|/PatternType|/Filter|/CIDInit")
_STRING = re.compile(rb"\((?:[^()\\]|\\.)*\)", re.DOTALL)
_OPERATOR = re.compile(rb"(?<![^\s\])>}])(?:m|l|re|[cvy]|[fFbB]\*?|[Ssn])(?!\S)")


def _in_content(content):
    total = in_path = 0
    begun = curved = False
    for found in _OPERATOR.finditer(_STRING.sub(b"", content)):
        operator = found[0]
        if operator == b"m":
            begun = True
        elif operator in (b"l", b"re"):
            in_path += begun or operator == b"re"
            begun = False
        elif operator in (b"c", b"v", b"y"):
            curved = True
        else:
            if operator not in (b"S", b"s", b"n") and not curved:
                total += in_path
            in_path = 0
            begun = curved = False
    return total


def count_polygons(path):
    words = ["qpdf", "--qdf", "--decrypt", "--object-streams=disable", "--no-original-object-ids",
             "--warning-exit-0", path, "-"]
    text = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout
    return sum(_in_content(content) for entries, content in _OBJECT.findall(text)
               if not _OTHER.search(entries))
