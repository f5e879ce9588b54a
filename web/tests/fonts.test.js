// Fonts that are in the figure: their outlines, and the programs that are glyphs.

import assert from "node:assert/strict";
import { test } from "node:test";

import { kind } from "../picture/display_list.js";
import { figureOf, itemsOf, pathsOf } from "./drawn_items.js";
import { squareFont } from "./square_font.js";

// The commands of glyphs' programs.
const width = 13;
const lineBy = 5;
const curveBy = 8;
const close = 9;
const callSubroutine = 10;
const back = 11;
const end = 14;
const moveBy = 21;
const across = 6;
const up = 7;
const moveAcross = 22;
const divide = [12, 12];
const callOther = [12, 16];
const pop = [12, 17];
const goTo = [12, 33];
const accented = [12, 6];

/** @param {number} value */
function n(value) {
  if (Math.abs(value) <= 107) return [value + 139];
  const amount = Math.abs(value) - 108;
  return [(value > 0 ? 247 : 251) + (amount >> 8), amount & 255];
}

/** @param {(number | number[] | (number | number[])[])[]} parts */
function hex(...parts) {
  return Buffer.from(parts.flat(2)).toString("hex");
}

const square = [n(100), across, n(100), up, n(-100), across, close];

/**
 * @param {Record<string, string>} glyphs  programs as hexadecimal digits
 * @param {string[]} subroutines
 */
function fontProgram(glyphs, subroutines = []) {
  const charstrings = Object.entries(glyphs).map(([name, program]) => `/${name} <${program}> def`);
  return `10 dict begin /FontType 1 def /FontMatrix [0.001 0 0 0.001 0 0] def /PaintType 0 def
    /Encoding StandardEncoding def
    /Private 5 dict dup begin /lenIV -1 def
      /Subrs [${subroutines.map((program) => `<${program}>`).join(" ")}] def end def
    /CharStrings 9 dict dup begin /.notdef <${hex(n(0), n(300), width, end)}> def
      ${charstrings.join("\n")} end def
    currentdict end /Own exch definefont 1000 scalefont setfont `;
}

test("outlines of charstrings: lines, curves, subroutines, numbers of all sizes", () => {
  const font = fontProgram(
    {
      A: hex(n(10), n(600), width, n(0), n(-20), moveBy, n(0), callSubroutine, end),
      B:
        hex(n(0), n(1001), n(2), divide, width, n(-500), n(5), moveBy, n(1), n(2), lineBy) +
        hex(n(1), n(1), n(2), n(2), n(3), n(3), curveBy, close, [255, 0, 0, 2, 0], moveAcross, end),
    },
    [hex(square, back)],
  );
  assert.deepEqual(pathsOf(`${font} 5 7 moveto (AB) show`), [
    "M 15 -13 L 115 -13 L 115 87 L 15 87 Z",
    "M 105 12 L 106 14 C 107 15 109 17 112 20 Z M 624 20",
  ]);
  assert.deepEqual(
    itemsOf(`${font} 5 7 moveto (AB) show`).map((item) => item.kind),
    [kind.glyph, kind.glyph],
  );
  assert.deepEqual(pathsOf(`${font} 0 0 moveto (AB?) stringwidth rlineto stroke`), [
    "M 0 0 L 1400.5 0",
  ]);
});

test("flat curves and accented letters", () => {
  const flex = [n(1), callSubroutine];
  const point = (/** @type {number} */ x, /** @type {number} */ y) => [
    n(x),
    n(y),
    moveBy,
    n(2),
    callSubroutine,
  ];
  const font = fontProgram(
    {
      A: hex(
        n(0),
        n(500),
        width,
        n(0),
        n(0),
        moveBy,
        flex.flat(),
        ...[
          point(30, 0),
          point(-20, 0),
          point(10, 5),
          point(10, 0),
          point(10, 0),
          point(10, -5),
          point(10, 0),
        ].flat(),
        n(50),
        n(60),
        n(0),
        n(0),
        callSubroutine,
        close,
        end,
      ),
      e: hex(n(10), n(400), width, n(0), n(0), moveBy, square, end),
      acute: hex(n(30), n(300), width, n(0), n(0), moveBy, square, end),
      eacute: hex(n(10), n(400), width, n(30), n(70), n(200), n(101), n(194), accented),
    },
    [
      hex(n(3), n(0), callOther, pop, pop, goTo, back),
      hex(n(0), n(1), callOther, back),
      hex(n(0), n(2), callOther, back),
    ],
  );
  assert.deepEqual(pathsOf(`${font} 0 0 moveto (A) show`), [
    "M 0 0 C 10 0 20 5 30 5 C 40 5 50 0 60 0 Z",
  ]);
  assert.deepEqual(pathsOf(`${font} 0 0 moveto /eacute glyphshow`), [
    "M 10 0 L 110 0 L 110 100 L 10 100 Z M 80 200 L 180 200 L 180 300 L 80 300 Z",
  ]);
});

test("fonts are decrypted, and the figure goes on behind them", () => {
  /** @param {string} plain */
  const encrypted = (plain) => {
    let key = 55665;
    const coded = [];
    for (const byte of Buffer.from(`\xffabc${plain}`, "latin1")) {
      coded.push(byte ^ (key >> 8));
      key = ((coded[coded.length - 1] + key) * 52845 + 22719) & 0xffff;
    }
    return Buffer.from(coded);
  };
  const hidden = encrypted(
    "userdict /x 42 put userdict /y currentfile 3 string readstring AB} " +
      "pop put mark currentfile closefile ",
  );
  const after = "\n0000000000000000\ncleartomark x 0 moveto y length 1 lineto stroke";
  const expected = ["M 42 0 L 3 1"];
  assert.deepEqual(pathsOf(`currentfile eexec\n${hidden.toString("hex")}${after}`), expected);
  const binary = Buffer.concat([Buffer.from("currentfile eexec "), hidden, Buffer.from(after)]);
  assert.deepEqual(pathsOf(binary), expected);
});

test("outlines of TrueType fonts, in parts too", () => {
  const font = `9 dict begin /FontType 42 def /FontMatrix [1 0 0 1 0 0] def /PaintType 0 def
    /Encoding StandardEncoding def /sfnts [<${squareFont()}00>] def
    /CharStrings 3 dict dup begin /.notdef 0 def /A 1 def /B 2 def end def
    currentdict end /Own exch definefont 10 scalefont setfont `;
  const box = "M 0 0 L 10 0 L 10 5 C 10 8.333 6.667 10 0 10 L 0 0 Z";
  assert.deepEqual(pathsOf(`${font} 0 0 moveto (A) show`), [box]);
  assert.deepEqual(pathsOf(`${font} 1 0 moveto (AB) false charpath fill`), [
    `M 1 0 L 11 0 L 11 5 C 11 8.333 7.667 10 1 10 L 1 0 Z ` +
      `M 16 2.5 L 21 2.5 L 21 5 C 21 6.667 19.333 7.5 16 7.5 L 16 2.5 Z`,
  ]);
});

test("codes of two bytes", () => {
  const shared = `/FontMatrix [1 0 0 1 0 0] /PaintType 0 /Encoding StandardEncoding
    /sfnts [<${squareFont()}00>] /CharStrings << /.notdef 0 /A 1 /B 2 >>`;
  const half = "L 5 0 L 5 2.5 C 5 4.167 3.333 5 0 5 L 0 0 Z";
  const fonts = `/Part << /FontType 42 ${shared} >> definefont pop
    /Whole << /FontType 0 /FMapType 2 /FontMatrix [0.5 0 0 0.5 0 0] /Encoding [0 0]
      /FDepVector [/Part findfont] >> definefont pop /Whole 10 selectfont 0 0 moveto `;
  assert.deepEqual(pathsOf(`${fonts} <01410041> show`), [
    `M 0 0 ${half}`,
    `M 5 0 L 10 0 L 10 2.5 C 10 4.167 8.333 5 5 5 L 5 0 Z`,
  ]);
  const numbered = `/Numbered << /CIDFontType 2 /GDBytes 2 /CIDMap <00000002000100> ${shared} >>
      /CIDFont defineresource pop
    /Whole /Identity-H [/Numbered] composefont pop /Whole 5 selectfont 0 0 moveto `;
  assert.deepEqual(pathsOf(`${numbered} <0002> show`), [`M 0 0 ${half}`]);
  assert.match(
    figureOf(`${numbered.replace("Identity-H", "Other")} <0002> show`).problem ?? "",
    /not drawn: a font made of fonts/,
  );
});

test("glyphs that are procedures", () => {
  const font = `9 dict begin /FontType 3 def /FontMatrix [0.1 0 0 0.1 0 0] def
    /Encoding StandardEncoding def /FontBBox [0 0 9 9] def
    /BuildGlyph { exch pop
      /A eq { 8 0 0 0 9 9 setcachedevice 0 1 0 setrgbcolor } { 5 0 setcharwidth 1 0 0 setrgbcolor }
      ifelse 0 0 4 4 rectfill } def
    currentdict end /Own exch definefont 10 scalefont setfont 0 0 1 setrgbcolor `;
  assert.deepEqual(itemsOf(`${font} 1 1 moveto (AB) show 0 5 rlineto stroke`), [
    { colour: "0000ff", kind: kind.fill, path: "M 1 1 L 5 1 L 5 5 L 1 5 Z" },
    { colour: "ff0000", kind: kind.fill, path: "M 9 1 L 13 1 L 13 5 L 9 5 Z" },
    { colour: "0000ff", kind: kind.stroke, path: "M 14 1 L 14 6" },
  ]);
  assert.deepEqual(pathsOf(`${font} 3 3 moveto (AB) stringwidth lineto stroke`), ["M 3 3 L 13 0"]);
});

test("stroked outlines, own widths, and fonts that cannot be drawn", () => {
  const font = fontProgram({ A: hex(n(0), n(600), width, n(0), n(0), moveBy, square, end) });
  const changed = `currentfont dup length 2 add dict begin { def } forall
    /PaintType 2 def /StrokeWidth 3 def /Metrics 1 dict def Metrics /A 50 put
    currentdict end /Other exch definefont setfont 0 0 moveto (AA) show`;
  const { list, problem } = figureOf(font + changed);
  assert.equal(problem, null);
  assert.equal(list.pens[0].width, 3);
  assert.deepEqual([...list.kinds.values.subarray(0, 2)], [kind.stroke, kind.stroke]);
  assert.equal(list.coordinates.values[list.coordinateStarts.values[1]], 50);

  const endless = fontProgram({ A: hex(n(0), callSubroutine) }, [hex(n(0), callSubroutine)]);
  assert.match(figureOf(`${endless} 0 0 moveto (A) show`).problem ?? "", /invalidfont/);
  const composite = "<< /FontType 0 /FontMatrix matrix >> setfont 0 0 moveto (AB) show";
  assert.match(figureOf(composite).problem ?? "", /not drawn: a font made of fonts/);
});
