// Paints a figure on a canvas with its anti-aliasing, as viewers do it: every polygon by itself, so
// that a mesh shows. It is done in slices, as a million polygons take seconds.

import { clipShapes } from "./clip_shapes.js";
import { viewOf } from "./device_path.js";
import { kind, noClip, verb } from "./display_list.js";
import { writeText } from "./fonts.js";
import { itemBoxes } from "./item_boxes.js";

/** @typedef {import("./display_list.js").DisplayList} DisplayList */
/** @typedef {import("./display_list.js").Image} Image */
/** @typedef {import("./display_list.js").Pen} Pen */
/** @typedef {import("./fonts.js").Context} Context */
/** @typedef {import("./sharp.js").Part} Part */

/** @type {CanvasLineCap[]} */
const caps = ["butt", "round", "square"];
/** @type {CanvasLineJoin[]} */
const joins = ["miter", "round", "bevel"];

/** So many items are painted between two looks at the clock. */
const slice = 128;

/** What all views of a figure have in common. */
export class PaintedFigure {
  /** @param {DisplayList} list */
  constructor(list) {
    this.list = list;
    this.boxes = itemBoxes(list);
    this.clipShapes = clipShapes(list);
    /** By path, of those that clip. @type {Map<number, Path2D>} */
    this.clipPaths = new Map();
    /** @type {Map<number, OffscreenCanvas>} */
    this.images = new Map();
  }
}

/** Paints one view of a figure; whoever wants another one drops it and makes a new one. */
export class Painting {
  /**
   * @param {Context} context
   * @param {PaintedFigure} figure
   * @param {Part} part
   */
  constructor(context, figure, { scale, left = 0, top = 0, width, height }) {
    this.context = context;
    this.figure = figure;
    this.list = figure.list;
    const view = viewOf(this.list, scale, left, top);
    this.toPixels = new DOMMatrix([scale, 0, 0, -scale, -scale * view.left, scale * view.top]);
    // In points. An area beside the view can still colour half a pixel of it.
    this.left = view.left - 1 / scale;
    this.right = view.left + (width + 1) / scale;
    this.top = view.top + 1 / scale;
    this.bottom = view.top - (height + 1) / scale;
    this.next = 0;
    this.colour = -1;
    this.clip = noClip;
    // A painting that was dropped leaves its clip behind.
    context.reset();
    context.fillStyle = "#fff";
    context.fillRect(0, 0, width, height);
    context.save();
    context.setTransform(this.toPixels);
  }

  /**
   * Paints until a time of the page's clock.
   * @param {number} deadline
   * @returns {boolean} whether all is painted
   */
  paintUntil(deadline) {
    const count = this.list.itemCount;
    let left = slice;
    for (; this.next < count; ++this.next) {
      if (!this.isInView(4 * this.next)) continue;
      if (left-- === 0) {
        if (performance.now() >= deadline) return false;
        left = slice;
      }
      this.paintItem(this.next);
    }
    return true;
  }

  /** @param {number} at */
  isInView(at) {
    const { boxes } = this.figure;
    return (
      boxes[at] <= this.right &&
      boxes[at + 2] >= this.left &&
      boxes[at + 1] <= this.top &&
      boxes[at + 3] >= this.bottom
    );
  }

  /** @param {number} item */
  paintItem(item) {
    const { list, context } = this;
    this.clipTo(list.clipIndices.values[item]);
    this.useColour(list.colours.values[item]);
    const subject = list.subjects.values[item];
    switch (list.kinds.values[item]) {
      case kind.fill:
      case kind.glyph:
        this.trace(subject);
        context.fill();
        break;
      case kind.evenOddFill:
        this.trace(subject);
        context.fill("evenodd");
        break;
      case kind.stroke:
        this.trace(subject);
        this.stroke(list.pens[list.penIndices.values[item]]);
        break;
      case kind.text:
        writeText(context, list.texts[subject], this.toPixels);
        context.setTransform(this.toPixels);
        break;
      case kind.image:
        this.paintImage(subject);
    }
  }

  /** @param {number} clip */
  clipTo(clip) {
    const { clipShapes: shapes, list } = this.figure;
    const shape = clip === noClip ? noClip : shapes[clip];
    if (shape === this.clip) return;
    this.clip = shape;
    this.colour = -1;
    const { context } = this;
    context.restore();
    context.save();
    context.setTransform(this.toPixels);
    for (let i = shape; i !== noClip; i = list.clips[i].parent) {
      const { path, evenOdd } = list.clips[shapes[i]];
      context.clip(this.clipPath(path), evenOdd ? "evenodd" : "nonzero");
    }
  }

  /** @param {number} path */
  clipPath(path) {
    const known = this.figure.clipPaths.get(path);
    if (known) return known;
    const traced = new Path2D();
    tracePath(traced, this.list, path);
    this.figure.clipPaths.set(path, traced);
    return traced;
  }

  /** @param {number} colour */
  useColour(colour) {
    if (colour === this.colour) return;
    this.colour = colour;
    const style = `#${colour.toString(16).padStart(6, "0")}`;
    this.context.fillStyle = style;
    this.context.strokeStyle = style;
  }

  /** @param {number} path */
  trace(path) {
    this.context.beginPath();
    tracePath(this.context, this.list, path);
  }

  /** @param {Pen} pen */
  stroke(pen) {
    const { context } = this;
    const [a, b, c, d] = pen.matrix;
    context.lineCap = caps[pen.cap];
    context.lineJoin = joins[pen.join];
    context.miterLimit = pen.miterLimit;
    if (pen.width > 0 && a * d !== b * c) {
      context.setTransform(this.toPixels.multiply(new DOMMatrix([a, b, c, d, 0, 0])));
      context.lineWidth = pen.width;
      context.setLineDash(pen.dashes);
      context.lineDashOffset = pen.dashOffset;
    } else {
      // The thinnest line is one pixel wide, whatever its units.
      context.resetTransform();
      context.lineWidth = 1;
      const unit = this.toPixels.a * Math.sqrt(Math.abs(a * d - b * c));
      context.setLineDash(pen.dashes.map((dash) => unit * dash));
      context.lineDashOffset = unit * pen.dashOffset;
    }
    context.stroke();
    context.setTransform(this.toPixels);
  }

  /** @param {number} index */
  paintImage(index) {
    const { context } = this;
    const image = this.list.images[index];
    if (image.width === 0 || image.height === 0) return;
    let canvas = this.figure.images.get(index);
    if (!canvas) {
      canvas = canvasOf(image);
      this.figure.images.set(index, canvas);
    }
    context.imageSmoothingEnabled = false;
    context.setTransform(this.toPixels.multiply(new DOMMatrix(image.matrix)));
    context.drawImage(canvas, 0, 0);
    context.setTransform(this.toPixels);
  }
}

/**
 * @param {CanvasPath} target
 * @param {DisplayList} list
 * @param {number} path
 */
function tracePath(target, list, path) {
  const verbs = list.verbs.values;
  const numbers = list.coordinates.values;
  let n = list.coordinateStarts.values[path];
  const end = list.verbEnd(path);
  for (let i = list.verbStarts.values[path]; i < end; ++i) {
    switch (verbs[i]) {
      case verb.move:
        target.moveTo(numbers[n], numbers[n + 1]);
        n += 2;
        break;
      case verb.line:
        target.lineTo(numbers[n], numbers[n + 1]);
        n += 2;
        break;
      case verb.curve:
        target.bezierCurveTo(
          numbers[n],
          numbers[n + 1],
          numbers[n + 2],
          numbers[n + 3],
          numbers[n + 4],
          numbers[n + 5],
        );
        n += 6;
        break;
      default:
        target.closePath();
    }
  }
}

/** @param {Image} image */
function canvasOf({ width, height, rgba }) {
  const canvas = new OffscreenCanvas(width, height);
  const data = new ImageData(width, height);
  data.data.set(rgba);
  canvas.getContext("2d")?.putImageData(data, 0, 0);
  return canvas;
}
