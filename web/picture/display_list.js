// What a figure draws, in the order in which it draws it. All places are in PostScript points, y
// upwards, whatever the figure's own units were. A million polygons must fit: paths and items are
// columns of numbers, what is rare are objects.

import { GrowingFloat32, GrowingInt32, GrowingUint32, GrowingUint8 } from "./growing_array.js";

/** The parts of a path, with two, two, six and no coordinates. */
export const verb = Object.freeze({ move: 0, line: 1, curve: 2, close: 3 });

/**
 * What an item is. Its subject is a path, or a text or an image. A glyph is a fill that is thinner
 * where there is no anti-aliasing.
 */
export const kind = Object.freeze({
  fill: 0,
  evenOddFill: 1,
  stroke: 2,
  text: 3,
  image: 4,
  glyph: 5,
});

/** In place of a clip: everything is seen. */
export const noClip = -1;

/**
 * The six numbers of a PostScript matrix: x' = a x + c y + e, y' = b x + d y + f.
 * @typedef {[number, number, number, number, number, number]} Matrix
 */

/**
 * A pen. Its matrix takes it from its own units, in which width and dashes are, to points; only the
 * first four numbers count. Width 0 is the thinnest line there is.
 * @typedef {object} Pen
 * @property {number} width
 * @property {0 | 1 | 2} cap   butt, round, square
 * @property {0 | 1 | 2} join  mitre, round, bevel
 * @property {number} miterLimit
 * @property {number[]} dashes
 * @property {number} dashOffset
 * @property {Matrix} matrix
 */

/**
 * What is inside both this path and the parent clip is seen.
 * @typedef {object} Clip
 * @property {number} parent  index of a clip, or noClip
 * @property {number} path    index of a path
 * @property {boolean} evenOdd
 */

/**
 * Text in a font that is not in the file: the browser's own font stands in for it. Glyphs of fonts
 * in the file are items of their own.
 * @typedef {object} Text
 * @property {string[]} glyphs  the characters of each glyph
 * @property {number[]} starts  where each begins on the baseline, in ems
 * @property {"sans" | "serif" | "mono"} family
 * @property {boolean} bold
 * @property {boolean} italic
 * @property {Matrix} matrix    from ems to points
 */

/**
 * @typedef {object} Image
 * @property {number} width
 * @property {number} height
 * @property {Uint8ClampedArray} rgba  row by row, the first row at y = 0 of image space
 * @property {Matrix} matrix  from image space (one unit a pixel) to points
 */

export class DisplayList {
  constructor() {
    /** The figure's frame: left, bottom, right, top. @type {[number, number, number, number]} */
    this.box = [0, 0, 0, 0];

    // Path i has the verbs from verbStarts[i] on, and the coordinates from coordinateStarts[i] on;
    // the next one's starts, or the ends of the columns, end it.
    this.verbs = new GrowingUint8();
    this.coordinates = new GrowingFloat32();
    this.verbStarts = new GrowingUint32();
    this.coordinateStarts = new GrowingUint32();

    this.kinds = new GrowingUint8();
    this.subjects = new GrowingUint32(); // of an item: index of a path, text or image
    this.colours = new GrowingUint32(); // 0xRRGGBB; of no meaning for images
    this.clipIndices = new GrowingInt32();
    this.penIndices = new GrowingInt32(); // -1 but for strokes

    /** @type {Clip[]} */
    this.clips = [];
    /** @type {Pen[]} */
    this.pens = [];
    /** @type {Text[]} */
    this.texts = [];
    /** @type {Image[]} */
    this.images = [];
  }

  get itemCount() {
    return this.kinds.length;
  }

  get pathCount() {
    return this.verbStarts.length;
  }

  /** Begins a path; its parts go to `verbs` and `coordinates`. Returns its index. */
  beginPath() {
    this.verbStarts.push(this.verbs.length);
    this.coordinateStarts.push(this.coordinates.length);
    return this.pathCount - 1;
  }

  /**
   * @param {number} what  a kind
   * @param {number} subject
   * @param {number} colour
   * @param {number} clip
   * @param {number} [pen]
   */
  addItem(what, subject, colour, clip, pen = -1) {
    this.kinds.push(what);
    this.subjects.push(subject);
    this.colours.push(colour);
    this.clipIndices.push(clip);
    this.penIndices.push(pen);
  }

  /**
   * Where a path's parts end.
   * @param {number} path
   */
  verbEnd(path) {
    return path + 1 < this.pathCount ? this.verbStarts.values[path + 1] : this.verbs.length;
  }
}
