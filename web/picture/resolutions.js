// How closely a figure is looked at.

/** @typedef {import("./display_list.js").DisplayList} DisplayList */
/** @typedef {import("./sharp.js").Part} Part */

const pointsPerInch = 72;
const mostCoarsePixels = 2_100_000;
const mostFinePixels = 12_000_000;
const longestFineSide = 4000;

/** Pixels per point below which lines would run together. */
const leastScale = 0.5;

/**
 * The whole figure at the resolution of a screen and at that of print, where slivers show. It is
 * the same for all figures of ordinary size; a small one is looked at more closely.
 * @param {DisplayList} list
 * @returns {{ coarse: Part, fine: Part } | null} nothing for a frame without area, or a huge one
 */
export function resolutions({ box }) {
  const width = box[2] - box[0];
  const height = box[3] - box[1];
  const longer = Math.max(width, height);
  const smallest =
    leastScale * Math.max(longer / longestFineSide, Math.sqrt((width * height) / mostCoarsePixels));
  if (!(width > 0 && height > 0 && smallest <= 1)) return null;
  const fitting = (
    /** @type {number} */ pixels,
    /** @type {number} */ least,
    /** @type {number} */ most,
  ) => Math.min(most, Math.max(least, (pixels * pointsPerInch) / longer)) / pointsPerInch;
  const within = (/** @type {number} */ scale, /** @type {number} */ pixels) =>
    Math.min(scale, Math.sqrt(pixels / (width * height)));
  const part = (/** @type {number} */ scale) => ({
    scale,
    width: Math.max(1, Math.ceil(scale * width - 1e-6)),
    height: Math.max(1, Math.ceil(scale * height - 1e-6)),
  });
  const fine = Math.min(fitting(2000, 600, 2400), longestFineSide / longer);
  return {
    coarse: part(within(fitting(400, 144, 600), mostCoarsePixels)),
    fine: part(within(fine, mostFinePixels)),
  };
}
