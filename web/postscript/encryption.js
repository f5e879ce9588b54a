// The cipher that hides the outlines of fonts in figures.

import { hexDigit } from "./decoders.js";
import { PSFile } from "./values.js";

const fontKey = 55665;
const outlineKey = 4330;

class Cipher {
  /** @param {number} key */
  constructor(key) {
    this.key = key;
  }

  /** @param {number} byte */
  decrypt(byte) {
    const plain = byte ^ (this.key >> 8);
    this.key = ((byte + this.key) * 52845 + 22719) & 0xffff;
    return plain;
  }
}

/**
 * @param {Uint8Array} bytes
 * @param {number} skipped  how many bytes of chance begin it; negative: it is not encrypted
 */
export function decryptOutline(bytes, skipped) {
  if (skipped < 0) return bytes;
  const cipher = new Cipher(outlineKey);
  return bytes.map((byte) => cipher.decrypt(byte)).subarray(skipped);
}

/** The encrypted part of a font, as bytes or as hexadecimal digits. */
export class DecryptedFile extends PSFile {
  /** @param {PSFile} source */
  constructor(source) {
    super(new Uint8Array(1));
    this.position = 1;
    this.source = source;
    this.cipher = new Cipher(fontKey);
    const first = this.firstBytes();
    this.isHex = first.every((byte) => hexDigit(byte) >= 0);
    /** Bytes that were read to find out. */
    this.ahead = first;
    for (let i = 0; i < 4; ++i) this.cipher.decrypt(this.encryptedByte());
  }

  firstBytes() {
    let byte = this.source.readByte();
    while (byte === 32 || (byte >= 9 && byte <= 13)) byte = this.source.readByte();
    return [byte, this.source.readByte(), this.source.readByte(), this.source.readByte()];
  }

  sourceByte() {
    return this.ahead.shift() ?? this.source.readByte();
  }

  encryptedByte() {
    if (!this.isHex) return this.sourceByte();
    const high = this.nextDigit();
    const low = this.nextDigit();
    return low < 0 ? -1 : 16 * high + low;
  }

  nextDigit() {
    for (;;) {
      const byte = this.sourceByte();
      if (byte < 0) return -1;
      const digit = hexDigit(byte);
      if (digit >= 0) return digit;
    }
  }

  refill() {
    const byte = this.encryptedByte();
    if (byte < 0) return false;
    this.bytes[0] = this.cipher.decrypt(byte);
    this.position = 0;
    return true;
  }
}
