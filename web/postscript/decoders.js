// Decoders of the encodings in which figures keep their images and fonts. Each takes a source with
// readByte (-1 at its end), reads no byte behind its own end mark, and yields chunks of bytes.

import { Unzlib } from "fflate";
import { NotDrawn, PostScriptError } from "./values.js";

const chunkSize = 4096;
const mostDecoded = 1 << 28;
const end = -1;

/** @typedef {{ readByte(): number }} ByteSource */

/** @param {number} byte */
function isBlank(byte) {
  return byte === 32 || (byte >= 9 && byte <= 13) || byte === 0;
}

/** @param {ByteSource} source */
function readInked(source) {
  let byte = source.readByte();
  while (isBlank(byte)) byte = source.readByte();
  return byte;
}

/** Collects bytes and says when a chunk is full. */
class Chunk {
  constructor() {
    this.bytes = new Uint8Array(chunkSize + 512);
    this.length = 0;
  }

  /** @param {number} byte */
  push(byte) {
    this.bytes[this.length++] = byte;
  }

  get full() {
    return this.length >= chunkSize;
  }

  take() {
    const taken = this.bytes.slice(0, this.length);
    this.length = 0;
    return taken;
  }
}

/** @param {number} byte  a hexadecimal digit, or something else: -1 */
export function hexDigit(byte) {
  if (byte >= 48 && byte <= 57) return byte - 48;
  const letter = byte | 32;
  return letter >= 97 && letter <= 102 ? letter - 87 : -1;
}

/** @param {ByteSource} source */
export function* hexChunks(source) {
  const chunk = new Chunk();
  let high = -1;
  for (let byte = readInked(source); byte !== end && byte !== 62; byte = readInked(source)) {
    const digit = hexDigit(byte);
    if (digit < 0) throw new PostScriptError("ioerror");
    if (high < 0) {
      high = digit;
      continue;
    }
    chunk.push(16 * high + digit);
    high = -1;
    if (chunk.full) yield chunk.take();
  }
  if (high >= 0) chunk.push(16 * high);
  yield chunk.take();
}

/** @param {ByteSource} source */
export function* base85Chunks(source) {
  const chunk = new Chunk();
  let digits = 0;
  let value = 0;
  let byte = readInked(source);
  if (byte === 60) {
    byte = readInked(source); // some begin with <~
    if (byte === 126) byte = readInked(source);
    else ((digits = 1), (value = 60 - 33));
  }
  for (; byte !== end && byte !== 126; byte = readInked(source)) {
    if (byte === 122 && digits === 0) {
      for (let i = 0; i < 4; ++i) chunk.push(0);
    } else {
      if (byte < 33 || byte > 117) throw new PostScriptError("ioerror");
      value = 85 * value + byte - 33;
      if (++digits < 5) continue;
      for (let shift = 24; shift >= 0; shift -= 8) chunk.push(value / 2 ** shift);
      digits = value = 0;
    }
    if (chunk.full) yield chunk.take();
  }
  if (byte === 126) readInked(source); // the > of ~>
  if (digits > 1) {
    for (let i = digits; i < 5; ++i) value = 85 * value + 84;
    for (let i = 0; i < digits - 1; ++i) chunk.push(value / 2 ** (24 - 8 * i));
  }
  yield chunk.take();
}

/** @param {ByteSource} source */
export function* runLengthChunks(source) {
  const chunk = new Chunk();
  for (let length = source.readByte(); length !== end && length !== 128;) {
    if (length < 128) {
      for (let i = 0; i <= length; ++i) chunk.push(source.readByte());
    } else {
      const byte = source.readByte();
      for (let i = length; i < 257; ++i) chunk.push(byte);
    }
    if (chunk.full) yield chunk.take();
    length = source.readByte();
  }
  yield chunk.take();
}

/**
 * @param {ByteSource} source
 * @param {boolean} earlyChange  whether codes grow one code too early, as most writers do
 * @returns {Generator<Uint8Array, void>}
 */
export function* lzwChunks(source, earlyChange) {
  const clear = 256;
  const last = 257;
  const chunk = new Chunk();
  const prefixes = new Uint16Array(4097);
  const suffixes = new Uint8Array(4097);
  const text = new Uint8Array(4097);
  const early = earlyChange ? 1 : 0;
  let next = 258;
  let width = 9;
  let previous = -1;
  let first = 0;
  let held = 0;
  let bits = 0;
  for (;;) {
    while (bits < width) {
      const byte = source.readByte();
      if (byte === end) return yield chunk.take();
      held = ((held << 8) | byte) & 0xffffff;
      bits += 8;
    }
    bits -= width;
    const code = (held >> bits) & ((1 << width) - 1);
    if (code === last) return yield chunk.take();
    if (code === clear) {
      next = 258;
      width = 9;
      previous = -1;
      continue;
    }
    if (code > next || (code === next && previous < 0)) throw new PostScriptError("ioerror");

    let start = text.length;
    let walked = code;
    if (code === next) {
      text[--start] = first; // the string this very code is about to name
      walked = previous;
    }
    for (; walked > 257; walked = prefixes[walked]) text[--start] = suffixes[walked];
    text[--start] = first = walked;
    if (previous >= 0 && next < 4096) {
      prefixes[next] = previous;
      suffixes[next++] = first;
      if (next + early >= 1 << width && width < 12) ++width;
    }
    previous = code;
    for (let i = start; i < text.length; ++i) {
      chunk.push(text[i]);
      if (chunk.full) yield chunk.take();
    }
  }
}

/** @param {ByteSource} source */
export function readAll(source) {
  let bytes = new Uint8Array(chunkSize);
  let length = 0;
  for (let byte = source.readByte(); byte !== end; byte = source.readByte()) {
    if (length === bytes.length) {
      if (length > mostDecoded) throw new NotDrawn("data too large to decode");
      const larger = new Uint8Array(2 * length);
      larger.set(bytes);
      bytes = larger;
    }
    bytes[length++] = byte;
  }
  return bytes.subarray(0, length);
}

/** @param {ByteSource} source */
export function* inflatedChunks(source) {
  const packed = readAll(source);
  /** @type {Uint8Array[]} */
  const chunks = [];
  let length = 0;
  const stream = new Unzlib((chunk) => {
    length += chunk.length;
    chunks.push(chunk);
  });
  const step = 1 << 16;
  for (let start = 0; start < packed.length; start += step) {
    try {
      stream.push(packed.subarray(start, start + step), start + step >= packed.length);
    } catch {
      throw new PostScriptError("ioerror");
    }
    if (length > mostDecoded) throw new NotDrawn("data too large to decode");
  }
  yield* chunks;
}
