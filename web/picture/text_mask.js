// Texts without anti-aliasing, for drawings that are compared.

import { writeText } from "./fonts.js";

/** @typedef {import("./display_list.js").Text} Text */
/** @typedef {import("./display_list.js").Matrix} Matrix */

/** How far letters reach around where they begin, in ems. */
const reach = { left: 0.5, right: 1.5, below: 0.5, above: 1.2 };

const opaque = 128;

/**
 * What draws texts with the fonts at hand, in a worker too.
 * @returns {import("./sharp.js").DrawTextMask}
 */
export function makeTextMask() {
  const canvas = new OffscreenCanvas(1, 1);
  const context = canvas.getContext("2d", { willReadFrequently: true });
  if (!context) throw new Error("the browser has no canvas to draw on");
  return (text, { scale, left, top }, width, height) => {
    const box = boxAround(text, scale, left, top, width, height);
    const mask = new Uint8Array(box.width * box.height);
    if (mask.length === 0) return { ...box, mask };
    // A new size clears it.
    canvas.width = box.width;
    canvas.height = box.height;
    const toPixels = new DOMMatrix([scale, 0, 0, -scale, -scale * left, scale * top]);
    writeText(context, text, new DOMMatrix().translate(-box.left, -box.top).multiply(toPixels));
    const { data } = context.getImageData(0, 0, box.width, box.height);
    for (let i = 0; i < mask.length; ++i) mask[i] = data[4 * i + 3] >= opaque ? 1 : 0;
    return { ...box, mask };
  };
}

/**
 * Where in the picture a text can be seen.
 * @param {Text} text
 * @param {number} scale
 * @param {number} left
 * @param {number} top
 * @param {number} width   of the picture
 * @param {number} height
 */
function boxAround({ starts, matrix }, scale, left, top, width, height) {
  const [a, b, c, d, e, f] = matrix;
  // A text may have more letters than a call takes operands.
  const first = starts.reduce((least, start) => Math.min(least, start), 0) - reach.left;
  const last = starts.reduce((most, start) => Math.max(most, start), 0) + reach.right;
  const corners = [first, last].flatMap((u) =>
    [-reach.below, reach.above].map((v) => ({
      x: scale * (a * u + c * v + e - left),
      y: scale * (top - (b * u + d * v + f)),
    })),
  );
  const within = (/** @type {number} */ place, /** @type {number} */ most) =>
    Math.min(most, Math.max(0, place));
  const xs = corners.map(({ x }) => x);
  const ys = corners.map(({ y }) => y);
  const boxLeft = within(Math.floor(Math.min(...xs)), width);
  const boxTop = within(Math.floor(Math.min(...ys)), height);
  return {
    left: boxLeft,
    top: boxTop,
    width: within(Math.ceil(Math.max(...xs)), width) - boxLeft,
    height: within(Math.ceil(Math.max(...ys)), height) - boxTop,
  };
}
