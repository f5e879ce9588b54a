// Which part of a figure a canvas shows. Places in the figure are in points, y upwards; those on the
// canvas in pixels, y downwards.

/** @typedef {import("../worker/messages.js").View} View */
/** @typedef {[number, number, number, number]} Box */
/** @typedef {{ x: number, y: number, width: number, height: number }} Area */

const margin = 0.03;
const closest = 40; // times as large as a pixel of paper that is printed at 72 dpi
const meshZoom = 8;

/**
 * The whole figure, in the middle.
 * @param {Box} box
 * @param {number} width
 * @param {number} height
 * @returns {View}
 */
export function fittingView([left, bottom, right, top], width, height) {
  const scale = (1 - 2 * margin) * Math.min(width / (right - left), height / (top - bottom));
  return centred((left + right) / 2, (bottom + top) / 2, { scale, left, top, width, height });
}

/**
 * @param {number} x
 * @param {number} y
 * @param {View} view
 * @returns {View}
 */
function centred(x, y, view) {
  const { scale, width, height } = view;
  return { ...view, left: x - width / 2 / scale, top: y + height / 2 / scale };
}

/**
 * @param {View} a
 * @param {View} b
 */
export function isSameView(a, b) {
  const at = placeOf(a, b);
  return at.x === 0 && at.y === 0 && at.width === b.width && at.height === b.height;
}

/**
 * Near enough to see single polygons.
 * @param {View} view
 * @param {Box} box
 * @param {{ x: number, y: number }} place
 * @returns {View}
 */
export function viewOfPlace(view, box, { x, y }) {
  const whole = fittingView(box, view.width, view.height);
  return centred(x, y, { ...view, scale: Math.max(view.scale, meshZoom * whole.scale) });
}

/**
 * What is at a point of the canvas stays there.
 * @param {View} view
 * @param {Box} box
 * @param {number} factor
 * @param {{ x: number, y: number }} point
 * @returns {View}
 */
export function zoomedView(view, box, factor, { x, y }) {
  const whole = fittingView(box, view.width, view.height).scale;
  const largest = Math.max(closest, 100 * whole);
  const scale = Math.min(Math.max(view.scale * factor, whole / 2), largest);
  return {
    ...view,
    scale,
    left: view.left + x / view.scale - x / scale,
    top: view.top - y / view.scale + y / scale,
  };
}

/**
 * @param {View} view
 * @param {number} x  pixels by which what is seen moves to the right
 * @param {number} y  and down
 * @returns {View}
 */
export function movedView(view, x, y) {
  return { ...view, left: view.left - x / view.scale, top: view.top + y / view.scale };
}

/**
 * The same middle on a canvas of another size.
 * @param {View} view
 * @param {number} width
 * @param {number} height
 * @returns {View}
 */
export function resizedView(view, width, height) {
  const x = view.left + view.width / 2 / view.scale;
  const y = view.top - view.height / 2 / view.scale;
  return centred(x, y, { ...view, width, height });
}

/**
 * Where on the canvas the figure's frame is.
 * @param {Box} box
 * @param {View} view
 * @returns {Area}
 */
export function frameIn([left, bottom, right, top], view) {
  const { scale } = view;
  const [x, y] = [(left - view.left) * scale, (view.top - top) * scale];
  return { x, y, width: (right - left) * scale, height: (top - bottom) * scale };
}

/**
 * Where on the canvas what was drawn for another view belongs.
 * @param {View} drawn
 * @param {View} view
 * @returns {Area}
 */
export function placeOf(drawn, view) {
  const factor = view.scale / drawn.scale;
  return {
    x: (drawn.left - view.left) * view.scale,
    y: (view.top - drawn.top) * view.scale,
    width: drawn.width * factor,
    height: drawn.height * factor,
  };
}
