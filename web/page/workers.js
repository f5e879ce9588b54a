// Starts the workers, whose scripts and program the page carries packed in data blocks, and speaks with
// them. Workers of Blob URLs run on a page that was opened as a file, too.

/** @typedef {import("../worker/messages.js").Request} Request */
/** @typedef {import("../worker/messages.js").Reply} Reply */

/** @param {string} id */
async function unpacked(id) {
  const block = document.getElementById(id);
  if (!block) throw new Error(`the page lacks its part “${id}”`);
  const packed = Uint8Array.from(atob(block.textContent ?? ""), (c) => c.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

/**
 * The value of a key, made at its first use.
 * @template T
 * @param {(id: string) => T} make
 */
function lasting(make) {
  /** @type {Map<string, T>} */
  const known = new Map();
  return (/** @type {string} */ id) => {
    const value = known.get(id) ?? make(id);
    known.set(id, value);
    return value;
  };
}

const program = lasting(unpacked);
const scriptUrl = lasting(async (id) =>
  URL.createObjectURL(new Blob([await unpacked(id)], { type: "text/javascript" })),
);

/** The engine's WebAssembly. */
export function engineProgram() {
  return program("engine");
}

/** @param {"repair-worker" | "picture-worker"} id */
export async function startWorker(id) {
  return new Worker(await scriptUrl(id));
}

/**
 * Sends a request and waits for its answer. An abort terminates the worker: that is the only way
 * to stop a program that does not listen.
 * @template {Reply} Answer
 * @param {Worker} worker
 * @param {Request} request
 * @param {AbortSignal} signal
 * @param {(fraction: number) => void} progress
 * @returns {Promise<Answer>}
 */
export function ask(worker, request, signal, progress) {
  return new Promise((resolve, reject) => {
    signal.addEventListener("abort", () => {
      worker.terminate();
      reject(signal.reason);
    });
    worker.onmessage = (/** @type {MessageEvent<Reply>} */ { data }) => {
      if (data.kind === "progress") progress(data.fraction);
      else if (data.kind === "failure") reject(new Error(data.reason));
      else resolve(/** @type {Answer} */ (data));
    };
    worker.onerror = (event) => {
      event.preventDefault();
      reject(new Error(event.message || "a worker of this page has stopped"));
    };
    if (signal.aborted) reject(signal.reason);
    else worker.postMessage(request);
  });
}
