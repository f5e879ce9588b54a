// Draws a figure without anti-aliasing, so that two drawings can be compared pixel by pixel: every
// pixel is painted that an area touches; glyphs alone are thinner.

import { AreaPainter } from "./area_painter.js";
import { ClipRegions } from "./clip_regions.js";
import { DevicePath, viewOf } from "./device_path.js";
import { kind } from "./display_list.js";
import { paintGlyph } from "./glyph_painter.js";
import { paintImage } from "./image_painter.js";
import { blankPixmap } from "./pixmap.js";
import { StrokePainter } from "./stroke_painter.js";

/** @typedef {import("./display_list.js").DisplayList} DisplayList */
/** @typedef {import("./display_list.js").Text} Text */
/** @typedef {import("./pixmap.js").Pixmap} Pixmap */

/**
 * The part of a figure to be drawn, in pixels from the upper left corner of its frame on.
 * @typedef {object} Part
 * @property {number} scale  pixels per point
 * @property {number} [left]
 * @property {number} [top]
 * @property {number} width
 * @property {number} height
 */

/**
 * Where a text is seen: not 0 where the mask is. Left and top are pixels of the picture.
 * @typedef {object} TextMask
 * @property {number} left
 * @property {number} top
 * @property {number} width
 * @property {number} height
 * @property {Uint8Array} mask
 */

/**
 * Draws a text in the browser's own font.
 * @callback DrawTextMask
 * @param {Text} text
 * @param {import("./device_path.js").View} view
 * @param {number} width   of the picture, beyond which the mask does not reach
 * @param {number} height
 * @returns {TextMask}
 */

/**
 * Without a way to draw texts they are left out, and counted.
 * @param {DisplayList} list
 * @param {Part} part
 * @param {DrawTextMask} [textMask]
 * @returns {Pixmap & { textsLeftOut: number }}
 */
export function drawSharp(list, { scale, left = 0, top = 0, width, height }, textMask) {
  const view = viewOf(list, scale, left, top);
  const pixmap = blankPixmap(width, height);
  const areas = new AreaPainter(pixmap);
  const strokes = new StrokePainter(areas, scale);
  const clips = new ClipRegions(list, view, width, height);
  const path = new DevicePath(view);
  let textsLeftOut = 0;
  let lastClip = NaN;
  for (let i = 0; i < list.itemCount; ++i) {
    const clip = list.clipIndices.values[i];
    if (clip !== lastClip) {
      areas.clipTo(clips.region(clip));
      lastClip = clip;
    }
    areas.colour = list.colours.values[i];
    const subject = list.subjects.values[i];
    switch (list.kinds.values[i]) {
      case kind.fill:
        path.load(list, subject);
        areas.fill(path, false);
        break;
      case kind.evenOddFill:
        path.load(list, subject);
        areas.fill(path, true);
        break;
      case kind.glyph:
        path.load(list, subject);
        paintGlyph(areas, path);
        break;
      case kind.stroke:
        path.load(list, subject);
        strokes.stroke(path, list.pens[list.penIndices.values[i]]);
        break;
      case kind.image:
        paintImage(areas, list.images[subject], view);
        break;
      case kind.text:
        if (textMask) paintMask(areas, textMask(list.texts[subject], view, width, height));
        else ++textsLeftOut;
    }
  }
  return { ...pixmap, textsLeftOut };
}

/**
 * @param {AreaPainter} areas
 * @param {TextMask} text
 */
function paintMask(areas, { left, top, width, height, mask }) {
  const lastRow = Math.min(areas.bottom, top + height);
  const lastColumn = Math.min(areas.right, left + width);
  for (let y = Math.max(areas.top, top); y < lastRow; ++y) {
    for (let x = Math.max(areas.left, left); x < lastColumn; ++x) {
      if (mask[(y - top) * width + x - left] !== 0) areas.setPixel(x, y, areas.colour);
    }
  }
}
