// Runs small figures and writes down what they draw, for tests.

import { kind } from "../picture/display_list.js";
import { readFigure } from "../postscript/reader.js";

const verbs = [
  { letter: "M", count: 2 },
  { letter: "L", count: 2 },
  { letter: "C", count: 6 },
  { letter: "Z", count: 0 },
];

/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */

/** @param {number} value */
function written(value) {
  return String(Math.round(value * 1000) / 1000 + 0);
}

/**
 * @param {DisplayList} list
 * @param {number} path
 */
function pathText(list, path) {
  let at = list.coordinateStarts.values[path];
  const words = [];
  for (let i = list.verbStarts.values[path]; i < list.verbEnd(path); ++i) {
    const { letter, count } = verbs[list.verbs.values[i]];
    words.push(letter, ...Array.from(list.coordinates.values.slice(at, at + count), written));
    at += count;
  }
  return words.join(" ");
}

/**
 * @param {string | Uint8Array} program  without a header
 */
export function figureOf(program) {
  const header = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 100 100\n";
  return readFigure(Buffer.concat([Buffer.from(header), Buffer.from(program)]));
}

/**
 * The items of a figure that must be drawn without a problem: its colours and paths.
 * @param {string | Uint8Array} program
 */
export function itemsOf(program) {
  const { list, problem } = figureOf(program);
  if (problem) throw new Error(problem);
  return Array.from({ length: list.itemCount }, (_, i) => {
    const colour = list.colours.values[i].toString(16).padStart(6, "0");
    const subject = list.subjects.values[i];
    if (list.kinds.values[i] === kind.text) return { colour, text: list.texts[subject] };
    if (list.kinds.values[i] === kind.image) return { colour, image: list.images[subject] };
    return { colour, kind: list.kinds.values[i], path: pathText(list, subject) };
  });
}

/**
 * The paths of a figure that consists of nothing else.
 * @param {string | Uint8Array} program
 */
export function pathsOf(program) {
  return itemsOf(program).map(({ path }) => path);
}
