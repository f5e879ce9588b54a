// Decodes black and white rows that are coded as fax machines do: each by what differs from the row
// above it.

import { NotDrawn, PostScriptError } from "./values.js";

/** @typedef {{ readByte(): number }} ByteSource */

/**
 * @typedef {object} FaxFormat
 * @property {number} kind      negative if all rows are coded by the row above
 * @property {number} columns
 * @property {number} rows      0 if an end mark tells
 * @property {boolean} isAligned  whether rows begin with a byte
 * @property {boolean} blackIs1
 */

// The codes of runs of 0 to 63 pixels, then of 64, 128 and so on.
const whiteRuns = `
00110101 000111 0111 1000 1011 1100 1110 1111 10011 10100 00111 01000 001000 000011 110100 110101
101010 101011 0100111 0001100 0001000 0010111 0000011 0000100 0101000 0101011 0010011 0100100
0011000 00000010 00000011 00011010 00011011 00010010 00010011 00010100 00010101 00010110 00010111
00101000 00101001 00101010 00101011 00101100 00101101 00000100 00000101 00001010 00001011 01010010
01010011 01010100 01010101 00100100 00100101 01011000 01011001 01011010 01011011 01001010 01001011
00110010 00110011 00110100
11011 10010 010111 0110111 00110110 00110111 01100100 01100101 01101000 01100111 011001100
011001101 011010010 011010011 011010100 011010101 011010110 011010111 011011000 011011001 011011010
011011011 010011000 010011001 010011010 011000 010011011
`;

const blackRuns = `
0000110111 010 11 10 011 0011 0010 00011 000101 000100 0000100 0000101 0000111 00000100 00000111
000011000 0000010111 0000011000 0000001000 00001100111 00001101000 00001101100 00000110111
00000101000 00000010111 00000011000 000011001010 000011001011 000011001100 000011001101
000001101000 000001101001 000001101010 000001101011 000011010010 000011010011 000011010100
000011010101 000011010110 000011010111 000001101100 000001101101 000011011010 000011011011
000001010100 000001010101 000001010110 000001010111 000001100100 000001100101 000001010010
000001010011 000000100100 000000110111 000000111000 000000100111 000000101000 000001011000
000001011001 000000101011 000000101100 000001011010 000001100110 000001100111
0000001111 000011001000 000011001001 000001011011 000000110011 000000110100 000000110101
0000001101100 0000001101101 0000001001010 0000001001011 0000001001100 0000001001101 0000001110010
0000001110011 0000001110100 0000001110101 0000001110110 0000001110111 0000001010010 0000001010011
0000001010100 0000001010101 0000001011010 0000001011011 0000001100100 0000001100101
`;

/** From 1792 pixels on, of both colours. */
const longRuns = `
00000001000 00000001100 00000001101 000000010010 000000010011 000000010100 000000010101
000000010110 000000010111 000000011100 000000011101 000000011110 000000011111
`;

const mode = Object.freeze({ pass: 10, runs: 11, end: 12 });

// Others put the change so many pixels behind the one above.
const modes = new Map(
  Object.entries({
    1: 0,
    "011": 1,
    "000011": 2,
    "0000011": 3,
    "010": -1,
    "000010": -2,
    "0000010": -3,
    "0001": mode.pass,
    "001": mode.runs,
    "000000000001": mode.end,
  }).map(([code, what]) => [keyOf(code), what]),
);

const runTables = [whiteRuns, blackRuns].map((text) => {
  const codes = `${text} ${longRuns}`.trim().split(/\s+/);
  return new Map(codes.map((code, i) => [keyOf(code), i < 64 ? i : 64 * (i - 63)]));
});

/**
 * A code as a number, with a 1 before it.
 * @param {string} code
 */
function keyOf(code) {
  return parseInt(`1${code}`, 2);
}

class FaxReader {
  /**
   * @param {ByteSource} source
   * @param {number} columns
   */
  constructor(source, columns) {
    this.source = source;
    this.columns = columns;
    this.byte = 0;
    this.bitsLeft = 0;
  }

  /** The next bit; -1 at the end. */
  readBit() {
    if (this.bitsLeft === 0) {
      this.byte = this.source.readByte();
      if (this.byte < 0) return -1;
      this.bitsLeft = 8;
    }
    return (this.byte >> --this.bitsLeft) & 1;
  }

  /**
   * @param {Map<number, number>} table
   * @returns {number | undefined} undefined at the end of the data
   */
  readCode(table) {
    for (let key = 1; key < 1 << 13;) {
      const bit = this.readBit();
      if (bit < 0) return undefined;
      key = (key << 1) | bit;
      const meaning = table.get(key);
      if (meaning !== undefined) return meaning;
    }
    throw new PostScriptError("ioerror", "a code that is none");
  }

  /** @param {number} colour  0 for white */
  readRun(colour) {
    let length = 0;
    for (;;) {
      const part = this.readCode(runTables[colour]);
      if (part === undefined) throw new PostScriptError("ioerror");
      length += part;
      if (part < 64) return length;
    }
  }

  /**
   * Where the colours of a row change, white coming first; null at the end.
   * @param {number[]} above  where those of the row above change
   * @returns {number[] | null}
   */
  readRow(above) {
    const { columns } = this;
    /** @type {number[]} */
    const changes = [];
    let at = -1;
    let colour = 0;
    while (at < columns) {
      const what = this.readCode(modes);
      if (what === undefined || what === mode.end) return null;
      let i = colour;
      while (i < above.length && above[i] <= at) i += 2;
      if (what === mode.pass) {
        at = above[i + 1] ?? columns;
      } else if (what === mode.runs) {
        const first = Math.max(at, 0) + this.readRun(colour);
        at = first + this.readRun(1 - colour);
        changes.push(first, at);
      } else {
        const change = (above[i] ?? columns) + what;
        if (change < at) throw new PostScriptError("ioerror");
        at = change;
        changes.push(at);
        colour = 1 - colour;
      }
    }
    return changes;
  }
}

/**
 * @param {number[]} changes
 * @param {number} columns
 * @param {boolean} blackIs1
 */
function rowOf(changes, columns, blackIs1) {
  const row = new Uint8Array((columns + 7) >> 3);
  for (let i = 0; i < changes.length; i += 2) {
    const end = Math.min(changes[i + 1] ?? columns, columns);
    for (let x = changes[i]; x < end; ++x) row[x >> 3] |= 128 >> (x & 7);
  }
  return blackIs1 ? row : row.map((byte) => ~byte);
}

/**
 * @param {ByteSource} source
 * @param {FaxFormat} format
 * @returns {Generator<Uint8Array, void>}
 */
export function* faxChunks(source, { kind, columns, rows, isAligned, blackIs1 }) {
  if (kind >= 0) throw new NotDrawn("a fax of rows that stand alone");
  if (!(columns > 0 && columns < 1 << 16)) throw new PostScriptError("rangecheck");
  const reader = new FaxReader(source, columns);
  /** @type {number[]} */
  let changes = [];
  for (let y = 0; rows === 0 || y < rows; ++y) {
    if (isAligned) reader.bitsLeft = 0;
    const next = reader.readRow(changes);
    if (!next) return;
    yield rowOf(next, columns, blackIs1);
    changes = next;
  }
}
