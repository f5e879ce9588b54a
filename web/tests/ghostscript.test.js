// The drawings that are compared, against those of another renderer: fonts that are not in the file
// are left aside.

import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { readdirSync, readFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";

import { compare } from "../picture/compare.js";
import { drawSharp } from "../picture/sharp.js";
import { readFigure } from "../postscript/reader.js";
import { root } from "./native.js";
import { readPpm } from "./ppm.js";

/** @typedef {import("../picture/pixmap.js").Pixmap} Pixmap */

const scale = 2;
const header = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 120 90\n";

const curve = "10 10 moveto 20 110 70 100 110 15 curveto";
const bend = "15 15 moveto 60 80 lineto 70 12 lineto 105 75 lineto";

// "L": two stems, the level one half a unit of the screen high.
const outlines = `10 dict begin /FontType 1 def /FontMatrix [0.001 0 0 0.001 0 0] def
  /PaintType 0 def /Encoding StandardEncoding def /FontBBox [0 0 900 900] def
  /Private 5 dict dup begin /lenIV -1 def /Subrs [] def end def
  /CharStrings 3 dict dup begin /.notdef <8bf8ec0d0e> def
    /L <8bf92c0d 8b8b15 f92c06 bd07 fcc806 f8ba07 2706 09 0e> def
  end def currentdict end /Own exch definefont pop /Own`;

const programs = `10 dict begin /FontType 3 def /FontMatrix [0.01 0 0 0.01 0 0] def
  /FontBBox [0 0 100 100] def /Encoding StandardEncoding def
  /BuildChar { exch pop 70 0 0 0 100 100 setcachedevice
    65 eq { 10 10 8 80 rectfill 10 45 40 4 rectfill 60 10 moveto 66 10 lineto 40 90 lineto fill }
    { 60 80 scale 8 8 true [8 0 0 -8 0 8] {<183c66c3ff818181>} imagemask } ifelse } def
  currentdict end /Own exch definefont pop /Own`;

const handMade = {
  "dashes on curves, with every cap": [0, 1, 2]
    .map((cap) => `${cap} setlinecap [9 4 3 4] ${cap} setdash 5 setlinewidth ${curve} stroke`)
    .join(" 0 -12 translate 1 0 0 setrgbcolor "),
  "round joins in short dashes": `1 setlinejoin [4 2] 0 setdash 4 setlinewidth ${curve} stroke`,
  "joins, and pens that are not round": [0, 1, 2]
    .map(
      (join) => `${join} setlinejoin gsave 8 3 scale 1 setlinewidth ${join} .5 mul setgray
      1 ${join} add 4 moveto 6 25 lineto 9 5 lineto 13 20 lineto stroke grestore`,
    )
    .join(" "),
  "thin lines": `0 setlinewidth ${bend} stroke 0.4 setlinewidth 3 2 translate ${bend} stroke`,
  "clips within each other": `${curve} closepath clip newpath 60 40 30 0 360 arc clip newpath
    0 1 40 { dup 40 div 0 1 setrgbcolor 3 mul 0 moveto 9 90 rlineto 4 0 rlineto fill } for`,
  "images, turned and small": `10 5 translate 12 rotate 60 40 scale
    4 4 8 [4 0 0 -4 0 4] {<00408090c0a01020304050607080ff55>} image
    1 0 0 setrgbcolor 1.1 .2 translate .5 dup scale
    8 8 true [8 0 0 -8 0 8] {<183c66c3ff818181>} imagemask`,
  patterns: `<< /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 8 8] /XStep 8 /YStep 8
    /PaintProc { pop 1 0 0 setrgbcolor 1 1 5 3 rectfill } >> matrix makepattern setpattern
    10 10 90 70 rectfill`,
  "glyphs that are outlines": [4, 9, 30]
    .map((size, i) => `${outlines} ${size} selectfont 5.3 ${5 + 20 * i} moveto (LLLL) show`)
    .join(" "),
  "glyphs that are programs": [6, 11, 30]
    .map((size, i) => `${programs} ${size} selectfont 5.3 ${5 + 20 * i} moveto (ABAB) show`)
    .join(" "),
};

/**
 * Nothing is shown in the browser's fonts, which are not at hand here.
 * @param {Uint8Array} figure
 */
function withoutText(figure) {
  const endOfComments = "%%EndComments\n";
  const text = Buffer.from(figure).toString("latin1");
  return Buffer.from(text.replace(endOfComments, `${endOfComments}/show {pop} def\n`), "latin1");
}

/** @param {Uint8Array} figure */
function drawnByGhostscript(figure) {
  const options =
    "-q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=ppmraw -dEPSCrop -sOutputFile=- -sstdout=%stderr";
  const smooth = ["-dGraphicsAlphaBits=1", "-dTextAlphaBits=1"];
  const { status, stdout, stderr } = spawnSync(
    "gs",
    [...options.split(" "), ...smooth, `-r${72 * scale}`, "-"],
    { input: figure, maxBuffer: 1 << 28 },
  );
  assert.equal(status, 0, String(stderr));
  return readPpm(stdout);
}

/**
 * Takes over the colours of another picture that differ by the rounding of a byte.
 * @param {Pixmap} pixmap
 * @param {Pixmap} other
 */
function roundAs({ pixels }, other) {
  const colours = [...new Set(other.pixels)];
  const parts = (/** @type {number} */ colour) => [colour >> 16, (colour >> 8) & 255, colour & 255];
  for (const own of new Set(pixels)) {
    const isNear = (/** @type {number} */ colour) =>
      parts(colour).every((part, i) => Math.abs(part - parts(own)[i]) <= 1);
    const rounded = colours.includes(own) ? own : colours.find(isNear);
    if (rounded === undefined || rounded === own) continue;
    pixels.forEach((colour, i) => colour === own && (pixels[i] = rounded));
  }
}

/** @param {Uint8Array} figure */
function assertDrawnAlike(figure) {
  const { list, problem } = readFigure(figure);
  assert.equal(problem, null);
  const theirs = drawnByGhostscript(figure);
  const { width, height } = theirs;
  const ours = drawSharp(list, { scale, width, height });
  roundAs(theirs, ours);
  const { wrong, pixels, blank } = compare(ours, theirs);
  assert.ok(!blank);
  assert.ok(wrong <= pixels / 2000, `${wrong} of ${pixels} pixels are wrong`);
}

const names = readdirSync(join(root, "tests/batch/figures")).filter((name) =>
  name.endsWith(".eps"),
);
for (const name of ["examples/surface.eps", ...names.map((one) => `tests/batch/figures/${one}`)]) {
  test(`${name} is drawn as by Ghostscript`, () => {
    assertDrawnAlike(withoutText(readFileSync(join(root, name))));
  });
}

for (const [name, program] of Object.entries(handMade)) {
  test(`${name} are drawn as by Ghostscript`, () => {
    assertDrawnAlike(Buffer.from(`${header}${program}\nshowpage\n`));
  });
}
