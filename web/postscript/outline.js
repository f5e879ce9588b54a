// The outline of a glyph in the units of its font.

import { verb } from "../picture/display_list.js";
import { coordinateCounts } from "./path.js";
import { transform } from "./matrix.js";

/** @typedef {import("../picture/display_list.js").Matrix} Matrix */
/** @typedef {import("../picture/display_list.js").DisplayList} DisplayList */

export class Outline {
  constructor() {
    /** What to advance by: x, y. @type {[number, number]} */
    this.width = [0, 0];
    /** @type {number[]} */
    this.verbs = [];
    /** @type {number[]} */
    this.coordinates = [];
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  moveTo(x, y) {
    this.verbs.push(verb.move);
    this.coordinates.push(x, y);
  }

  /**
   * @param {number} x
   * @param {number} y
   */
  lineTo(x, y) {
    this.verbs.push(verb.line);
    this.coordinates.push(x, y);
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
    this.verbs.push(verb.curve);
    this.coordinates.push(x1, y1, x2, y2, x3, y3);
  }

  close() {
    this.verbs.push(verb.close);
  }

  /**
   * Adds another outline's parts.
   * @param {Outline} other
   * @param {Matrix} matrix
   */
  append(other, matrix) {
    this.verbs.push(...other.verbs);
    this.coordinates.push(...other.transformed(matrix));
  }

  /** @param {Matrix} matrix */
  transformed(matrix) {
    const { coordinates } = this;
    const moved = new Array(coordinates.length);
    for (let i = 0; i < coordinates.length; i += 2) {
      [moved[i], moved[i + 1]] = transform(matrix, coordinates[i], coordinates[i + 1]);
    }
    return moved;
  }

  /**
   * Returns the index of the path.
   * @param {DisplayList} list
   * @param {Matrix} matrix  to points
   */
  addTo(list, matrix) {
    const path = list.beginPath();
    for (const what of this.verbs) list.verbs.push(what);
    for (const coordinate of this.transformed(matrix)) list.coordinates.push(coordinate);
    return path;
  }

  /**
   * @param {import("./path.js").Path} path  the current path
   * @param {Matrix} matrix  to points
   */
  appendTo(path, matrix) {
    const c = this.transformed(matrix);
    let i = 0;
    for (const what of this.verbs) {
      if (what === verb.move) path.moveTo(c[i], c[i + 1]);
      else if (what === verb.line) path.lineTo(c[i], c[i + 1]);
      else if (what === verb.close) path.close();
      else path.curveTo(c[i], c[i + 1], c[i + 2], c[i + 3], c[i + 4], c[i + 5]);
      i += coordinateCounts[what];
    }
  }
}
