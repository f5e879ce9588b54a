// The current path, in points. Saved graphics states share it until one of them changes it.

import { verb } from "../picture/display_list.js";
import { transform } from "./matrix.js";
import { NotDrawn } from "./values.js";

/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */

const longestPath = 1e7;
const mostCoordinates = 2e8;
const mostItems = 2e7;

export class Path {
  constructor() {
    /** @type {number[]} */
    this.verbs = [];
    /** @type {number[]} */
    this.coordinates = [];
    // The current point, and the begin of its subpath.
    this.hasPoint = false;
    this.x = 0;
    this.y = 0;
    this.startX = 0;
    this.startY = 0;
    /** Whether a saved graphics state has it too. */
    this.shared = false;
    /** Which path of the display list it is, or -1. */
    this.listIndex = -1;
    /** What it only has the extent of, and can therefore not be painted for. */
    this.substituteFor = "";
  }

  get isEmpty() {
    return this.verbs.length === 0;
  }

  copy() {
    const copy = new Path();
    copy.verbs = this.verbs.slice();
    copy.coordinates = this.coordinates.slice();
    copy.hasPoint = this.hasPoint;
    copy.x = this.x;
    copy.y = this.y;
    copy.startX = this.startX;
    copy.startY = this.startY;
    copy.substituteFor = this.substituteFor;
    return copy;
  }

  clear() {
    this.verbs.length = 0;
    this.coordinates.length = 0;
    this.hasPoint = false;
    this.listIndex = -1;
    this.substituteFor = "";
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  moveTo(x, y) {
    if (this.verbs.length > 0 && this.verbs[this.verbs.length - 1] === verb.move) {
      this.coordinates.length -= 2;
    } else {
      this.addVerb(verb.move);
    }
    this.coordinates.push(x, y);
    this.hasPoint = true;
    this.x = this.startX = x;
    this.y = this.startY = y;
    this.listIndex = -1;
  }

  /** @param {number} what */
  addVerb(what) {
    if (this.verbs.length > longestPath) throw new NotDrawn("too long a path");
    this.verbs.push(what);
  }

  /** After a closed subpath, the next one begins where that began. */
  continueSubpath() {
    if (this.verbs[this.verbs.length - 1] === verb.close) this.moveTo(this.x, this.y);
    this.listIndex = -1;
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  lineTo(x, y) {
    this.continueSubpath();
    this.addVerb(verb.line);
    this.coordinates.push(x, y);
    this.x = x;
    this.y = y;
  }

  /**
   * @param {number} x1
   * @param {number} y1
   * @param {number} x2
   * @param {number} y2
   * @param {number} x3
   * @param {number} y3
   */
  curveTo(x1, y1, x2, y2, x3, y3) {
    this.continueSubpath();
    this.addVerb(verb.curve);
    this.coordinates.push(x1, y1, x2, y2, x3, y3);
    this.x = x3;
    this.y = y3;
  }

  close() {
    if (this.verbs.length === 0 || this.verbs[this.verbs.length - 1] === verb.close) return;
    this.addVerb(verb.close);
    this.x = this.startX;
    this.y = this.startY;
    this.listIndex = -1;
  }

  /**
   * Left, bottom, right, top of all points, control points too. A last point without a line counts
   * only if it is alone.
   * @returns {[number, number, number, number]}
   */
  box() {
    const box = /** @type {[number, number, number, number]} */ ([
      Infinity,
      Infinity,
      -Infinity,
      -Infinity,
    ]);
    const { verbs } = this;
    const rest = verbs.length > 1 && verbs[verbs.length - 1] === verb.move ? 2 : 0;
    for (let i = 0; i < this.coordinates.length - rest; i += 2) {
      box[0] = Math.min(box[0], this.coordinates[i]);
      box[1] = Math.min(box[1], this.coordinates[i + 1]);
      box[2] = Math.max(box[2], this.coordinates[i]);
      box[3] = Math.max(box[3], this.coordinates[i + 1]);
    }
    return box;
  }

  /**
   * Calls back for each part with its verb and where its coordinates begin.
   * @param {(what: number, at: number) => void} visit
   */
  forEachPart(visit) {
    let at = 0;
    for (const what of this.verbs) {
      visit(what, at);
      at += coordinateCounts[what];
    }
  }

  /**
   * Appends another path's parts.
   * @param {Path} path
   */
  append(path) {
    this.substituteFor ||= path.substituteFor;
    const c = path.coordinates;
    path.forEachPart((what, i) => {
      if (what === verb.move) this.moveTo(c[i], c[i + 1]);
      else if (what === verb.line) this.lineTo(c[i], c[i + 1]);
      else if (what === verb.curve) {
        this.curveTo(c[i], c[i + 1], c[i + 2], c[i + 3], c[i + 4], c[i + 5]);
      } else this.close();
    });
  }

  /**
   * Puts the path into the list, once. Returns its index there.
   * @param {DisplayList} list
   */
  addTo(list) {
    if (list.coordinates.length > mostCoordinates || list.itemCount > mostItems) {
      throw new NotDrawn("more than fits into memory");
    }
    if (this.listIndex >= 0) return this.listIndex;
    if (this.substituteFor) throw new NotDrawn(this.substituteFor);
    const { verbs, coordinates } = this;
    const rest = verbs[verbs.length - 1] === verb.move ? 1 : 0; // a last point without a line
    this.listIndex = list.beginPath();
    for (let i = 0; i < verbs.length - rest; ++i) list.verbs.push(verbs[i]);
    for (let i = 0; i < coordinates.length - 2 * rest; ++i) list.coordinates.push(coordinates[i]);
    return this.listIndex;
  }
}

/** How many coordinates each verb has. */
export const coordinateCounts = [2, 2, 6, 0];

/**
 * @param {import("../picture/display_list.js").Matrix} matrix  from the rectangle's space to points
 * @param {number} x
 * @param {number} y
 * @param {number} width
 * @param {number} height
 */
export function rectanglePath(matrix, x, y, width, height) {
  const path = new Path();
  path.moveTo(...transform(matrix, x, y));
  path.lineTo(...transform(matrix, x + width, y));
  path.lineTo(...transform(matrix, x + width, y + height));
  path.lineTo(...transform(matrix, x, y + height));
  path.close();
  return path;
}

/**
 * A path of the display list as a path to go on with.
 * @param {DisplayList} list
 * @param {number} index
 */
export function pathOfList(list, index) {
  const path = new Path();
  let at = list.coordinateStarts.values[index];
  const end = list.verbEnd(index);
  for (let i = list.verbStarts.values[index]; i < end; ++i) {
    const what = list.verbs.values[i];
    path.verbs.push(what);
    for (let n = 0; n < coordinateCounts[what]; ++n) {
      path.coordinates.push(list.coordinates.values[at++]);
    }
  }
  const last = path.coordinates.length - 2;
  path.hasPoint = last >= 0;
  path.x = path.startX = path.coordinates[last];
  path.y = path.startY = path.coordinates[last + 1];
  return path;
}
