// Builds a font of two glyphs, for tests: a square with a round corner, and one that is the first
// at half its size, moved.

const unitsPerEm = 64;

/**
 * Big-endian numbers as hexadecimal digits.
 * @param {number} size  in bytes
 * @param {number[]} values
 */
function big(size, ...values) {
  return values
    .map((value) => (value < 0 ? value + 256 ** size : value).toString(16).padStart(2 * size, "0"))
    .join("");
}

/** The corner on the upper right is off the curve; the rest are points of it. */
function square() {
  const flags = [1, 1, 1, 0, 1];
  const steps = { x: [0, 64, 0, 0, -64], y: [0, 0, 32, 32, 0] };
  const header = big(2, 1, 0, 0, 64, 64) + big(2, flags.length - 1) + big(2, 0);
  return header + big(1, ...flags) + big(2, ...steps.x, ...steps.y) + "00";
}

function movedHalf() {
  const movedBytesAndScaled = 2 | 8;
  return big(2, -1, 0, 0, 64, 64) + big(2, movedBytesAndScaled, 1) + big(1, 32, 16) + big(2, 8192);
}

/** The whole font as hexadecimal digits, of an odd number of bytes with the one behind it. */
export function squareFont() {
  const glyphs = [square(), movedHalf()];
  const ends = glyphs.map((_, i) => glyphs.slice(0, i + 1).join("").length / 2);
  /** @type {Record<string, string>} */
  const tables = {
    glyf: glyphs.join(""),
    head: "00".repeat(18) + big(2, unitsPerEm) + "00".repeat(30) + big(2, 1) + "0000",
    hhea: "00".repeat(34) + big(2, 2),
    hmtx: big(2, 32, 0, 64, 0) + big(2, 0),
    loca: big(4, 0, 0, ...ends),
    maxp: big(4, 65536) + big(2, 3),
  };
  let offset = 12 + 16 * Object.keys(tables).length;
  let directory = big(4, 65536) + big(2, Object.keys(tables).length, 0, 0, 0);
  for (const [tag, table] of Object.entries(tables)) {
    directory += Buffer.from(tag).toString("hex") + big(4, 0, offset, table.length / 2);
    offset += table.length / 2;
  }
  return directory + Object.values(tables).join("");
}
