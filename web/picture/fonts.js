// The browser's fonts that stand in for those a figure only names.

/** @typedef {import("./display_list.js").Text} Text */
/** @typedef {CanvasRenderingContext2D | OffscreenCanvasRenderingContext2D} Context */

/** First the fonts that renderers of PostScript have, where a system has them, too. */
const families = {
  sans: "'Nimbus Sans', Helvetica, Arial, 'Liberation Sans', sans-serif",
  serif: "'Nimbus Roman', Times, 'Times New Roman', 'Liberation Serif', serif",
  mono: "'Nimbus Mono PS', Courier, 'Courier New', 'Liberation Mono', monospace",
};

/** Some browsers round the places and sizes of small letters: they are drawn large and shrunk. */
const pixelsPerEm = 100;

/**
 * Leaves the context with another transformation.
 * @param {Context} context
 * @param {Text} text
 * @param {DOMMatrix} toPixels  from points
 */
export function writeText(context, text, toPixels) {
  const slant = text.italic ? "italic " : "";
  const weight = text.bold ? "bold " : "";
  context.font = `${slant}${weight}${pixelsPerEm}px ${families[text.family]}`;
  context.setTransform(
    toPixels.multiply(new DOMMatrix(text.matrix)).scale(1 / pixelsPerEm, -1 / pixelsPerEm),
  );
  text.glyphs.forEach((glyph, i) => context.fillText(glyph, text.starts[i] * pixelsPerEm, 0));
}
