// Paints strokes as areas: a box for every straight piece, and joins and caps beside them. All have
// the same colour, so that nobody sees where they overlap. What is thinner than a pixel is drawn as
// the thinnest line there is.

import { dashed } from "./dashes.js";
import { onePixel } from "./device_path.js";
import { paintThinLine } from "./thin_line.js";

/** @typedef {import("./device_path.js").DevicePath} DevicePath */
/** @typedef {import("./display_list.js").Pen} Pen */
/** @typedef {import("./area_painter.js").AreaPainter} AreaPainter */

/**
 * A polyline, x and y in turn, in 1/256 pixel. A closed one does not repeat its first point.
 * @typedef {{ points: number[], isClosed: boolean }} Polyline
 */

const cap = { butt: 0, round: 1, square: 2 };
const join = { mitre: 0, round: 1, bevel: 2 };

/** A pixel, whatever was lost on the way to it. */
const thinnest = onePixel - 1;

const mostCorners = 64;

/** A straight piece: where it ends, its direction in the pen's units, and half the pen across it. */
class Piece {
  /**
   * @param {StrokePainter} strokes
   * @param {number} x0
   * @param {number} y0
   * @param {number} x1
   * @param {number} y1
   */
  constructor(strokes, x0, y0, x1, y1) {
    this.x0 = x0;
    this.y0 = y0;
    this.x1 = x1;
    this.y1 = y1;
    const { a, b, c, d, determinant, half } = strokes;
    this.half = half;
    const u = (d * (x1 - x0) - c * (y1 - y0)) / determinant;
    const v = (a * (y1 - y0) - b * (x1 - x0)) / determinant;
    const length = Math.hypot(u, v);
    this.u = u / length;
    this.v = v / length;
    this.acrossX = half * (c * this.u - a * this.v);
    this.acrossY = half * (d * this.u - b * this.v);
    this.alongX = half * (a * this.u + c * this.v);
    this.alongY = half * (b * this.u + d * this.v);
    const breadth =
      (2 * Math.abs(this.acrossX * (y1 - y0) - this.acrossY * (x1 - x0))) /
      Math.hypot(x1 - x0, y1 - y0);
    this.isThin = !(breadth >= thinnest);
    if (this.acrossX === 0 || this.acrossY === 0) this.makeWhole(breadth);
  }

  /**
   * Upright and level lines are a whole number of pixels wide, so that all those of one pen, as in
   * a grid, look alike.
   * @param {number} breadth
   */
  makeWhole(breadth) {
    const factor = (Math.round(breadth / onePixel) * onePixel) / breadth;
    this.acrossX *= factor;
    this.acrossY *= factor;
    this.half *= factor;
  }
}

export class StrokePainter {
  /**
   * @param {AreaPainter} areas
   * @param {number} scale
   */
  constructor(areas, scale) {
    this.areas = areas;
    this.scale = scale;
    this.xs = new Int32Array(mostCorners);
    this.ys = new Int32Array(mostCorners);
    // The pen's matrix to 1/256 pixel.
    this.a = 1;
    this.b = 0;
    this.c = 0;
    this.d = 1;
    this.determinant = 1;
    this.half = 0;
    /** @type {Pen | null} */
    this.pen = null;
    // What a round pen covers, around its place; the next join has mostly the same.
    this.roundXs = new Float64Array(mostCorners);
    this.roundYs = new Float64Array(mostCorners);
    this.roundHalf = NaN;
    this.roundCorners = 0;
  }

  /**
   * @param {DevicePath} path
   * @param {Pen} pen
   */
  stroke(path, pen) {
    this.take(pen);
    for (let i = 0; i < path.subpaths; ++i) {
      const line = polylineOf(path, i);
      if (pen.dashes.length === 0) {
        this.strokePolyline(line, pen);
        continue;
      }
      const lengthOf = (/** @type {number} */ x, /** @type {number} */ y) =>
        Math.hypot(this.d * x - this.c * y, this.a * y - this.b * x) / Math.abs(this.determinant);
      for (const dash of dashed(line, pen, lengthOf)) this.strokePolyline(dash, pen);
    }
  }

  /** @param {Pen} pen */
  take(pen) {
    if (this.pen === pen) return;
    this.pen = pen;
    this.roundHalf = NaN;
    const factor = this.scale * onePixel;
    [this.a, this.b, this.c, this.d] = pen.matrix;
    this.a *= factor;
    this.b *= -factor;
    this.c *= factor;
    this.d *= -factor;
    this.determinant = this.a * this.d - this.b * this.c;
    this.half = pen.width / 2;
    if (Math.abs(this.determinant) > 1e-9) return;
    // A pen that is flat has no breadth that could be told: its lines are the thinnest.
    this.a = this.d = factor;
    this.b = this.c = 0;
    this.determinant = factor * factor;
    this.half = 0;
  }

  /**
   * @param {Polyline} line
   * @param {Pen} pen
   */
  strokePolyline({ points, isClosed }, pen) {
    const last = points.length - 2;
    if (last === 0) {
      this.paintPoint(points[0], points[1], pen);
      return;
    }
    /** @type {Piece | null} */
    let previous = null;
    /** @type {Piece | null} */
    let first = null;
    const end = isClosed ? last + 2 : last;
    for (let i = 0; i < end; i += 2) {
      const next = i === last ? 0 : i + 2;
      const piece = new Piece(this, points[i], points[i + 1], points[next], points[next + 1]);
      this.paintPiece(piece);
      if (previous) this.paintJoin(previous, piece, pen);
      first ??= piece;
      previous = piece;
    }
    if (!first || !previous) return;
    if (isClosed) {
      this.paintJoin(previous, first, pen);
    } else if (pen.cap !== cap.butt) {
      this.paintCap(first, first.x0, first.y0, -1, pen);
      this.paintCap(previous, previous.x1, previous.y1, 1, pen);
    }
  }

  /**
   * A line without length has no direction: only a round pen leaves a mark.
   * @param {number} x
   * @param {number} y
   * @param {Pen} pen
   */
  paintPoint(x, y, pen) {
    if (pen.cap === cap.round) this.paintRound(x, y, this.half);
  }

  /** @param {Piece} piece */
  paintPiece(piece) {
    const { x0, y0, x1, y1, acrossX, acrossY } = piece;
    if (piece.isThin) {
      paintThinLine(this.areas, x0, y0, x1, y1);
      return;
    }
    this.setCorner(0, x0 + acrossX, y0 + acrossY);
    this.setCorner(1, x1 + acrossX, y1 + acrossY);
    this.setCorner(2, x1 - acrossX, y1 - acrossY);
    this.setCorner(3, x0 - acrossX, y0 - acrossY);
    this.areas.fillMonotone(this.xs, this.ys, 0, 4);
  }

  /**
   * @param {Piece} before
   * @param {Piece} after
   * @param {Pen} pen
   */
  paintJoin(before, after, pen) {
    if (before.isThin || after.isThin) return;
    const x = after.x0;
    const y = after.y0;
    const sine = before.u * after.v - before.v * after.u;
    const cosine = before.u * after.u + before.v * after.v;
    // The gap is on the outer side of the bend.
    const side = sine > 0 ? -1 : 1;
    if (pen.join === join.round) {
      const from = Math.atan2(side * before.u, -side * before.v);
      if (cosine < 0.999) this.paintSector(after, before, from, Math.atan2(sine, cosine));
      return;
    }
    const mitreSquared = 2 / (1 + cosine);
    this.setCorner(0, x, y);
    this.setCorner(1, x + side * before.acrossX, y + side * before.acrossY);
    let corners = 2;
    if (pen.join === join.mitre && mitreSquared <= pen.miterLimit * pen.miterLimit) {
      const tipX = ((before.acrossX + after.acrossX) * mitreSquared) / 2;
      const tipY = ((before.acrossY + after.acrossY) * mitreSquared) / 2;
      this.setCorner(corners++, x + side * tipX, y + side * tipY);
    }
    this.setCorner(corners++, x + side * after.acrossX, y + side * after.acrossY);
    this.areas.fillMonotone(this.xs, this.ys, 0, corners);
  }

  /**
   * @param {Piece} piece
   * @param {number} x
   * @param {number} y
   * @param {number} outwards  1 where the piece ends, -1 where it begins
   * @param {Pen} pen
   */
  paintCap(piece, x, y, outwards, pen) {
    if (piece.isThin) return;
    if (pen.cap === cap.round) {
      this.paintRound(x, y, piece.half);
      return;
    }
    const farX = x + outwards * piece.alongX;
    const farY = y + outwards * piece.alongY;
    this.setCorner(0, x + piece.acrossX, y + piece.acrossY);
    this.setCorner(1, farX + piece.acrossX, farY + piece.acrossY);
    this.setCorner(2, farX - piece.acrossX, farY - piece.acrossY);
    this.setCorner(3, x - piece.acrossX, y - piece.acrossY);
    this.areas.fillMonotone(this.xs, this.ys, 0, 4);
  }

  /**
   * The part of a round pen that fills a gap. All of it would reach beyond the end of a short dash.
   * @param {Piece} after
   * @param {Piece} before
   * @param {number} from  an angle in the pen's units
   * @param {number} turn
   */
  paintSector({ x0, y0, half }, before, from, turn) {
    const radius = Math.min(half, before.half);
    if (radius !== this.roundHalf) this.shapeRound(radius);
    const pieces = Math.ceil((Math.abs(turn) * this.roundCorners) / (2 * Math.PI));
    this.setCorner(0, x0, y0);
    for (let i = 0; i <= pieces; ++i) {
      const u = radius * Math.cos(from + (turn * i) / pieces);
      const v = radius * Math.sin(from + (turn * i) / pieces);
      this.setCorner(i + 1, x0 + this.a * u + this.c * v, y0 + this.b * u + this.d * v);
    }
    this.areas.fillMonotone(this.xs, this.ys, 0, pieces + 2);
  }

  /**
   * What a round pen covers that stands still.
   * @param {number} x
   * @param {number} y
   * @param {number} half  the breadth
   */
  paintRound(x, y, half) {
    if (half !== this.roundHalf) this.shapeRound(half);
    for (let i = 0; i < this.roundCorners; ++i) {
      this.setCorner(i, x + this.roundXs[i], y + this.roundYs[i]);
    }
    this.areas.fillMonotone(this.xs, this.ys, 0, this.roundCorners);
  }

  /** @param {number} half */
  shapeRound(half) {
    const { a, b, c, d } = this;
    const radius = half * Math.max(Math.hypot(a, b), Math.hypot(c, d));
    const corners = Math.min(mostCorners, 8 + 4 * Math.ceil(Math.sqrt(radius / onePixel)));
    for (let i = 0; i < corners; ++i) {
      const angle = (2 * Math.PI * i) / corners;
      const u = half * Math.cos(angle);
      const v = half * Math.sin(angle);
      this.roundXs[i] = a * u + c * v;
      this.roundYs[i] = b * u + d * v;
    }
    this.roundHalf = half;
    this.roundCorners = corners;
  }

  /**
   * Unlike an area's, a stroke's edge between two pixels touches the right and the lower one, too.
   * That is how other renderers draw the frames and axes whose pens are whole pixels wide.
   * @param {number} i
   * @param {number} x
   * @param {number} y
   */
  setCorner(i, x, y) {
    this.xs[i] = Math.round(x) + 1;
    this.ys[i] = Math.round(y) + 1;
  }
}

/**
 * A subpath without the points that repeat the one before.
 * @param {DevicePath} path
 * @param {number} subpath
 * @returns {Polyline}
 */
function polylineOf(path, subpath) {
  /** @type {number[]} */
  const points = [];
  for (let i = path.starts[subpath]; i < path.starts[subpath + 1]; ++i) {
    const x = path.xs[i];
    const y = path.ys[i];
    if (x !== points.at(-2) || y !== points.at(-1)) points.push(x, y);
  }
  const isClosed = path.isClosed[subpath] === 1;
  if (isClosed && points.length > 2 && points[0] === points.at(-2) && points[1] === points.at(-1)) {
    points.length -= 2;
  }
  return { points, isClosed: isClosed && points.length > 2 };
}
