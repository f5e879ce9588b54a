// Cuts PostScript into tokens. Works on bytes: what a figure has millions of, numbers and names that
// were seen before, makes no strings.

import {
  Dictionary,
  executableName,
  literalName,
  NotDrawn,
  PostScriptError,
  PSArray,
  PSString,
} from "./values.js";
import { parseNumber, readPlainNumber } from "./number_text.js";
import { makeFilter } from "./filters.js";

/** @typedef {import("./values.js").Name} Name */

// What a byte is: 0 part of a name or number, 1 white space, 2 a token of its own or the begin of a
// bracketed one.
const classes = new Uint8Array(256);
for (const space of [0, 9, 10, 12, 13, 32]) classes[space] = 1;
for (const special of "()<>[]{}/%") classes[special.charCodeAt(0)] = 2;

const code = Object.freeze({
  lineFeed: 10,
  return: 13,
  percent: 0x25,
  open: 0x28,
  close: 0x29,
  slash: 0x2f,
  nine: 0x39,
  less: 0x3c,
  greater: 0x3e,
  leftBracket: 0x5b,
  backslash: 0x5c,
  rightBracket: 0x5d,
  leftBrace: 0x7b,
  rightBrace: 0x7d,
  tilde: 0x7e,
});

const longestToken = 1 << 16;
const deepestProcedure = 200;

// Begin a procedure in another, and end one; they never leave the scanner.
const leftBraceToken = Object.freeze({ brace: "{" });
const endOfProcedure = Object.freeze({ brace: "}" });

const leftBracket = executableName("[");
const rightBracket = executableName("]");
const leftAngles = executableName("<<");
const rightAngles = executableName(">>");

// Executable names by the hash of their bytes, each with those bytes.
const tableSize = 1 << 12;
/** @type {(Name | undefined)[]} */
const namesByHash = new Array(tableSize).fill(undefined);

export class Scanner {
  /**
   * @param {import("./values.js").PSFile} file
   * @param {{ packing: boolean, lookup(key: any): any }} names  what //name means
   */
  constructor(file, names) {
    this.file = file;
    this.names = names;
    this.token = new Uint8Array(256);
    this.length = 0;
  }

  /**
   * The next token, undefined at the end.
   * @returns {any}
   */
  next() {
    const value = this.scan();
    if (value === endOfProcedure) throw new PostScriptError("syntaxerror", "}");
    return value;
  }

  /** @returns {any} */
  scan() {
    const file = this.file;
    for (;;) {
      const byte = file.readByte();
      if (byte < 0) return undefined;
      const what = classes[byte];
      if (what === 0) {
        if (byte <= code.nine) {
          file.unreadByte();
          const number = readPlainNumber(file);
          if (number !== null) return number;
          file.readByte();
        }
        this.readRegular(byte);
        return parseNumber(this.token, this.length) ?? this.executableName();
      }
      if (what === 1) continue;
      if (byte === code.percent) this.skipComment();
      else return this.scanSpecial(byte);
    }
  }

  /** @param {number} byte */
  scanSpecial(byte) {
    if (byte === code.slash) return this.scanName();
    if (byte === code.leftBrace) return this.scanProcedure();
    if (byte === code.rightBrace) return endOfProcedure;
    if (byte === code.open) return this.scanString();
    if (byte === code.leftBracket) return leftBracket;
    if (byte === code.rightBracket) return rightBracket;
    if (byte === code.less) return this.scanAfterLess();
    if (byte === code.greater && this.file.readByte() === code.greater) return rightAngles;
    throw new PostScriptError("syntaxerror", String.fromCharCode(byte));
  }

  /**
   * Reads a name or number into `token`. One white space that ends it is taken too: data that
   * follow an operator begin after it.
   * @param {number} first  a byte of it, or -1
   */
  readRegular(first) {
    const file = this.file;
    let length = 0;
    let byte = first < 0 ? file.readByte() : first;
    while (byte >= 0 && classes[byte] === 0) {
      if (length === this.token.length) this.enlargeToken();
      this.token[length++] = byte;
      byte = file.readByte();
    }
    this.length = length;
    if (byte < 0) return;
    if (classes[byte] === 2) file.unreadByte();
    else if (byte === code.return) this.endOfLine();
  }

  enlargeToken() {
    if (this.token.length >= longestToken) throw new PostScriptError("limitcheck");
    const larger = new Uint8Array(2 * this.token.length);
    larger.set(this.token);
    this.token = larger;
  }

  tokenText() {
    let text = "";
    for (let i = 0; i < this.length; ++i) text += String.fromCharCode(this.token[i]);
    return text;
  }

  executableName() {
    let hash = this.length;
    for (let i = 0; i < this.length; ++i) hash = (hash * 31 + this.token[i]) | 0;
    const slot = hash & (tableSize - 1);
    const known = namesByHash[slot];
    if (known !== undefined && this.isToken(known.text)) return known;
    return (namesByHash[slot] = executableName(this.tokenText()));
  }

  /** @param {string} text */
  isToken(text) {
    if (text.length !== this.length) return false;
    for (let i = 0; i < this.length; ++i) {
      if (text.charCodeAt(i) !== this.token[i]) return false;
    }
    return true;
  }

  scanName() {
    const byte = this.file.readByte();
    if (byte === code.slash) {
      this.readRegular(-1);
      const value = this.names.lookup(this.tokenText());
      if (value === undefined) throw new PostScriptError("undefined", this.tokenText());
      return value;
    }
    if (byte < 0) return literalName("");
    this.file.unreadByte();
    this.readRegular(-1);
    return literalName(this.tokenText());
  }

  skipComment() {
    for (;;) {
      const byte = this.file.readByte();
      if (byte < 0 || byte === code.lineFeed || byte === code.return) return;
    }
  }

  scanProcedure() {
    /** @type {any[][]} */
    const outer = [];
    /** @type {any[]} */
    let items = [];
    for (;;) {
      const value = this.scanInProcedure();
      if (value === undefined) throw new PostScriptError("syntaxerror", "{");
      if (value === leftBraceToken) {
        if (outer.length > deepestProcedure) throw new NotDrawn("procedures nested too deeply");
        outer.push(items);
        items = [];
      } else if (value === endOfProcedure) {
        const procedure = new PSArray(items, true);
        procedure.packed = this.names.packing;
        const around = outer.pop();
        if (!around) return procedure;
        around.push(procedure);
        items = around;
      } else {
        items.push(value);
      }
    }
  }

  /** As `scan`, but a left brace is a token, so that no nesting needs the machine's own stack. */
  scanInProcedure() {
    const file = this.file;
    for (;;) {
      const byte = file.readByte();
      if (byte === code.leftBrace) return leftBraceToken;
      if (byte < 0) return undefined;
      if (classes[byte] === 1) continue;
      file.unreadByte();
      if (byte !== code.percent) return this.scan();
      this.skipComment();
    }
  }

  scanString() {
    const file = this.file;
    this.length = 0;
    let depth = 1;
    for (;;) {
      let byte = file.readByte();
      if (byte < 0) throw new PostScriptError("syntaxerror", "(");
      if (byte === code.open) ++depth;
      else if (byte === code.close && --depth === 0) return this.stringOfToken();
      else if (byte === code.backslash) byte = this.scanEscape();
      else if (byte === code.return) byte = this.endOfLine();
      if (byte >= 0) this.addByte(byte);
    }
  }

  /** Of a line that ends with a return; a line feed after it belongs to it. */
  endOfLine() {
    const next = this.file.readByte();
    if (next >= 0 && next !== code.lineFeed) this.file.unreadByte();
    return code.lineFeed;
  }

  /** The byte that an escape stands for, or -1 for none. */
  scanEscape() {
    const byte = this.file.readByte();
    if (byte === code.lineFeed || byte < 0) return -1;
    if (byte === code.return) {
      this.endOfLine();
      return -1;
    }
    if (byte >= 0x30 && byte <= 0x37) return this.scanOctal(byte - 0x30);
    const at = "nrtbf".indexOf(String.fromCharCode(byte));
    return at < 0 ? byte : "\n\r\t\b\f".charCodeAt(at);
  }

  /** @param {number} value  of the first digit */
  scanOctal(value) {
    for (let digits = 1; digits < 3; ++digits) {
      const byte = this.file.readByte();
      if (byte < 0x30 || byte > 0x37) {
        if (byte >= 0) this.file.unreadByte();
        break;
      }
      value = 8 * value + byte - 0x30;
    }
    return value & 0xff;
  }

  scanAfterLess() {
    const byte = this.file.readByte();
    if (byte === code.less) return leftAngles;
    if (byte === code.tilde) return this.scanFiltered("ASCII85Decode");
    if (byte >= 0) this.file.unreadByte();
    return this.scanFiltered("ASCIIHexDecode");
  }

  /** @param {string} filter  which ends by itself */
  scanFiltered(filter) {
    const file = makeFilter(filter, this.file, new Dictionary());
    this.length = 0;
    for (let byte = file.readByte(); byte >= 0; byte = file.readByte()) this.addByte(byte);
    return this.stringOfToken();
  }

  /** @param {number} byte */
  addByte(byte) {
    if (this.length === this.token.length) this.enlargeString();
    this.token[this.length++] = byte;
  }

  enlargeString() {
    const larger = new Uint8Array(2 * this.token.length);
    larger.set(this.token);
    this.token = larger;
  }

  stringOfToken() {
    const bytes = this.token.slice(0, this.length);
    if (this.token.length > longestToken) this.token = new Uint8Array(256);
    return new PSString(bytes);
  }
}
