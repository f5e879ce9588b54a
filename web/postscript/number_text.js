// The texts of numbers: 12, -.5, 1e-3, 16#FF, and how numbers are written.

const powers = Array.from({ length: 23 }, (_, i) => Number(`1e${i}`));
const usual = /^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$/;
const withRadix = /^(\d+)#([0-9A-Za-z]+)$/;

const lineFeed = 10;
const blank = 32;
const plus = 0x2b;
const minus = 0x2d;
const dot = 0x2e;
const nine = 0x39;
const zero = 0x30;

/**
 * The number that these bytes are, or null if they are none. Most are short and have no exponent:
 * these are found without a string.
 * @param {Uint8Array} bytes
 * @param {number} length
 * @returns {number | null}
 */
export function parseNumber(bytes, length) {
  const first = bytes[0];
  if (first > nine || first < plus) return null;
  let value = 0;
  let digits = 0;
  let pointAt = -1;
  const signed = first === minus || first === plus;
  for (let i = signed ? 1 : 0; i < length; ++i) {
    const byte = bytes[i];
    if (byte >= zero && byte <= nine) {
      value = 10 * value + byte - zero;
      ++digits;
    } else if (byte === dot && pointAt < 0) pointAt = digits;
    else return parseRareNumber(bytes, length);
  }
  if (digits === 0) return null;
  if (digits > 15) return parseRareNumber(bytes, length);
  if (pointAt >= 0) value /= powers[digits - pointAt];
  return first === minus ? -value : value;
}

/**
 * Reads a short number without exponent that stands whole in memory and has a blank or line feed
 * after it, which is taken too. Otherwise the file stays where it is and the answer is null.
 * @param {{ bytes: Uint8Array, position: number, limit: number }} file
 * @returns {number | null}
 */
export function readPlainNumber(file) {
  const { bytes, limit } = file;
  let at = file.position;
  const isNegative = bytes[at] === minus;
  if (isNegative) ++at;
  const start = at;
  let value = 0;
  let pointAt = 0;
  let byte = 0;
  for (; at < limit; ++at) {
    byte = bytes[at];
    if (byte >= zero && byte <= nine) value = 10 * value + byte - zero;
    else if (byte === dot && pointAt === 0) pointAt = at + 1;
    else break;
  }
  if (at === limit || (byte !== blank && byte !== lineFeed)) return null;
  if (at - start > 15 || at === start || (at === start + 1 && pointAt > 0)) return null;
  if (pointAt > 0) value /= powers[at - pointAt];
  file.position = at + 1;
  return isNegative ? -value : value;
}

/**
 * @param {Uint8Array} bytes
 * @param {number} length
 * @returns {number | null}
 */
function parseRareNumber(bytes, length) {
  return numberOf(String.fromCharCode(...bytes.subarray(0, length)));
}

/**
 * @param {string} text
 * @returns {number | null}
 */
export function numberOf(text) {
  if (usual.test(text)) return Number(text);
  const radix = withRadix.exec(text);
  if (!radix) return null;
  const base = Number(radix[1]);
  if (base < 2 || base > 36) return null;
  let value = 0;
  for (const character of radix[2]) {
    const digit = parseInt(character, base);
    if (Number.isNaN(digit)) return null;
    value = base * value + digit;
  }
  return base === 10 ? value : value | 0;
}

/**
 * A number's text, of a real six digits.
 * @param {number} value
 */
export function numberText(value) {
  if (Number.isInteger(value)) return String(value);
  const size = Math.abs(value);
  if (size >= 1e-4 && size < 1e6) {
    const text = String(Number(value.toPrecision(6)));
    return text.includes(".") ? text : `${text}.0`;
  }
  const [mantissa, exponent] = value.toExponential(5).split("e");
  const sign = exponent[0];
  return `${Number(mantissa)}e${sign}${exponent.slice(1).padStart(2, "0")}`;
}
