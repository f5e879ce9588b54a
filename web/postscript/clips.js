// Clips in the display list. Many programs set the same clip for every polygon: it is there once.

import { noClip, verb } from "../picture/display_list.js";
import { identity } from "./matrix.js";
import { pathOfList, rectanglePath } from "./path.js";

/** @typedef {import("./interpreter.js").Interpreter} Interpreter */
/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */
/** @typedef {import("./path.js").Path} Path */

const clipsLookedAt = 8;

/**
 * Makes what is inside the current path and the current clip the clip.
 * @param {Interpreter} interpreter
 * @param {boolean} evenOdd
 */
export function clipToPath({ graphics, list }, evenOdd) {
  const { path, clip } = graphics;
  if (clip !== noClip && isClip(list, clip, path, evenOdd)) return;
  const known = recentClip(list, clip, path, evenOdd);
  if (known >= 0) {
    graphics.clip = known;
    return;
  }
  list.clips.push({ parent: clip, path: path.addTo(list), evenOdd });
  graphics.clip = list.clips.length - 1;
}

/**
 * @param {DisplayList} list
 * @param {number} parent
 * @param {Path} path
 * @param {boolean} evenOdd
 */
function recentClip(list, parent, path, evenOdd) {
  const { clips } = list;
  const first = Math.max(0, clips.length - clipsLookedAt);
  for (let i = clips.length - 1; i >= first; --i) {
    if (clips[i].parent === parent && isClip(list, i, path, evenOdd)) return i;
  }
  return -1;
}

/**
 * Whether a clip's own path is this one.
 * @param {DisplayList} list
 * @param {number} index
 * @param {Path} path
 * @param {boolean} evenOdd
 */
function isClip(list, index, path, evenOdd) {
  const clip = list.clips[index];
  if (clip.evenOdd !== evenOdd) return false;
  const verbStart = list.verbStarts.values[clip.path];
  if (list.verbEnd(clip.path) - verbStart !== path.verbs.length) return false;
  const start = list.coordinateStarts.values[clip.path];
  const { values } = list.coordinates;
  for (let i = 0; i < path.coordinates.length; ++i) {
    if (values[start + i] !== Math.fround(path.coordinates[i])) return false;
  }
  return path.verbs.every((what, i) => list.verbs.values[verbStart + i] === what);
}

/**
 * The current clip as a path. Of clips inside each other it is the innermost's own path, or, of
 * rectangles, what they have in common: filled within the clip both are the same.
 * @param {Interpreter} interpreter
 */
export function pathOfClip({ graphics, list }) {
  if (graphics.clip === noClip) return rectangle(list.box);
  const innermost = pathOfList(list, list.clips[graphics.clip].path);
  const common = [...list.box];
  for (let clip = graphics.clip; clip !== noClip; clip = list.clips[clip].parent) {
    const path = pathOfList(list, list.clips[clip].path);
    if (!isRectangle(path)) return innermost;
    const box = path.box();
    for (const i of [0, 1]) common[i] = Math.max(common[i], box[i]);
    for (const i of [2, 3]) common[i] = Math.max(common[i - 2], Math.min(common[i], box[i]));
  }
  return rectangle(common);
}

/** @param {number[]} box */
function rectangle([left, bottom, right, top]) {
  return rectanglePath(identity, left, bottom, right - left, top - bottom);
}

/** Whether a path is a rectangle along the axes. @param {Path} path */
function isRectangle(path) {
  const c = path.coordinates;
  if (
    c.length !== 8 ||
    !path.verbs.every((what, i) => i === 0 || what === verb.line || what === verb.close)
  ) {
    return false;
  }
  const across = c[1] === c[3] && c[2] === c[4] && c[5] === c[7] && c[6] === c[0];
  const upward = c[0] === c[2] && c[3] === c[5] && c[4] === c[6] && c[7] === c[1];
  return across || upward;
}
