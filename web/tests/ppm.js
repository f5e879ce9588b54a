// Pictures as portable pixmaps.

/** @typedef {import("../picture/pixmap.js").Pixmap} Pixmap */

/**
 * @param {Pixmap} pixmap
 * @returns {Buffer}
 */
export function writePpm({ width, height, pixels }) {
  const head = Buffer.from(`P6\n${width} ${height}\n255\n`);
  const bytes = Buffer.alloc(head.length + 3 * pixels.length);
  head.copy(bytes);
  pixels.forEach((colour, i) => bytes.writeUIntBE(colour, head.length + 3 * i, 3));
  return bytes;
}

/**
 * @param {Buffer} bytes
 * @returns {Pixmap}
 */
export function readPpm(bytes) {
  const head = /^P6\s(?:#[^\n]*\n)*(\d+)\s(\d+)\s255\s/.exec(bytes.toString("latin1", 0, 1000));
  if (!head) throw new Error("not a portable pixmap");
  const width = Number(head[1]);
  const height = Number(head[2]);
  const pixels = new Uint32Array(width * height);
  for (let i = 0; i < pixels.length; ++i) pixels[i] = bytes.readUIntBE(head[0].length + 3 * i, 3);
  return { width, height, pixels };
}
