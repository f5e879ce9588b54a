// The figure's frame, as its comments tell it. Comments of documents inside the figure do not count.

import { textOf } from "./values.js";

/** @typedef {[number, number, number, number]} Box  left, bottom, right, top */

const lineFeed = 10;
const carriageReturn = 13;
const percent = 0x25;
const longestComment = 255;

/**
 * The comments that begin with %%, one by one.
 * @param {Uint8Array} bytes
 */
function* comments(bytes) {
  let at = 0;
  while (at >= 0 && at < bytes.length) {
    if (bytes[at] === percent && bytes[at + 1] === percent) {
      yield commentAt(bytes, at);
    }
    at = nextLine(bytes, at);
  }
}

/** @param {Uint8Array} bytes @param {number} start */
function commentAt(bytes, start) {
  let end = start;
  const limit = Math.min(bytes.length, start + longestComment);
  while (end < limit && bytes[end] !== lineFeed && bytes[end] !== carriageReturn) ++end;
  return textOf(bytes.subarray(start, end));
}

/** @param {Uint8Array} bytes @param {number} start */
function nextLine(bytes, start) {
  let at = start;
  while (at < bytes.length && bytes[at] !== lineFeed && bytes[at] !== carriageReturn) ++at;
  while (bytes[at] === lineFeed || bytes[at] === carriageReturn) ++at;
  return at;
}

/**
 * @param {string} text
 * @returns {Box | null}
 */
function parseBox(text) {
  const numbers = text.trim().split(/\s+/).slice(0, 4).map(Number);
  if (numbers.length < 4 || numbers.some((value) => !Number.isFinite(value))) return null;
  const [left, bottom, right, top] = numbers;
  return right > left && top > bottom ? [left, bottom, right, top] : null;
}

/**
 * The more precise of the figure's frames, or null if it has none.
 * @param {Uint8Array} bytes
 * @returns {Box | null}
 */
export function findFrame(bytes) {
  /** @type {Record<string, Box | null>} */
  const boxes = { "%%HiResBoundingBox:": null, "%%BoundingBox:": null };
  let depth = 0;
  /** Those that the trailer tells: the last one counts. @type {Set<string>} */
  const atEnd = new Set();
  for (const comment of comments(bytes)) {
    if (comment.startsWith("%%EndComments") && atEnd.size === 0 && boxes["%%BoundingBox:"]) break;
    if (comment.startsWith("%%BeginDocument")) ++depth;
    else if (comment.startsWith("%%EndDocument")) --depth;
    if (depth > 0) continue;
    for (const key of Object.keys(boxes)) {
      if (!comment.startsWith(key)) continue;
      const box = parseBox(comment.slice(key.length));
      if (comment.includes("(atend)")) atEnd.add(key);
      else boxes[key] = atEnd.has(key) ? (box ?? boxes[key]) : (boxes[key] ?? box);
    }
  }
  return boxes["%%HiResBoundingBox:"] ?? boxes["%%BoundingBox:"];
}
