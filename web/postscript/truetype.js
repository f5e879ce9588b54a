// Reads the outlines of TrueType fonts, as they are in figures.

import { PostScriptError } from "./values.js";
import { Outline } from "./outline.js";

const deepestComposite = 8;
const mostParts = 1000;

const pointFlag = Object.freeze({
  onCurve: 1,
  shortX: 2,
  shortY: 4,
  repeat: 8,
  sameX: 16,
  sameY: 32,
});
const partFlag = Object.freeze({
  words: 1,
  offsets: 2,
  scale: 8,
  more: 32,
  twoScales: 64,
  matrix: 128,
});

/** @typedef {{ x: number, y: number, onCurve: boolean }} Point */

export class TrueTypeFont {
  /** @param {Uint8Array} bytes */
  constructor(bytes) {
    this.view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    /** @type {Map<string, number>} */
    this.tables = new Map();
    const count = this.view.getUint16(4);
    for (let i = 0; i < count; ++i) {
      const entry = 12 + 16 * i;
      const tag = String.fromCharCode(...bytes.subarray(entry, entry + 4));
      this.tables.set(tag, this.view.getUint32(entry + 8));
    }
    const head = this.table("head");
    this.unitsPerEm = this.view.getUint16(head + 18) || 1000;
    this.hasLongOffsets = this.view.getInt16(head + 50) !== 0;
    this.glyphCount = this.view.getUint16(this.table("maxp") + 4);
    this.widthCount = this.view.getUint16(this.table("hhea") + 34);
    /** Of the glyph being read. */
    this.partCount = 0;
    /** @type {Map<number, Outline>} */
    this.outlines = new Map();
  }

  /** @param {string} tag */
  table(tag) {
    const offset = this.tables.get(tag);
    if (offset === undefined) throw new PostScriptError("invalidfont", tag);
    return offset;
  }

  /**
   * In units of the em.
   * @param {number} index
   * @returns {Outline}
   */
  outline(index) {
    const known = this.outlines.get(index);
    if (known) return known;
    const ofUnits = new Outline();
    this.partCount = 0;
    try {
      this.addGlyph(ofUnits, index, 0);
      ofUnits.width = [this.width(index), 0];
    } catch (thrown) {
      throw thrown instanceof RangeError ? new PostScriptError("invalidfont") : thrown;
    }
    const scale = 1 / this.unitsPerEm;
    const outline = new Outline();
    outline.append(ofUnits, [scale, 0, 0, scale, 0, 0]);
    outline.width = [ofUnits.width[0] * scale, 0];
    this.outlines.set(index, outline);
    return outline;
  }

  /** @param {number} index */
  width(index) {
    const entry = Math.max(0, Math.min(index, this.widthCount - 1));
    return this.view.getUint16(this.table("hmtx") + 4 * entry);
  }

  /**
   * Where a glyph begins and ends.
   * @param {number} index
   */
  extent(index) {
    if (index < 0 || index >= this.glyphCount) throw new PostScriptError("invalidfont");
    const locations = this.table("loca");
    const glyphs = this.table("glyf");
    /** @param {number} i */
    const offset = (i) =>
      this.hasLongOffsets
        ? this.view.getUint32(locations + 4 * i)
        : 2 * this.view.getUint16(locations + 2 * i);
    return [glyphs + offset(index), glyphs + offset(index + 1)];
  }

  /**
   * @param {Outline} outline
   * @param {number} index
   * @param {number} depth
   */
  addGlyph(outline, index, depth) {
    if (depth > deepestComposite) throw new PostScriptError("invalidfont");
    const [begin, end] = this.extent(index);
    if (end <= begin) return;
    const contourCount = this.view.getInt16(begin);
    if (contourCount < 0) this.addParts(outline, begin + 10, depth);
    else this.addContours(outline, begin + 10, contourCount);
  }

  /**
   * @param {Outline} outline
   * @param {number} at
   * @param {number} depth
   */
  addParts(outline, at, depth) {
    const { view } = this;
    const fraction = (/** @type {number} */ i) => view.getInt16(i) / 16384;
    let flags;
    do {
      if (++this.partCount > mostParts) {
        throw new PostScriptError("invalidfont", "an endless glyph");
      }
      flags = view.getUint16(at);
      const index = view.getUint16(at + 2);
      at += 4;
      if (!(flags & partFlag.offsets)) throw new PostScriptError("invalidfont", "points to match");
      const words = flags & partFlag.words;
      const dx = words ? view.getInt16(at) : view.getInt8(at);
      const dy = words ? view.getInt16(at + 2) : view.getInt8(at + 1);
      at += words ? 4 : 2;
      /** @type {import("./matrix.js").Matrix} */
      const matrix = [1, 0, 0, 1, dx, dy];
      if (flags & partFlag.scale) {
        matrix[0] = matrix[3] = fraction(at);
        at += 2;
      } else if (flags & partFlag.twoScales) {
        matrix[0] = fraction(at);
        matrix[3] = fraction(at + 2);
        at += 4;
      } else if (flags & partFlag.matrix) {
        for (let i = 0; i < 4; ++i) matrix[i] = fraction(at + 2 * i);
        at += 8;
      }
      const part = new Outline();
      this.addGlyph(part, index, depth + 1);
      outline.append(part, matrix);
    } while (flags & partFlag.more);
  }

  /**
   * @param {Outline} outline
   * @param {number} at
   * @param {number} contourCount
   */
  addContours(outline, at, contourCount) {
    const ends = Array.from({ length: contourCount }, (_, i) => this.view.getUint16(at + 2 * i));
    const points = this.readPoints(at + 2 * contourCount, (ends[contourCount - 1] ?? -1) + 1);
    let first = 0;
    for (const last of ends) {
      if (last >= first) addContour(outline, points.slice(first, last + 1));
      first = last + 1;
    }
  }

  /**
   * @param {number} start
   * @param {number} count
   * @returns {Point[]}
   */
  readPoints(start, count) {
    const { view } = this;
    let at = start + 2 + view.getUint16(start); // behind the instructions
    /** @type {number[]} */
    const flags = [];
    while (flags.length < count) {
      const flag = view.getUint8(at++);
      const times = flag & pointFlag.repeat ? view.getUint8(at++) + 1 : 1;
      for (let i = 0; i < times; ++i) flags.push(flag);
    }
    /**
     * @param {number} short
     * @param {number} same
     */
    const readColumn = (short, same) => {
      let value = 0;
      return Array.from({ length: count }, (_, i) => {
        if (flags[i] & short) value += view.getUint8(at++) * (flags[i] & same ? 1 : -1);
        else if (!(flags[i] & same)) {
          value += view.getInt16(at);
          at += 2;
        }
        return value;
      });
    };
    const xs = readColumn(pointFlag.shortX, pointFlag.sameX);
    const ys = readColumn(pointFlag.shortY, pointFlag.sameY);
    return xs.map((x, i) => ({ x, y: ys[i], onCurve: (flags[i] & pointFlag.onCurve) !== 0 }));
  }
}

/**
 * @param {Point} a
 * @param {Point} b
 * @returns {Point}
 */
function middle(a, b) {
  return { x: (a.x + b.x) / 2, y: (a.y + b.y) / 2, onCurve: true };
}

/**
 * Adds a closed curve of lines and parabolas; between two points off the curve lies one on it.
 * @param {Outline} outline
 * @param {Point[]} points
 */
function addContour(outline, points) {
  const firstOn = points.findIndex((point) => point.onCurve);
  const start = firstOn < 0 ? middle(points[0], points[points.length - 1]) : points[firstOn];
  const rest = firstOn < 0 ? points : [...points.slice(firstOn + 1), ...points.slice(0, firstOn)];
  outline.moveTo(start.x, start.y);
  let from = start;
  /** @type {Point | null} */
  let control = null;
  for (const point of [...rest, start]) {
    if (!control) {
      if (point.onCurve) outline.lineTo(point.x, point.y);
    } else {
      const to = point.onCurve ? point : middle(control, point);
      addParabola(outline, from, control, to);
      from = to;
    }
    if (point.onCurve) from = point;
    control = point.onCurve ? null : point;
  }
  outline.close();
}

/**
 * @param {Outline} outline
 * @param {Point} from
 * @param {Point} control
 * @param {Point} to
 */
function addParabola(outline, from, control, to) {
  outline.curveTo(
    (from.x + 2 * control.x) / 3,
    (from.y + 2 * control.y) / 3,
    (to.x + 2 * control.x) / 3,
    (to.y + 2 * control.y) / 3,
    to.x,
    to.y,
  );
}
