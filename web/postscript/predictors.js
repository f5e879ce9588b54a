// Undoes what a predictor did to samples before they were packed: each byte, or each sample, became
// its difference to what its neighbours foretell.

import { NotDrawn, PostScriptError } from "./values.js";

/** @typedef {{ readByte(): number }} ByteSource */

/**
 * @typedef {object} Prediction
 * @property {number} predictor  2 for differences of samples, from 10 on a filter byte per row
 * @property {number} colors
 * @property {number} bits
 * @property {number} columns
 */

/**
 * @param {ByteSource} source
 * @param {Uint8Array} row
 * @returns {boolean} whether there was a whole row
 */
function readRow(source, row) {
  for (let i = 0; i < row.length; ++i) {
    const byte = source.readByte();
    if (byte < 0) return false;
    row[i] = byte;
  }
  return true;
}

/**
 * @param {number} left
 * @param {number} above
 * @param {number} aboveLeft
 */
function paeth(left, above, aboveLeft) {
  const toLeft = Math.abs(above - aboveLeft);
  const toAbove = Math.abs(left - aboveLeft);
  const toAboveLeft = Math.abs(left + above - 2 * aboveLeft);
  if (toLeft <= toAbove && toLeft <= toAboveLeft) return left;
  return toAbove <= toAboveLeft ? above : aboveLeft;
}

/**
 * @param {number} filter
 * @param {Uint8Array} row
 * @param {Uint8Array} previous
 * @param {number} step  bytes of a pixel
 */
function addForetold(filter, row, previous, step) {
  if (filter > 4) throw new PostScriptError("ioerror");
  for (let i = 0; i < row.length; ++i) {
    const left = i < step ? 0 : row[i - step];
    const above = previous[i];
    if (filter === 1) row[i] += left;
    else if (filter === 2) row[i] += above;
    else if (filter === 3) row[i] += (left + above) >> 1;
    else if (filter === 4) row[i] += paeth(left, above, i < step ? 0 : previous[i - step]);
  }
}

/**
 * @param {ByteSource} source
 * @param {Prediction} prediction
 */
export function* predictedChunks(source, { predictor, colors, bits, columns }) {
  const rowSize = Math.ceil((colors * bits * columns) / 8);
  const step = Math.max(1, (colors * bits) >> 3);
  if (!(rowSize > 0 && rowSize < 1 << 26)) throw new PostScriptError("rangecheck");
  if (predictor === 2 && bits !== 8) throw new NotDrawn(`a predictor of ${bits} bits`);

  let previous = new Uint8Array(rowSize);
  for (;;) {
    const filter = predictor === 2 ? 1 : source.readByte();
    const row = new Uint8Array(rowSize);
    if (filter < 0 || !readRow(source, row)) return;
    addForetold(filter, row, previous, step);
    yield row;
    previous = row;
  }
}
