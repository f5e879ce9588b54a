// Runs the small programs that are the glyphs of embedded fonts. Hints are left out: they matter to
// coarse pixels only.

import { PostScriptError } from "./values.js";
import { Outline } from "./outline.js";
import { decryptOutline } from "./encryption.js";
import { encodings } from "./encodings.js";

const deepestCall = 20;
const mostSteps = 100000;

/**
 * What a glyph's program may call and name.
 * @typedef {object} GlyphPrograms
 * @property {(name: string) => Uint8Array | undefined} glyph  encrypted
 * @property {(index: number) => Uint8Array | undefined} subroutine  encrypted
 * @property {number} skipped  how many bytes of chance begin each
 */

class CharstringRunner {
  /**
   * @param {GlyphPrograms} programs
   * @param {boolean} isPart  of an accented letter
   */
  constructor(programs, isPart) {
    this.programs = programs;
    this.isPart = isPart;
    this.outline = new Outline();
    /** @type {number[]} */
    this.stack = [];
    /** What callothersubr leaves for pop. @type {number[]} */
    this.results = [];
    this.x = 0;
    this.y = 0;
    this.sideBearing = 0;
    this.ended = false;
    this.steps = 0;
    /** The points of a flat curve that is being collected. @type {number[] | null} */
    this.flexPoints = null;
  }

  /**
   * @param {Uint8Array | undefined} encrypted
   * @param {number} depth
   */
  run(encrypted, depth) {
    if (!encrypted || depth > deepestCall) throw new PostScriptError("invalidfont");
    const bytes = decryptOutline(encrypted, this.programs.skipped);
    for (let i = 0; i < bytes.length && !this.ended;) {
      if (++this.steps > mostSteps) throw new PostScriptError("invalidfont", "an endless glyph");
      const byte = bytes[i++];
      if (byte >= 32) i = this.pushNumber(bytes, i, byte);
      else if (byte === 11) return;
      else if (byte === 10) this.run(this.programs.subroutine(this.stack.pop() ?? -1), depth + 1);
      else if (byte === 12) this.runEscaped(bytes[i++]);
      else this.runCommand(byte);
    }
  }

  /**
   * @param {Uint8Array} bytes
   * @param {number} i
   * @param {number} byte
   * @returns {number} where to go on
   */
  pushNumber(bytes, i, byte) {
    if (byte === 255) {
      this.stack.push((bytes[i] << 24) | (bytes[i + 1] << 16) | (bytes[i + 2] << 8) | bytes[i + 3]);
      return i + 4;
    }
    if (byte <= 246) {
      this.stack.push(byte - 139);
      return i;
    }
    const amount = ((byte - (byte <= 250 ? 247 : 251)) << 8) + bytes[i] + 108;
    this.stack.push(byte <= 250 ? amount : -amount);
    return i + 1;
  }

  /** @param {number} command */
  runCommand(command) {
    const [a, b, c, d, e, f] = this.stack;
    this.stack.length = 0;
    switch (command) {
      case 1:
      case 3:
        return; // stem hints
      case 4:
        return this.moveBy(0, a);
      case 5:
        return this.lineBy(a, b);
      case 6:
        return this.lineBy(a, 0);
      case 7:
        return this.lineBy(0, a);
      case 8:
        return this.curveBy(a, b, c, d, e, f);
      case 9:
        return this.outline.close();
      case 13:
        return this.begin(a, 0, b, 0);
      case 14:
        this.ended = true;
        return;
      case 21:
        return this.moveBy(a, b);
      case 22:
        return this.moveBy(a, 0);
      case 30:
        return this.curveBy(0, a, b, c, d, 0);
      case 31:
        return this.curveBy(a, 0, b, c, 0, d);
      default:
        throw new PostScriptError("invalidfont");
    }
  }

  /** @param {number} command */
  runEscaped(command) {
    const { stack } = this;
    if (command === 12) {
      const divisor = stack.pop() ?? NaN;
      stack.push((stack.pop() ?? NaN) / divisor);
      return;
    }
    if (command === 16) return this.callOther();
    if (command === 17) {
      stack.push(this.results.pop() ?? 0);
      return;
    }
    const [a, b, c, d, e] = stack;
    stack.length = 0;
    if (command === 6) this.addAccented(a, b, c, d, e);
    else if (command === 7) this.begin(a, b, c, d);
    else if (command === 33) [this.x, this.y] = [a, b];
    else if (command > 2) throw new PostScriptError("invalidfont");
  }

  /** The subroutines of the font machine itself. */
  callOther() {
    const index = this.stack.pop() ?? -1;
    const count = this.stack.pop() ?? 0;
    const operands = this.stack.splice(Math.max(0, this.stack.length - count));
    this.results = operands.slice().reverse();
    if (index === 1) this.flexPoints = [];
    else if (index === 2) this.flexPoints?.push(this.x, this.y);
    else if (index === 0) this.endFlex(operands);
    else if (index === 3) this.results = [3];
  }

  /** @param {number[]} operands  the flex height and the end point */
  endFlex([, x, y]) {
    const p = this.flexPoints ?? [];
    this.flexPoints = null;
    if (p.length !== 14) throw new PostScriptError("invalidfont");
    this.outline.curveTo(p[2], p[3], p[4], p[5], p[6], p[7]);
    this.outline.curveTo(p[8], p[9], p[10], p[11], p[12], p[13]);
    this.results = [y, x];
  }

  /**
   * @param {number} x
   * @param {number} y
   * @param {number} widthX
   * @param {number} widthY
   */
  begin(x, y, widthX, widthY) {
    this.x = this.sideBearing = x;
    this.y = y;
    this.outline.width = [widthX, widthY];
  }

  /**
   * A letter with an accent, both of the standard encoding.
   * @param {number} accentBearing
   * @param {number} x
   * @param {number} y
   * @param {number} letterCode
   * @param {number} accentCode
   */
  addAccented(accentBearing, x, y, letterCode, accentCode) {
    if (this.isPart) throw new PostScriptError("invalidfont");
    const names = encodings.StandardEncoding;
    const letter = this.partRun(names[letterCode]);
    const accent = this.partRun(names[accentCode]);
    this.outline.append(letter, [1, 0, 0, 1, 0, 0]);
    this.outline.append(accent, [1, 0, 0, 1, this.sideBearing - accentBearing + x, y]);
    this.ended = true;
  }

  /** @param {string} name */
  partRun(name) {
    const runner = new CharstringRunner(this.programs, true);
    runner.run(this.programs.glyph(name), 0);
    return runner.outline;
  }

  /**
   * @param {number} dx
   * @param {number} dy
   */
  moveBy(dx, dy) {
    this.x += dx;
    this.y += dy;
    if (!this.flexPoints) this.outline.moveTo(this.x, this.y);
  }

  /**
   * @param {number} dx
   * @param {number} dy
   */
  lineBy(dx, dy) {
    this.x += dx;
    this.y += dy;
    this.outline.lineTo(this.x, this.y);
  }

  /**
   * @param {number} dx1
   * @param {number} dy1
   * @param {number} dx2
   * @param {number} dy2
   * @param {number} dx3
   * @param {number} dy3
   */
  curveBy(dx1, dy1, dx2, dy2, dx3, dy3) {
    const x1 = this.x + dx1;
    const y1 = this.y + dy1;
    const x2 = x1 + dx2;
    const y2 = y1 + dy2;
    this.x = x2 + dx3;
    this.y = y2 + dy3;
    this.outline.curveTo(x1, y1, x2, y2, this.x, this.y);
  }
}

/**
 * @param {GlyphPrograms} programs
 * @param {Uint8Array} program  encrypted
 */
export function outlineOfCharstring(programs, program) {
  const runner = new CharstringRunner(programs, false);
  runner.run(program, 0);
  if (runner.outline.coordinates.some(Number.isNaN)) throw new PostScriptError("invalidfont");
  return runner.outline;
}
