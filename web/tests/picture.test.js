import assert from "node:assert/strict";
import { test } from "node:test";
import { compare } from "../picture/compare.js";
import { kind, noClip, verb } from "../picture/display_list.js";
import { densest, hairlinePixels, newHairlines } from "../picture/hairlines.js";
import { itemBoxes } from "../picture/item_boxes.js";
import { judge, judgeHairlines } from "../picture/judge.js";
import { drawSharp } from "../picture/sharp.js";
import { addPath, addStroke, emptyFigure, picture, rowsOf } from "./figures.js";

/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */

const black = 0;
const white = 0xffffff;

/**
 * The whole figure, a pixel a point.
 * @param {DisplayList} list
 * @param {import("../picture/sharp.js").DrawTextMask} [textMask]
 */
function draw(list, textMask) {
  return drawSharp(list, { scale: 1, width: list.box[2], height: list.box[3] }, textMask);
}

/**
 * A figure of 8 x 4 points with one black path, drawn.
 * @param {string[]} polygons
 */
function filled(...polygons) {
  const list = emptyFigure(8, 4);
  list.addItem(kind.fill, addPath(list, ...polygons), black, noClip);
  return rowsOf(draw(list));
}

test("an area paints every pixel that it touches, and none beside its border", () => {
  assert.deepEqual(filled("1,1 3,1 3,3 1,3"), ["........", ".##.....", ".##.....", "........"]);
  assert.deepEqual(filled("0.9,1 3.1,1 3.1,3 0.9,3"), [
    "........",
    "####....",
    "####....",
    "........",
  ]);
  assert.deepEqual(filled("1,0 7,0 1,3"), ["........", ".##.....", ".####...", ".######."]);
});

test("areas without extent leave a mark wherever they are", () => {
  const alone = ["........", ".....#..", ".....#..", "........"];
  assert.deepEqual(filled("5.5,1 5.5,3"), alone);
  assert.deepEqual(filled("5,1 5,3 5,1"), alone);
  assert.deepEqual(filled("0,4 1,4 1,3 0,3", "5,1 5,3"), ["#.......", ...alone.slice(1)]);
  assert.deepEqual(filled("2,1.5 6,1.5"), ["........", "........", "..####..", "........"]);
  assert.deepEqual(filled("2.5,2.5"), ["........", "..#.....", "........", "........"]);
});

test("holes follow the rule of their path", () => {
  const outer = "0,0 8,0 8,4 0,4";
  const hole = "2,1 5,1 5,3 2,3";
  const withHole = ["########", "##...###", "##...###", "########"];
  const list = emptyFigure(8, 4);
  list.addItem(kind.evenOddFill, addPath(list, outer, hole), black, noClip);
  assert.deepEqual(rowsOf(draw(list)), withHole);
  assert.deepEqual(filled(outer, hole), Array(4).fill("########"));
  assert.deepEqual(filled(outer, "2,3 5,3 5,1 2,1"), withHole);
});

test("touching polygons show what their union does", () => {
  const corners = Array.from({ length: 9 }, (_, i) => {
    const angle = (2 * Math.PI * i) / 9;
    return `${40 + 37 * Math.cos(angle)},${40 + 31 * Math.sin(angle)}`;
  });
  const fan = corners.map((corner, i) => `40.3,40.7 ${corner} ${corners[(i + 1) % 9]}`);
  const [pieces, onePath, outline, bent] = [1, 2, 3, 4].map(() => emptyFigure(80, 80));
  for (const triangle of fan) pieces.addItem(kind.fill, addPath(pieces, triangle), black, noClip);
  onePath.addItem(kind.fill, addPath(onePath, ...fan), black, noClip);
  outline.addItem(kind.fill, addPath(outline, corners.join(" ")), black, noClip);
  // It goes down and up twice, unlike the outline.
  const twice = [...corners, ...corners].join(" ");
  bent.addItem(kind.fill, addPath(bent, twice), black, noClip);
  const expected = draw(outline);
  for (const list of [pieces, onePath, bent]) {
    assert.equal(compare(draw(list), expected).differing, 0);
  }
});

test("bent, crossing and curved outlines are filled by what they enclose", () => {
  const drawn = (/** @type {number} */ what, /** @type {string[]} */ ...polygons) => {
    const list = emptyFigure(80, 80);
    list.addItem(what, addPath(list, ...polygons), black, noClip);
    return draw(list);
  };
  const arrow = drawn(kind.fill, "5,5 40,75 75,5 40,40");
  assert.deepEqual(arrow, drawn(kind.fill, "5,5 40,75 40,40", "75,5 40,75 40,40"));
  const star = "40,78 17,7 77,51 3,51 63,7";
  const middle = 40 * 80 + 40;
  assert.equal(drawn(kind.fill, star).pixels[middle], black);
  assert.equal(drawn(kind.evenOddFill, star).pixels[middle], white);

  const round = emptyFigure(80, 80);
  const path = addPath(round, "75,40");
  --round.verbs.length; // Open again, for a quarter of a circle.
  round.verbs.push(verb.curve);
  [75, 59.33, 59.33, 75, 40, 75].forEach((number) => round.coordinates.push(number));
  round.addItem(kind.fill, path, black, noClip);
  const arc = Array.from({ length: 91 }, (_, i) => (i * Math.PI) / 180)
    .map((angle) => `${40 + 35 * Math.cos(angle)},${40 + 35 * Math.sin(angle)}`)
    .join(" ");
  assert.equal(compare(draw(round), drawn(kind.fill, arc)).wrong, 0);
  assert.ok(compare(draw(round), drawn(kind.fill, "75,40 60,60 40,75")).wrong > 0);
});

test("so many edges in a row are put in order", () => {
  const comb = Array.from(
    { length: 40 },
    (_, i) => `${2 * i},1 ${2 * i + 1},1 ${2 * i + 1},3 ${2 * i},3`,
  );
  const list = emptyFigure(80, 4);
  list.addItem(
    kind.evenOddFill,
    addPath(list, "0,0 80,0 80,4 0,4", ...comb.reverse()),
    black,
    noClip,
  );
  assert.equal(rowsOf(draw(list))[1], ".#".repeat(40));
});

test("clips cut by boxes and by shapes, and within each other", () => {
  const list = emptyFigure(8, 4);
  const all = addPath(list, "0,0 8,0 8,4 0,4");
  const addClip = (/** @type {string} */ polygon, parent = noClip) =>
    list.clips.push({ parent, path: addPath(list, polygon), evenOdd: false }) - 1;
  const box = addClip("1,0 7,0 7,3 1,3");
  const triangle = addClip("0,0 8,0 0,4", box);
  const inner = addClip("0,0 8,0 8,2 0,2", triangle);
  const other = addClip("8,4 0,4 8,0", triangle);
  const otherAlone = addClip("8,4 0,4 8,0", box);
  const slanted = addClip("0,2 4,0 8,2 4,4");
  const drawn = [box, triangle, inner, other, otherAlone, slanted].map((clip) => {
    list.kinds.length = list.subjects.length = list.colours.length = list.clipIndices.length = 0;
    list.addItem(kind.fill, all, black, clip);
    return rowsOf(draw(list));
  });
  assert.deepEqual(drawn, [
    ["........", ".######.", ".######.", ".######."],
    ["........", ".###....", ".#####..", ".######."],
    ["........", "........", ".#####..", ".######."],
    ["........", "..##....", "....##..", "......#."],
    ["........", "..#####.", "....###.", "......#."],
    ["..####..", "########", "########", "..####.."],
  ]);
});

test("strokes have a pen's breadth, dashes, joins and caps", () => {
  const stroked = (
    /** @type {string} */ line,
    /** @type {Partial<import("../picture/display_list.js").Pen>} */ pen,
  ) => {
    const list = emptyFigure(8, 4);
    addStroke(list, line, pen);
    return rowsOf(draw(list));
  };
  const empty = "........";
  const bar = [empty, "..####..", "..####..", "..####.."];
  assert.deepEqual(stroked("2.1,1.6 5.9,1.6", { width: 1.8 }), bar);
  assert.deepEqual(stroked("3.2,1.6 4.8,1.6", { width: 2.2, cap: 2 }), bar);
  assert.deepEqual(stroked("0,1.5 8,1.5", { width: 0, dashes: [2, 1] }), [
    empty,
    empty,
    "##.##.##",
    empty,
  ]);
  assert.deepEqual(stroked("0,1.5 8,1.5", { width: 0, dashes: [2, 1], dashOffset: -1 }), [
    empty,
    empty,
    ".##.##.#",
    empty,
  ]);
  assert.deepEqual(stroked("2.1,1.6 5.9,1.6", { width: 0.9, matrix: [1, 0, 0, 2, 0, 0] }), bar);
  const corner = (/** @type {Partial<import("../picture/display_list.js").Pen>} */ pen) =>
    stroked("2,0 2,2 8,2", { width: 4, ...pen })[0];
  assert.equal(corner({ join: 0 }), "########");
  assert.equal(corner({ join: 0, miterLimit: 1 }), ".#######");
  assert.equal(corner({ join: 1 }), "########");
  assert.equal(stroked("4.3,2.2 4.3,2.2", { width: 2, cap: 1 })[1].includes("#"), true);
  assert.deepEqual(stroked("2.1,2 5.9,2", { width: 2 }), bar);
  assert.deepEqual(stroked("3,0 3,4", { width: 2 })[1], "..###...");
  assert.deepEqual(stroked("2.6,1.6 2.9,1.6", { width: 0 })[2], "..#.....");

  // The dash that goes around the first corner has no caps there, but a join.
  const frame = emptyFigure(40, 40);
  const pen = { width: 8, dashes: [40, 56], dashOffset: 20 };
  addStroke(frame, "8,8 32,8 32,32 8,32 8,8", pen);
  const open = draw(frame);
  frame.verbs.push(verb.close);
  assert.deepEqual(
    [open, draw(frame)].map(({ pixels }) => pixels[35 * 40 + 4]),
    [white, black],
  );
});

test("images take the nearest sample, and texts the mask they are given", () => {
  const list = emptyFigure(8, 4);
  const rgba = Uint8ClampedArray.of(0, 0, 0, 255, 9, 9, 9, 255, 9, 9, 9, 0, 0, 0, 0, 255);
  list.images.push({ width: 2, height: 2, rgba, matrix: [2, 0, 0, -1, 1, 3] });
  list.images.push({ width: 2, height: 2, rgba, matrix: [0.1, 0, 0, -0.1, 6.1, 0.4] });
  list.addItem(kind.image, 0, 0, noClip);
  list.addItem(kind.image, 1, 0, noClip);
  list.texts.push({
    glyphs: ["x"],
    starts: [0],
    family: "sans",
    bold: false,
    italic: false,
    matrix: [1, 0, 0, 1, 0, 0],
  });
  list.addItem(kind.text, 0, 0x00ff00, noClip);
  const without = draw(list);
  assert.deepEqual(rowsOf(without), ["........", ".##oo...", "...##...", "......o."]);
  assert.equal(without.textsLeftOut, 1);
  const mask = { left: 6, top: -1, width: 3, height: 2, mask: Uint8Array.of(1, 1, 1, 0, 1, 1) };
  const withText = draw(list, () => mask);
  assert.equal(rowsOf(withText)[0], ".......o");
  assert.equal(withText.textsLeftOut, 0);
});

test("nothing is drawn beyond the boxes that tell which items a view shows", () => {
  const rgba = new Uint8ClampedArray(24).fill(128);
  /** @type {((list: DisplayList) => void)[]} */
  const items = [
    (list) => {
      const path = addPath(list, "10,10 20,12 14,30", "30,30 31,40 36,35");
      list.addItem(kind.fill, path, black, noClip);
    },
    (list) => addStroke(list, "20,20 40,24 20,28", { width: 4, matrix: [1, 0.3, 0, 1, 0, 0] }),
    (list) => addStroke(list, "30,10 50,10", { width: 6, cap: 2, join: 1 }),
    (list) => {
      list.images.push({ width: 3, height: 2, rgba, matrix: [5, 2, -2, 5, 30, 40] });
      list.addItem(kind.image, 0, black, noClip);
    },
  ];
  for (const add of items) {
    const list = emptyFigure(60, 60);
    add(list);
    const [left, bottom, right, top] = itemBoxes(list);
    const seen = [...draw(list).pixels.entries()].filter(([, colour]) => colour !== white);
    assert.ok(seen.length > 10);
    for (const [i] of seen) {
      const [x, y] = [(i % 60) + 0.5, 60 - Math.floor(i / 60) - 0.5];
      assert.ok(x > left - 1 && x < right + 1 && y > bottom - 1 && y < top + 1);
    }
  }
});

test("a colour must occur within one pixel in the other picture", () => {
  const colours = { ".": white, "#": black };
  const dot = picture([".....", ".....", "..#..", ".....", "....."], colours);
  const places = [
    { x: 1, y: 1, wrong: 0 },
    { x: 2, y: 3, wrong: 0 },
    { x: 3, y: 3, wrong: 0 },
    { x: 2, y: 4, wrong: 2 },
    { x: 0, y: 2, wrong: 2 },
  ];
  for (const { x, y, wrong } of places) {
    const pixels = new Uint32Array(25).fill(white);
    pixels[5 * y + x] = black;
    const found = compare(dot, { width: 5, height: 5, pixels });
    assert.deepEqual(found, { pixels: 25, differing: 2, wrong, blank: false });
  }
  const empty = picture(Array(5).fill("....."), colours);
  assert.deepEqual(compare(dot, empty), { pixels: 25, differing: 1, wrong: 1, blank: true });
  assert.throws(() => compare(dot, picture(["."], colours)), RangeError);
});

test("the judge sees what vanishes or changes its colour, not what moves by less than a pixel", () => {
  const figure = (/** @type {(list: DisplayList) => void} */ addMore = () => {}, edge = "200") => {
    const list = emptyFigure(400, 300);
    const square = addPath(list, `100,100 ${edge},100 ${edge},200 100,200`);
    list.addItem(kind.fill, square, 0x3366cc, noClip);
    addMore(list);
    return list;
  };
  const line = figure((list) => addStroke(list, "20,20 380,20.5", { width: 0 }));
  const sliver = figure((list) => {
    list.addItem(kind.fill, addPath(list, "150,250 150,260"), black, noClip);
  });
  const plain = figure();
  const recoloured = figure();
  recoloured.colours.values[0] = 0x3366cd;
  const frame = figure();
  frame.box = [0, 0, 400, 301];
  assert.equal(judge(plain, figure()).verdict, "same");
  assert.equal(judge(plain, figure(undefined, "200.05")).verdict, "same");
  const close = (/** @type {string[]} */ ...lines) =>
    figure((list) => lines.forEach((line) => addStroke(list, line, { width: 0 })));
  // At the resolution of a screen these are one.
  const pair = close("20,20 380,20", "20,20.3 380,20.3");
  assert.equal(judge(close("20,20 380,20"), pair).verdict, "changed");
  for (const changed of [line, sliver, recoloured, frame, figure(undefined, "201")]) {
    assert.equal(judge(changed, plain).verdict, "changed");
    assert.equal(judge(plain, changed).verdict, "changed");
  }
  for (const [width, height] of [
    [400, 300],
    [0, 0],
    [9000, 9000],
  ]) {
    const page = emptyFigure(width, height);
    page.addItem(kind.fill, addPath(page, "0,0 1,0 0,1"), white, noClip);
    assert.equal(judge(page, page).verdict, "unknown");
  }
});

test("the judge compares texts that it cannot draw", () => {
  const written = (glyph = "a", end = 5) => {
    const list = emptyFigure(40, 30);
    list.addItem(kind.fill, addPath(list, "1,1 9,1 9,9"), black, noClip);
    list.clips.push({ parent: noClip, path: addPath(list, `0,0 ${end},0 5,5`), evenOdd: false });
    list.texts.push({
      glyphs: [glyph],
      starts: [0],
      family: "sans",
      bold: false,
      italic: false,
      matrix: [9, 0, 0, 9, 0, 0],
    });
    list.addItem(kind.text, 0, black, 0);
    return list;
  };
  assert.equal(judge(written(), written()).verdict, "same");
  assert.equal(judge(written(), written("b")).verdict, "changed");
  assert.equal(judge(written(), written("a", 6)).verdict, "changed");
});

test("a closed mesh may move its outlines, but not most of the picture", () => {
  const stripes = (/** @type {number} */ step, /** @type {number} */ shift) => {
    const list = emptyFigure(400, 400);
    for (let x = 0; x < 400; x += step) {
      const [left, right] = [x + shift, x + step / 2 + shift];
      const bar = addPath(list, `${left},0 ${right},0 ${right},400 ${left},400`);
      list.addItem(kind.fill, bar, black, noClip);
    }
    return list;
  };
  const isSame = (/** @type {number} */ step, meshClosed = true) =>
    judge(stripes(step, 0), stripes(step, 0.1), { meshClosed }).verdict === "same";
  assert.deepEqual([isSame(40), isSame(4), isSame(4, false)], [true, false, true]);
});

test("hairlines are mixtures that lie outside of the colours around them", () => {
  const colours = { y: 0xffff00, r: 0xff0000, o: 0xff8000, w: 0xffff40, v: 0xffff06, d: 0xc0ff00 };
  const sharp = picture(["yyyyrr", "yyyyrr", "yyyyrr"], colours);
  const meshed = picture(["ywyyor", "ywyyor", "yvyyor"], colours);
  const closed = picture(["yyyyor", "yyyyor", "yyyyor"], colours);
  assert.equal(hairlinePixels(meshed, sharp), 2);
  assert.equal(hairlinePixels(picture(["yyyyrr", "ydyyrr", "yyyyrr"], colours), sharp), 1);
  assert.equal(hairlinePixels(closed, sharp), 0);
  assert.equal(newHairlines(closed, sharp, meshed), 2);
  assert.equal(newHairlines(meshed, sharp, closed), 0);
  assert.equal(densest(closed, sharp, { scale: 1, left: 0, top: 0 }), null);
  assert.throws(() => hairlinePixels(meshed, picture(["y"], colours)), RangeError);
});

test("hairlines may vanish, but not appear", () => {
  const page = (/** @type {number[]} */ ...columns) => {
    const pixels = new Uint32Array(100 * 100).fill(black);
    for (const x of columns) for (let y = 0; y < 100; ++y) pixels[100 * y + x] = white;
    return { width: 100, height: 100, pixels };
  };
  const drawings = (/** @type {number[]} */ ...columns) => ({
    smooth: page(...columns),
    sharp: page(),
  });
  assert.equal(judgeHairlines(drawings(20, 50, 60), drawings(50)).reason, "");
  assert.notEqual(judgeHairlines(drawings(50), drawings(20, 50)).reason, "");
  assert.notEqual(judgeHairlines(drawings(20, 50), drawings(80)).reason, "");
  assert.notEqual(judgeHairlines(drawings(50), drawings(49, 50, 51)).reason, "");
  assert.deepEqual(densest(page(80, 82, 20), page(), { scale: 2, left: 10, top: 50 }), {
    x: 52,
    y: 44,
  });
});
