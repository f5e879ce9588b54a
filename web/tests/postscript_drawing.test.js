// Figures and the display lists that they become.

import assert from "node:assert/strict";
import { test } from "node:test";

import { readFigure } from "../postscript/reader.js";
import { figureOf } from "./drawn_items.js";
import { stringOf } from "../postscript/values.js";

/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */

const header = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 100 80\n%%EndComments\n";
const triangle = "0 0 moveto 9 0 lineto 0 9 lineto closepath ";

/** @param {string} text */
const read = (text) => readFigure(stringOf(text).bytes);

/**
 * A path's parts, rounded to hundredths.
 * @param {DisplayList} list
 * @param {number} path
 */
function pathText(list, path) {
  let at = list.coordinateStarts.values[path];
  const parts = [];
  for (let i = list.verbStarts.values[path]; i < list.verbEnd(path); ++i) {
    const what = list.verbs.values[i];
    const count = [2, 2, 6, 0][what];
    const numbers = Array.from(list.coordinates.values.subarray(at, at + count), (value) =>
      String(Math.round(value * 100) / 100 + 0),
    );
    at += count;
    parts.push("MLCZ"[what] + numbers.join(" "));
  }
  return parts.join(" ");
}

/** @param {DisplayList} list @param {number} clip @returns {string} */
function clipText(list, clip) {
  if (clip < 0) return "";
  const { parent, path, evenOdd } = list.clips[clip];
  return `${clipText(list, parent)} ${evenOdd ? "even-odd " : ""}in ${pathText(list, path)}`;
}

/**
 * What a program draws, an item a line.
 * @param {string} program
 */
function drawn(program) {
  const { list, problem } = read(header + program);
  assert.equal(problem, null, program);
  return Array.from({ length: list.itemCount }, (_, i) => {
    const what = ["fill", "eofill", "stroke"][list.kinds.values[i]];
    const colour = list.colours.values[i].toString(16).padStart(6, "0");
    const path = pathText(list, list.subjects.values[i]);
    return `${what} ${colour} ${path}${clipText(list, list.clipIndices.values[i])}`;
  });
}

/**
 * The one path that a program fills.
 * @param {string} program
 */
function filled(program) {
  return drawn(`${program} fill`).map((item) => item.replace("fill 000000 ", ""));
}

test("paths", () => {
  const cases = [
    [triangle, "M0 0 L9 0 L0 9 Z"],
    ["1 1 moveto 2 2 moveto 1 2 rlineto 3 -1 rmoveto 0 5 rlineto", "M2 2 L3 4 M6 3 L6 8"],
    ["0 0 moveto 1 2 3 4 5 6 curveto 1 0 1 1 0 1 rcurveto", "M0 0 C1 2 3 4 5 6 C6 6 6 7 5 7"],
    [`${triangle} 5 5 lineto`, "M0 0 L9 0 L0 9 Z M0 0 L5 5"],
    ["10 10 5 0 90 arc", "M15 10 C15 12.76 12.76 15 10 15"],
    ["2 0 moveto 0 0 1 90 0 arcn", "M2 0 L0 1 C0.55 1 1 0.55 1 0"],
    ["0 0 moveto 10 0 10 10 2 arct", "M0 0 L8 0 C9.1 0 10 0.9 10 2"],
    ["0 0 moveto 10 0 10 10 2 arcto moveto lineto", "M0 0 L8 0 C9.1 0 10 0.9 10 2 M10 2 L8 0"],
    [`${triangle} 7 7 moveto`, "M0 0 L9 0 L0 9 Z"],
    ["3 4 5 6 newpath moveto lineto", "M5 6 L3 4"],
    [`${triangle} reversepath`, "M0 9 L9 0 L0 0 Z"],
    ["0 0 moveto 1 2 3 4 5 6 curveto reversepath", "M5 6 C3 4 1 2 0 0"],
    [`${triangle} pathbbox 4 2 roll moveto lineto`, "M0 0 L9 0 L0 9 Z M0 0 L9 9"],
    [
      `2 2 scale ${triangle} {newpath exch moveto} {exch lineto} {} {1 1 lineto} pathforall`,
      "M0 0 L0 18 L18 0 L2 2",
    ],
    ["5 5 moveto currentpoint 3 add lineto", "M5 5 L5 8"],
  ];
  for (const [program, path] of cases) assert.deepEqual(filled(program), [path], program);
  const flat = filled("0 0 moveto 0 10 10 10 10 0 curveto flattenpath")[0];
  assert.ok(!flat.includes("C") && flat.includes(" L5 7.5 ") && flat.endsWith(" L10 0"), flat);
});

test("the current matrix moves what is drawn, never what was drawn before", () => {
  assert.deepEqual(filled("10 20 translate 0 0 moveto 2 3 scale 1 1 lineto 90 rotate 1 0 lineto"), [
    "M10 20 L12 23 L10 23",
  ]);
  assert.deepEqual(filled("matrix currentmatrix 5 5 translate setmatrix 0 0 moveto 1 1 lineto"), [
    "M0 0 L1 1",
  ]);
  assert.deepEqual(filled("[1 0 .5 1 3 4] concat 0 0 moveto 0 2 lineto initmatrix 7 7 lineto"), [
    "M3 4 L4 6 L7 7",
  ]);
  assert.deepEqual(
    filled("3 4 2 3 matrix scale transform moveto 6 6 transform 2 2 scale itransform lineto"),
    ["M6 12 L6 6"],
  );
});

test("widths that a program rounds to the dots of its device stay what they are", () => {
  const { list } = read(
    `${header} 0 0.5 dtransform truncate idtransform setlinewidth pop ${triangle} stroke`,
  );
  assert.equal(list.pens[0].width, 0.5);
});

test("colours", () => {
  const cases = [
    ["0.5 setgray", "808080"],
    ["1 0.2 0 setrgbcolor", "ff3300"],
    ["2 -1 0 setrgbcolor", "ff0000"],
    ["0.2 0 1 0.2 setcmykcolor", "99cc00"],
    ["1 3 div 1 1 sethsbcolor", "00ff00"],
    ["/DeviceCMYK setcolorspace", "000000"],
    ["[/DeviceRGB] setcolorspace 0 0 1 setcolor", "0000ff"],
    ["[/Indexed /DeviceRGB 1 <000000 00FF10>] setcolorspace 1 setcolor", "00ff10"],
    ["[/Separation /Ink /DeviceRGB {0 exch 0}] setcolorspace 0.2 setcolor", "003300"],
    ["1 0 0 setrgbcolor currentrgbcolor 0 setgray 3 1 roll setrgbcolor", "00ff00"],
    ["[/CIEBasedABC << /RangeABC [0 1 0 1 0 1] >>] setcolorspace 1 0 1 setcolor", "ff00ff"],
    ["0.25 setgray gsave 1 setgray grestore", "404040"],
    ["0.25 setgray grestore", "000000"],
    ["0 1 1 setrgbcolor currenthsbcolor 0 setgray sethsbcolor", "00ffff"],
  ];
  for (const [program, colour] of cases) {
    assert.equal(drawn(`${program} ${triangle} fill`)[0].slice(5, 11), colour, program);
  }
});

test("painting ends the path, but in gsave", () => {
  const path = "M0 0 L9 0 L0 9 Z";
  assert.deepEqual(drawn(`${triangle} gsave eofill grestore stroke fill`), [
    `eofill 000000 ${path}`,
    `stroke 000000 ${path}`,
  ]);
  assert.deepEqual(drawn(`${triangle} gsave 5 5 lineto stroke grestore fill`), [
    `stroke 000000 ${path} M0 0 L5 5`,
    `fill 000000 ${path}`,
  ]);
  assert.deepEqual(drawn(`${triangle} 1 2 3 4 rectfill [5 6 1 1 8 8 1 1] rectstroke fill`), [
    "fill 000000 M1 2 L4 2 L4 6 L1 6 Z",
    "stroke 000000 M5 6 L6 6 L6 7 L5 7 Z M8 8 L9 8 L9 9 L8 9 Z",
    `fill 000000 ${path}`,
  ]);
  assert.deepEqual(drawn("fill stroke 3 3 moveto fill"), []);
  assert.deepEqual(drawn("0 0 1 1 rectclip erasepage"), [
    "fill ffffff M0 0 L100 0 L100 80 L0 80 Z",
  ]);
});

test("clips", () => {
  const box = "in M0 0 L5 0 L5 5 L0 5 Z";
  const inner = "in M1 1 L3 1 L3 3 L1 3 Z";
  assert.deepEqual(
    drawn(`gsave 0 0 5 5 rectclip ${triangle} fill ${triangle} eoclip fill grestore
      clipsave 1 1 2 2 rectclip clippath fill cliprestore ${triangle} fill`),
    [
      `fill 000000 M0 0 L9 0 L0 9 Z ${box}`,
      `fill 000000 M0 0 L9 0 L0 9 Z ${box} even-odd in M0 0 L9 0 L0 9 Z`,
      `fill 000000 M1 1 L3 1 L3 3 L1 3 Z ${inner}`,
      "fill 000000 M0 0 L9 0 L0 9 Z",
    ],
  );
  assert.deepEqual(filled("clippath"), ["M0 0 L100 0 L100 80 L0 80 Z"]);
  assert.equal(
    filled("0 0 5 5 rectclip 3 2 9 9 rectclip clippath")[0].split(" in ")[0],
    "M3 2 L5 2 L5 5 L3 5 Z",
  );
  const polygon = `gsave 0 0 50 50 rectclip ${triangle} fill grestore `;
  const other = `gsave 0 0 50 60 rectclip ${triangle} fill grestore `;
  assert.equal(read(header + (polygon + other).repeat(20)).list.clips.length, 2);
});

test("patterns are drawn cell by cell where they meet the area", () => {
  const cell = (/** @type {number} */ paintType) => `<< /PatternType 1 /PaintType ${paintType}
    /TilingType 1 /BBox [0 0 4 4] /XStep 5 /YStep 10
    /PaintProc { pop 0.2 0.4 0.6 ${paintType === 1 ? "setrgbcolor" : "pop pop pop"} 1 1 2 2 rectfill }
    >> matrix makepattern`;
  const area = "6 1 7 2 rectfill";
  const clipped = "in M6 1 L13 1 L13 3 L6 3 Z in M";
  const square = (/** @type {number} */ x) => `M${x} 1 L${x + 2} 1 L${x + 2} 3 L${x} 3 Z`;
  const items = (/** @type {string} */ colour) => [
    `fill ${colour} ${square(6)} ${clipped}5 0 L9 0 L9 4 L5 4 Z`,
    `fill ${colour} ${square(11)} ${clipped}10 0 L14 0 L14 4 L10 4 Z`,
  ];
  assert.deepEqual(drawn(`${cell(1)} setpattern ${area}`), items("336699"));
  assert.deepEqual(
    drawn(`[/Pattern /DeviceRGB] setcolorspace 1 0 0 ${cell(2)} setcolor ${area}`),
    items("ff0000"),
  );
  assert.deepEqual(drawn(`${cell(1)} setpattern 0 setgray 0 0 5 5 rectfill`), [
    "fill 000000 M0 0 L5 0 L5 5 L0 5 Z",
  ]);
  const { problem } = read(`${header} ${cell(1)} setpattern ${triangle} stroke`);
  assert.equal(problem, "not drawn: a pattern");
  const ofImage = (/** @type {number} */ size) => `<< /PatternType 1 /PaintType 1 /TilingType 1
    /BBox [0 0 8 8] /XStep 8 /YStep 8 /PaintProc { pop ${size} 1 scale
    2 2 8 [2 0 0 2 0 0] {<00ff00ff>} image } >> matrix makepattern setpattern ${area}`;
  assert.equal(read(header + ofImage(8)).problem, null);
  assert.equal(read(header + ofImage(0.9)).problem, "not drawn: a pattern of a fine image");
});

test("pens", () => {
  const stroke = `${triangle} stroke `;
  const { list } = read(
    `${header} ${stroke} gsave 3 setlinewidth 1 setlinecap 2 setlinejoin 4 setmiterlimit
    [3 1] 2 setdash 2 2 scale ${stroke} grestore 7 7 translate ${stroke}
    3 setlinewidth ${stroke} 1 setlinewidth ${stroke}`,
  );
  assert.deepEqual(Array.from(list.penIndices.values.subarray(0, list.itemCount)), [0, 1, 0, 2, 0]);
  assert.deepEqual(list.pens[1], {
    width: 3,
    cap: 1,
    join: 2,
    miterLimit: 4,
    dashes: [3, 1],
    dashOffset: 2,
    matrix: [2, 0, 0, 2, 0, 0],
  });
});

test("save and restore, gsave and grestore in each other", () => {
  const at = (/** @type {string} */ item) => item.slice(5, 11);
  const paint = `${triangle} fill `;
  assert.deepEqual(
    drawn(`1 setgray save 0.2 setgray gsave 0.4 setgray grestore ${paint}
      grestore ${paint} grestore ${paint} 0.6 setgray gsave restore ${paint}`).map(at),
    ["333333", "ffffff", "ffffff", "ffffff"],
  );
  assert.deepEqual(
    drawn(`0.2 setgray gstate 1 setgray setgstate gsave gsave 0 setgray grestoreall ${paint}`).map(
      at,
    ),
    ["333333"],
  );
});

test("the frame", () => {
  const box = (/** @type {string} */ comments) => read(`%!PS\n${comments}`).list.box;
  assert.deepEqual(box("%%BoundingBox: 1 2 30 40\n"), [1, 2, 30, 40]);
  assert.deepEqual(
    box("%%BoundingBox: 1 2 30 40\r\n%%HiResBoundingBox: 1.5 2.5 29.5 39.5\r\n%%EndComments\r\n"),
    [1.5, 2.5, 29.5, 39.5],
  );
  assert.deepEqual(
    box(`%%BoundingBox: (atend)\n%%EndComments\n%%BeginDocument: x\n%%BoundingBox: 0 0 1 1
%%EndDocument\n%%BoundingBox: 0 0 2 2\n%%Trailer\n%%BoundingBox: 3 3 4 4\n`),
    [3, 3, 4, 4],
  );
});

test("what cannot be drawn is said", () => {
  const cases = [
    ["<< /ShadingType 1 >> shfill", "not drawn: shfill"],
    [`<< >> matrix makepattern setpattern ${triangle} fill`, "not drawn: a pattern"],
    [`${triangle} strokepath fill`, "not drawn: strokepath"],
    [`{1 exch sub} settransfer ${triangle} fill`, "not drawn: settransfer"],
    [
      "[/CIEBasedABC << /RangeABC [0 100 -99 99 -99 99] >>] setcolorspace",
      "not drawn: colours in CIEBasedABC",
    ],
    ["{ shfill } stopped pop", "not drawn: shfill"],
    ["1 moveto", "stackunderflow in moveto"],
    ["1 1 lineto", "nocurrentpoint in lineto"],
    ["1e30 0 moveto", "limitcheck in moveto"],
    ["nothing", "undefined: nothing"],
    ["stop", "the program stops by itself"],
    [`showpage ${triangle} fill`, "more than one page"],
    ["/p {{p} exec} def p", "not drawn: procedures nested too deeply"],
    ["{".repeat(1000), "not drawn: procedures nested too deeply"],
    ["{gsave} loop", "not drawn: gsave nested too deeply"],
    [
      "<< /BeginPage { pop 0 0 1 1 rectfill } >> setpagedevice",
      "not drawn: setpagedevice with BeginPage",
    ],
    ["0 0 1 1 rectfill quit 1 1 2 2 rectfill", "the program ends before its text does"],
  ];
  for (const [program, problem] of cases) assert.equal(read(header + program).problem, problem);
  assert.equal(read("%!PS\n").problem, "no BoundingBox");
  assert.match(String(read("\xc5\xd0\xd3\xc6").problem), /binary header/);
});

test("what has no effect on a figure is no problem", () => {
  for (const program of [
    "{} settransfer 45 60 {} setscreen true setoverprint << >> setpagedevice showpage",
    "[ /Title (x) /DOCINFO pdfmark systemdict /pdfmark known not {stop} if",
    `<< >> matrix makepattern pop ${triangle} fill showpage 1 quit %`,
    "/Compatible .setblendmode 1 .setopacityalpha %%EOF\n\x04",
    "/p {dup exec} bind def {//p p} bind pop",
  ]) {
    assert.equal(read(header + program).problem, null, program);
  }
});

test("progress goes up to the end", () => {
  /** @type {number[]} */
  const fractions = [];
  readFigure(stringOf(`${header}${"1 pop ".repeat(150000)}`).bytes, (fraction) =>
    fractions.push(fraction),
  );
  assert.ok(fractions.length > 3 && fractions[0] < 0.01 && fractions[fractions.length - 1] <= 1);
  assert.deepEqual(fractions, fractions.toSorted());
});

test("what would fill the memory ends with a reason", () => {
  for (const program of [
    "1 { count copy } loop",
    "{ 16777216 string pop } loop",
    "newpath 0 0 moveto 1 1 100000 { dup 100 mod exch 7 mod lineto } for { gsave 1 1 lineto } loop",
  ]) {
    assert.match(figureOf(program).problem ?? "", /^not drawn: /, program);
  }
  for (const body of ["[] loop", "2000000000 [] repeat", "0 1 9 [] for", "[1 2] [] forall"]) {
    assert.match(figureOf(body).problem ?? "", /^typecheck/, body);
  }
});
