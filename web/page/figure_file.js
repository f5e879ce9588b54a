// A file that was given: unpacks it and tells by its first bytes whether the page can repair it.

/** What is said in place of a result. */
export class FigureError extends Error {
  /**
   * @param {string} sentence
   * @param {string} [console]  what the program said, if it was reached
   */
  constructor(sentence, console = "") {
    super(sentence);
    this.console = console;
  }
}

/**
 * @typedef {object} Figure
 * @property {string} name
 * @property {string} packedName  of the gzip file, or empty
 * @property {Blob} text
 */

const gzipMark = [0x1f, 0x8b];
const dosPreviewMark = [0xc5, 0xd0, 0xd3, 0xc6];
const headLength = 1024;

/**
 * @param {Uint8Array} bytes
 * @param {number[]} mark
 */
function beginsWith(bytes, mark) {
  return mark.every((byte, i) => bytes[i] === byte);
}

/** @param {Blob} blob */
async function head(blob) {
  try {
    return new Uint8Array(await blob.slice(0, headLength).arrayBuffer());
  } catch {
    throw new FigureError("The file cannot be read. Is it a folder, or has it changed meanwhile?");
  }
}

/** @param {Uint8Array} bytes */
function checkKind(bytes) {
  if (bytes.length === 0) throw new FigureError("The file is empty.");
  if (beginsWith(bytes, dosPreviewMark)) {
    throw new FigureError(
      "The file begins with a DOS preview header; export it without preview and try again.",
    );
  }
  const text = new TextDecoder("latin1").decode(bytes);
  if (/^\s*%PDF-/.test(text)) {
    throw new FigureError(
      "This page repairs EPS. For PDF use trellion-batch from the trellion package.",
    );
  }
  // Printer drivers put a Ctrl-D first, editors a byte order mark.
  if (!/^(\xef\xbb\xbf)?[\x04\s]*%!/.test(text)) /* eslint-disable-line no-control-regex */ {
    throw new FigureError("This is not an EPS file: it does not begin with “%!”.");
  }
}

/**
 * @param {File} file
 * @param {(packed: Blob) => Promise<Blob>} unpack  rejects with a sentence
 * @returns {Promise<Figure>}
 */
export async function openFigure(file, unpack) {
  const packed = beginsWith(await head(file), gzipMark);
  const text = packed ? await unpack(file) : file;
  checkKind(await head(text));
  if (!packed) return { name: file.name, packedName: "", text };
  return { name: file.name.replace(/\.gz$/i, ""), packedName: file.name, text };
}
