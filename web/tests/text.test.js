// Text in fonts that are not in the figure: what stands in for them, and how they are measured.

import assert from "node:assert/strict";
import { test } from "node:test";

import { figureOf, itemsOf, pathsOf } from "./drawn_items.js";

/** @param {string} program */
function textsOf(program) {
  return itemsOf(program).flatMap(({ text }) => text ?? []);
}

/** @param {string} program  whose text's glyphs begin at the starts that are returned, in ems */
function startsOf(program) {
  const [{ starts }] = textsOf(program);
  return starts.map((start) => Math.round(start * 1000) / 1000);
}

test("a label in a font that every printer has", () => {
  const [text] = textsOf("/Times-BoldItalic findfont 20 scalefont setfont 5 6 moveto (Ab c) show");
  assert.deepEqual(text.glyphs, ["A", "b", "c"]);
  assert.deepEqual(text.matrix, [20, 0, 0, 20, 5, 6]);
  assert.deepEqual([text.family, text.bold, text.italic], ["serif", true, true]);
  assert.deepEqual(
    text.starts.map((start) => Math.round(start * 1000)),
    [0, 667, 667 + 500 + 250],
  );
});

test("what stands in for fonts after their names", () => {
  const families = ["ArialMT", "NimbusSans-Bold", "CourierNew", "TimesNewRoman", "CMR10", "Symbol"];
  const shown = families.map((name) => textsOf(`/${name} 9 selectfont 0 0 moveto (a) show`)[0]);
  assert.deepEqual(
    shown.map(({ family }) => family),
    ["sans", "sans", "mono", "serif", "serif", "serif"],
  );
  assert.deepEqual(shown[1].bold, true);
  assert.deepEqual(shown[5].glyphs, ["α"]);
  const accents = ["Symbol", "Times"].map(
    (name) => `/${name} findfont /CharStrings get /Idieresis known { 0 0 1 1 rectfill } if`,
  );
  assert.deepEqual(
    accents.map((program) => figureOf(program).list.itemCount),
    [0, 1],
  );
  assert.match(
    figureOf("/ZapfDingbats 9 selectfont 0 0 moveto (a) show").problem ?? "",
    /not drawn: text in ZapfDingbats/,
  );
});

test("encodings, names of glyphs, and accented letters", () => {
  const encoded = `/Helvetica findfont dup length dict begin
    { 1 index /FID ne { def } { pop pop } ifelse } forall
    /Encoding ISOLatin1Encoding 256 array copy def Encoding 65 /uni20AC put Encoding 66 /ccaron put
    currentdict end /Latin exch definefont 10 scalefont setfont 0 0 moveto `;
  const [text] = textsOf(`${encoded} (\\344\\355AB-) show /aogonek glyphshow`);
  assert.deepEqual(text.glyphs, ["ä", "í", "€", "č", "−", "ą"]);
  // An accent adds nothing to the width; an i under one has that of the dotless one.
  const same = `${encoded} (\\344\\355) stringwidth pop 0 lineto (a\\220) stringwidth pop 1 lineto`;
  const [path] = pathsOf(`${same} stroke`);
  assert.equal(path, "M 0 0 L 8.34 0 L 8.34 1");
});

test("the Symbol font has no accented letters, and programs can see it", () => {
  const known = (/** @type {string} */ font, /** @type {string} */ name) =>
    `0 0 moveto /${font} findfont /CharStrings get /${name} known { 1 } { 2 } ifelse 0 lineto stroke`;
  assert.deepEqual(pathsOf(known("Symbol", "Idieresis")), ["M 0 0 L 2 0"]);
  assert.deepEqual(pathsOf(known("Symbol", "alpha")), ["M 0 0 L 1 0"]);
  assert.deepEqual(pathsOf(known("Times-Roman", "Idieresis")), ["M 0 0 L 1 0"]);
  const shown = "/Symbol 9 selectfont 0 0 moveto /Idieresis glyphshow /beta glyphshow";
  assert.deepEqual(textsOf(shown)[0].glyphs, ["β"]);
});

test("spaces between glyphs", () => {
  const font = "/Courier 10 selectfont 1 2 moveto ";
  assert.deepEqual(startsOf(`${font} 1 0 (ab c) ashow`), [0, 0.7, 2.1]);
  assert.deepEqual(startsOf(`${font} 2 0 32 (a bc) widthshow`), [0, 1.4, 2]);
  assert.deepEqual(startsOf(`${font} 2 0 32 1 0 (a bc) awidthshow`), [0, 1.6, 2.3]);
  assert.deepEqual(startsOf(`${font} (abc) [5 7 1] xshow`), [0, 0.5, 1.2]);
  assert.deepEqual(startsOf(`${font} { pop 98 eq { 3 0 rmoveto } if } (abc) kshow`), [0, 0.6, 1.5]);
  assert.deepEqual(startsOf(`${font} (ab) show -6 0 rmoveto (c) show`), [0, 0.6, 0.6]);
  const places = textsOf(`${font} (ab) [5 1 1 1] xyshow`).map(({ matrix }) => matrix.slice(4));
  assert.deepEqual(places, [
    [1, 2],
    [6, 3],
  ]);
  assert.match(figureOf("/Courier 9 selectfont (a) show").problem ?? "", /nocurrentpoint/);
});

test("text turned and slanted keeps to its baseline; another colour begins another text", () => {
  const [text] = textsOf("/Courier [10 0 5 10 0 0] selectfont 90 rotate 0 0 moveto (ab) show");
  assert.deepEqual(text.matrix.map(Math.round), [0, 10, -10, 5, 0, 0]);
  assert.deepEqual(text.glyphs, ["a", "b"]);
  const items = itemsOf("/Courier 9 selectfont 0 0 moveto (a) show 1 0 0 setrgbcolor (b) show");
  assert.deepEqual(
    items.map(({ colour }) => colour),
    ["000000", "ff0000"],
  );
});

test("outlines of a stand-in tell a label's height, but are never painted", () => {
  const label = "/Helvetica 1000 selectfont 0 0 moveto (pH) true charpath ";
  const box = `${label} flattenpath pathbbox newpath moveto lineto stroke`;
  const [path] = pathsOf(box);
  const [left, bottom, top] = [/L (\S+) /, /L \S+ (\S+)/, /M \S+ (\S+)/].map((pattern) =>
    Number(pattern.exec(path ?? "")?.[1]),
  );
  assert.equal(left, 0);
  assert.ok(bottom < -200 && bottom > -230, `${bottom}`);
  assert.ok(top > 700 && top < 740, `${top}`);
  for (const paint of ["fill", "stroke", "flattenpath fill", "clip"]) {
    assert.match(figureOf(`${label} ${paint}`).problem ?? "", /not drawn: outlines/);
  }
});
