// Whether a figure shows the same after a repair as before it. "The same" is said only of what has
// been drawn and compared.

import { isSamePath } from "./clip_shapes.js";
import { compare } from "./compare.js";
import { kind, noClip, verb } from "./display_list.js";
import { hairlinePixels, newHairlines } from "./hairlines.js";
import { resolutions } from "./resolutions.js";
import { drawSharp } from "./sharp.js";

/** @typedef {import("./display_list.js").DisplayList} DisplayList */
/** @typedef {import("./display_list.js").Text} Text */
/** @typedef {import("./pixmap.js").Pixmap} Pixmap */

/**
 * "unknown" is a figure that shows nothing to be compared.
 * @typedef {object} Judgement
 * @property {"same" | "changed" | "unknown"} verdict
 * @property {number} pixels     of the drawings compared
 * @property {number} differing  those whose colours differ
 * @property {number} wrong      those whose colour is nowhere near in the other drawing
 * @property {string} reason     empty where they show the same
 */

/**
 * @typedef {object} JudgingRule
 * @property {import("./sharp.js").DrawTextMask} [textMask]
 * @property {(fraction: number) => void} [progress]
 * @property {boolean} [meshClosed]  outlines are stroked, so that pixels between polygons differ
 * @property {number} [mergers]  each made one polygon of two
 */

/** Where the outlines of a mesh are stroked each moves by a pixel: so many of all may differ. */
const shareOfOutlines = 0.1;

/** Beyond what the rounding of a few corners does. */
const corners = 8;

/**
 * A pixel is wrong when its colour occurs nowhere within one pixel of it in the other picture. The
 * rim of an area may differ whose outline has fewer points now; but a line that vanishes, however
 * thin, is wrong, and so is another colour. That holds at the resolution of a screen and at that of
 * print.
 * @param {DisplayList} before
 * @param {DisplayList} after
 * @param {JudgingRule} [rule]
 * @returns {Judgement}
 */
export function judge(before, after, rule = {}) {
  const { textMask, progress, meshClosed = false, mergers = 0 } = rule;
  const seen = { pixels: 0, differing: 0, wrong: 0 };
  if (before.box.some((side, i) => side !== after.box[i])) {
    return { ...seen, verdict: "changed", reason: "it has another size" };
  }
  const looks = resolutions(before);
  if (!looks) {
    const reason = "the page has no area, or too much of it to be compared";
    return { ...seen, verdict: "unknown", reason };
  }
  const parts = [looks.coarse, looks.fine];
  const work = parts.reduce((sum, { width, height }) => sum + 2 * width * height, 0);
  let done = 0;
  const draw = (/** @type {DisplayList} */ list, /** @type {import("./sharp.js").Part} */ part) => {
    const drawing = drawSharp(list, part, textMask);
    done += part.width * part.height;
    progress?.(done / work);
    return drawing;
  };
  for (const part of parts) {
    const pictureBefore = draw(before, part);
    const pictureAfter = draw(after, part);
    const found = compare(pictureBefore, pictureAfter);
    seen.pixels += found.pixels;
    seen.differing += found.differing;
    seen.wrong += found.wrong;
    const leftOut = pictureBefore.textsLeftOut + pictureAfter.textsLeftOut > 0;
    if (leftOut && !haveSameTexts(before, after)) {
      return { ...seen, verdict: "changed", reason: "its texts are others" };
    }
    if (found.blank && found.differing === 0) {
      const reason =
        "the page shows nothing but one colour: is the BoundingBox beside the drawing?";
      return { ...seen, verdict: "unknown", reason };
    }
    if (found.wrong > 0) {
      const pixels = found.wrong === 1 ? "1 pixel" : `${found.wrong} pixels`;
      const reason = `the colour of ${pixels} is not there in the other picture`;
      return { ...seen, verdict: "changed", reason };
    }
    if (meshClosed && found.differing > shareOfOutlines * found.pixels) {
      const percent = ((100 * found.differing) / found.pixels).toFixed(2);
      const reason = `${percent} % of the pixels differ`;
      return { ...seen, verdict: "changed", reason };
    }
  }
  // A figure whose program took another way here than in a printer would agree with itself.
  if (countAreas(before, meshClosed) - countAreas(after, meshClosed) < mergers) {
    const reason = "not all of the polygons that were joined are drawn here";
    return { ...seen, verdict: "unknown", reason };
  }
  return { ...seen, verdict: "same", reason: "" };
}

/**
 * How many pieces are filled or stroked. Where the mesh is closed only filled ones tell.
 * @param {DisplayList} list
 * @param {boolean} meshClosed
 */
function countAreas(list, meshClosed) {
  const { verbs, verbStarts } = list;
  let count = 0;
  for (let i = 0; i < list.itemCount; ++i) {
    const what = list.kinds.values[i];
    const isFilled = what === kind.fill || what === kind.evenOddFill;
    if (!isFilled && (what !== kind.stroke || meshClosed)) continue;
    const path = list.subjects.values[i];
    const end = list.verbEnd(path);
    for (let n = verbStarts.values[path]; n < end; ++n) {
      if (verbs.values[n] === verb.move) ++count;
    }
  }
  return count;
}

/**
 * A page drawn with anti-aliasing and without.
 * @typedef {{ smooth: Pixmap, sharp: Pixmap }} Drawings
 */

/**
 * Drawn with anti-aliasing, hairlines may vanish, but none may appear, nor grow in number.
 * @param {Drawings} before
 * @param {Drawings} after
 * @returns {{ before: number, after: number, reason: string }} pixels, and why it is wrong, if so
 */
export function judgeHairlines(before, after) {
  const there = hairlinePixels(before.smooth, before.sharp);
  const left = hairlinePixels(after.smooth, after.sharp);
  const found = { before: there, after: left };
  if (left > there + corners) return { ...found, reason: "there are more hairlines than before" };
  const appeared = newHairlines(before.smooth, before.sharp, after.smooth);
  // Some are nothing against a mesh that has gone.
  if (appeared <= corners + there / 16) return { ...found, reason: "" };
  return { ...found, reason: `${appeared} pixels of hairlines appear where none were` };
}

/**
 * Whether the same texts are drawn, in the same order.
 * @param {DisplayList} a
 * @param {DisplayList} b
 */
function haveSameTexts(a, b) {
  const itemsA = textItems(a);
  const itemsB = textItems(b);
  return (
    itemsA.length === itemsB.length &&
    itemsA.every(
      (itemA, i) =>
        a.colours.values[itemA] === b.colours.values[itemsB[i]] &&
        isSameText(a.texts[a.subjects.values[itemA]], b.texts[b.subjects.values[itemsB[i]]]) &&
        isSameClip(a, a.clipIndices.values[itemA], b, b.clipIndices.values[itemsB[i]]),
    )
  );
}

/** @param {DisplayList} list */
function textItems(list) {
  const items = [];
  for (let i = 0; i < list.itemCount; ++i) if (list.kinds.values[i] === kind.text) items.push(i);
  return items;
}

/**
 * @param {Text} a
 * @param {Text} b
 */
function isSameText(a, b) {
  return JSON.stringify(a) === JSON.stringify(b);
}

/**
 * @param {DisplayList} listA
 * @param {number} a
 * @param {DisplayList} listB
 * @param {number} b
 */
function isSameClip(listA, a, listB, b) {
  while (a !== noClip && b !== noClip) {
    const clipA = listA.clips[a];
    const clipB = listB.clips[b];
    if (clipA.evenOdd !== clipB.evenOdd) return false;
    if (!isSamePath(listA, clipA.path, listB, clipB.path)) return false;
    a = clipA.parent;
    b = clipB.parent;
  }
  return a === b;
}
