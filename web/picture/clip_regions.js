// What a clip lets through, in pixels: a box, and a mask where it is no box.

import { AreaPainter } from "./area_painter.js";
import { clipShapes } from "./clip_shapes.js";
import { DevicePath, fractionBits } from "./device_path.js";
import { noClip } from "./display_list.js";

/** @typedef {import("./display_list.js").DisplayList} DisplayList */
/** @typedef {import("./display_list.js").Clip} Clip */

/**
 * Right and bottom are one past the last column and row.
 * @typedef {object} ClipRegion
 * @property {number} left
 * @property {number} top
 * @property {number} right
 * @property {number} bottom
 * @property {Uint32Array | null} mask  1 where it is seen, of the pixels from the corner below on
 * @property {number} maskLeft
 * @property {number} maskTop
 * @property {number} maskWidth
 */

/** Kept for the next item that has the same clip. */
const mostMaskPixels = 16_000_000;

export class ClipRegions {
  /**
   * @param {DisplayList} list
   * @param {import("./device_path.js").View} view
   * @param {number} width
   * @param {number} height
   */
  constructor(list, view, width, height) {
    this.list = list;
    this.path = new DevicePath(view);
    /** @type {ClipRegion} */
    this.everything = boxRegion(0, 0, width, height);
    this.shapes = clipShapes(list);
    /** By shape. @type {Map<number, ClipRegion>} */
    this.regions = new Map();
    this.maskPixels = 0;
  }

  /**
   * @param {number} index  of a clip, or noClip
   * @returns {ClipRegion}
   */
  region(index) {
    /** @type {number[]} */
    const missing = [];
    let region = this.everything;
    for (let i = index; i !== noClip; i = this.list.clips[i].parent) {
      const known = this.regions.get(this.shapes[i]);
      if (known) {
        region = known;
        break;
      }
      missing.push(this.shapes[i]);
    }
    for (const shape of missing.reverse()) {
      region = this.within(region, this.list.clips[shape]);
      if (region.mask !== null) this.makeRoom(region.mask.length);
      this.regions.set(shape, region);
    }
    return region;
  }

  /** @param {number} pixels */
  makeRoom(pixels) {
    this.maskPixels += pixels;
    if (this.maskPixels <= mostMaskPixels) return;
    this.maskPixels = pixels;
    this.regions.clear();
  }

  /**
   * @param {ClipRegion} parent
   * @param {Clip} clip
   * @returns {ClipRegion}
   */
  within(parent, clip) {
    this.path.load(this.list, clip.path);
    const box = boundsOf(this.path);
    const left = Math.max(parent.left, box.left);
    const top = Math.max(parent.top, box.top);
    const right = Math.max(left, Math.min(parent.right, box.right));
    const bottom = Math.max(top, Math.min(parent.bottom, box.bottom));
    const isEmpty = left === right || top === bottom;
    if (isEmpty || isRectangle(this.path)) return { ...parent, left, top, right, bottom };
    return this.drawMask(parent, clip, boxRegion(left, top, right, bottom));
  }

  /**
   * @param {ClipRegion} parent
   * @param {Clip} clip
   * @param {ClipRegion} box
   * @returns {ClipRegion}
   */
  drawMask(parent, clip, box) {
    const width = box.right - box.left;
    const height = box.bottom - box.top;
    const mask = new Uint32Array(width * height);
    const painter = new AreaPainter({ width, height, pixels: mask });
    painter.colour = 1;
    moveBy(this.path, box.left, box.top);
    painter.fill(this.path, clip.evenOdd);
    if (parent.mask) {
      for (let y = 0; y < height; ++y) {
        const from = (box.top + y - parent.maskTop) * parent.maskWidth + box.left - parent.maskLeft;
        for (let x = 0; x < width; ++x) mask[y * width + x] &= parent.mask[from + x];
      }
    }
    return { ...box, mask, maskLeft: box.left, maskTop: box.top, maskWidth: width };
  }
}

/**
 * @param {number} left
 * @param {number} top
 * @param {number} right
 * @param {number} bottom
 * @returns {ClipRegion}
 */
function boxRegion(left, top, right, bottom) {
  return { left, top, right, bottom, mask: null, maskLeft: 0, maskTop: 0, maskWidth: 0 };
}

/**
 * The pixels that a path touches; none for one without points.
 * @param {DevicePath} path
 */
function boundsOf(path) {
  let left = Infinity;
  let top = Infinity;
  let right = -Infinity;
  let bottom = -Infinity;
  for (let i = 0; i < path.length; ++i) {
    left = Math.min(left, path.xs[i]);
    top = Math.min(top, path.ys[i]);
    right = Math.max(right, path.xs[i]);
    bottom = Math.max(bottom, path.ys[i]);
  }
  const pastLast = (/** @type {number} */ edge) => ((edge - 1) >> fractionBits) + 1;
  if (path.length === 0) return { left: 0, top: 0, right: 0, bottom: 0 };
  return {
    left: left >> fractionBits,
    top: top >> fractionBits,
    right: pastLast(right),
    bottom: pastLast(bottom),
  };
}

/** @param {DevicePath} path */
function isRectangle({ xs, ys, subpaths, length }) {
  if (subpaths !== 1) return false;
  const corners = length === 5 && xs[4] === xs[0] && ys[4] === ys[0] ? 4 : length;
  if (corners !== 4) return false;
  const horizontalFirst = ys[0] === ys[1] && xs[1] === xs[2] && ys[2] === ys[3] && xs[3] === xs[0];
  const verticalFirst = xs[0] === xs[1] && ys[1] === ys[2] && xs[2] === xs[3] && ys[3] === ys[0];
  return horizontalFirst || verticalFirst;
}

/**
 * @param {DevicePath} path
 * @param {number} left
 * @param {number} top
 */
function moveBy(path, left, top) {
  for (let i = 0; i < path.length; ++i) {
    path.xs[i] -= left << fractionBits;
    path.ys[i] -= top << fractionBits;
  }
}
