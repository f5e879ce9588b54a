// Repairs one figure, or unpacks it, and ends. The page gives it the program, so that nothing need be loaded, and
// terminates it afterwards, which returns the memory.

import { createEngine } from "../engine/engine.js";
import { reasonOf } from "./failure.js";
import { unpack } from "./unpack.js";

const megabyte = 1 << 20;

/** @typedef {import("./messages.js").UnpackRequest} UnpackRequest */
/** @typedef {import("./messages.js").RepairRequest} RepairRequest */
/** @typedef {import("./messages.js").Repair} Repair */

/**
 * The parts are read one after the other, so that the figure is in memory only once.
 * @param {Blob} figure
 */
function reader(figure) {
  const files = new FileReaderSync();
  let position = 0;
  /** @param {Uint8Array} buffer */
  return (buffer) => {
    const part = figure.slice(position, position + buffer.length);
    if (part.size === 0) return 0;
    buffer.set(new Uint8Array(files.readAsArrayBuffer(part)));
    position += part.size;
    return part.size;
  };
}

/** Gathers what is written in parts of about a megabyte; the engine's buffer is its own. */
class BlobWriter {
  /** @type {Uint8Array<ArrayBuffer>[]} */
  #parts = [];
  #size = 0;
  /** @type {Blob[]} */
  #blobs = [];

  /** @param {Uint8Array} bytes */
  write(bytes) {
    this.#parts.push(new Uint8Array(bytes));
    this.#size += bytes.length;
    if (this.#size >= megabyte) this.#flush();
  }

  blob() {
    this.#flush();
    return new Blob(this.#blobs, { type: "application/postscript" });
  }

  #flush() {
    this.#blobs.push(new Blob(this.#parts));
    this.#parts = [];
    this.#size = 0;
  }
}

/**
 * @param {RepairRequest} request
 * @returns {Promise<Repair>}
 */
async function repair({ figure, program, settings }) {
  const start = performance.now();
  const engine = await createEngine(program);
  const writer = new BlobWriter();
  /** @type {string[]} */
  const said = [];
  const summary = engine.repair(
    {
      size: figure.size,
      read: reader(figure),
      write: (/** @type {Uint8Array} */ bytes) => writer.write(bytes),
      console: (/** @type {string} */ text) => said.push(text),
      progress: (/** @type {number} */ fraction) => postMessage({ kind: "progress", fraction }),
    },
    settings,
  );
  return {
    kind: "repair",
    status: summary.status,
    message: summary.message,
    polygonsRead: summary.polygonsRead,
    polygonsLeft: summary.polygonsLeft,
    mergers: summary.mergers,
    seconds: (performance.now() - start) / 1000,
    console: said.join(""),
    result: writer.blob(),
  };
}

onmessage = async (/** @type {MessageEvent<UnpackRequest | RepairRequest>} */ { data }) => {
  try {
    if (data.kind === "unpack") postMessage({ kind: "unpacked", text: await unpack(data.packed) });
    else postMessage(await repair(data));
  } catch (error) {
    postMessage({ kind: "failure", reason: reasonOf(error) });
  }
};
