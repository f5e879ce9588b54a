// The core as a WebAssembly module. It knows no files: bytes are asked for and handed over.

/**
 * Where the bytes of a repair come from and go to. What is handed over is only lent: it must be
 * copied to be kept.
 * @typedef {object} Host
 * @property {number} size  bytes expected; a good guess saves memory
 * @property {(buffer: Uint8Array) => number} read  fills the buffer from its beginning; how many
 *   bytes it took, 0 at the end
 * @property {(bytes: Uint8Array) => void} write  takes the next bytes of the repaired file
 * @property {(text: string) => void} [console]   takes what the program says
 * @property {(fraction: number) => void} [progress]
 */

/**
 * What trellion's options say.
 * @typedef {object} Settings
 * @property {number} [mergeLimit]     -m: most points of a polygon that is joined; 0 is no limit
 * @property {number} [minSeparators]  -s: least number of operators between two polygons
 * @property {boolean} [removeMesh]    -r
 * @property {boolean} [verbose]       -v
 */

/** @typedef {(typeof outcomes)[number]} Outcome */

/**
 * @typedef {object} Summary
 * @property {Outcome} status
 * @property {string} message  the reason, where the status alone does not tell it
 * @property {number} groups
 * @property {number} polygonsRead
 * @property {number} polygonsLeft
 * @property {number} mergers
 * @property {boolean} areaLost  polygons that fold over each other were subtracted, not joined
 */

// In the order of the entry's own numbers.
const outcomes = /** @type {const} */ ([
  "repaired",
  "no operators",
  "no safe name",
  "collapsed path",
  "bad coordinate",
  "no memory",
  "failed",
]);

/**
 * The time zone of this place and moment, as the C library reads it: west of Greenwich counts up.
 * @param {Date} now
 */
function timeZone(now) {
  const minutes = now.getTimezoneOffset();
  const hours = Math.trunc(Math.abs(minutes) / 60);
  return `TZ=LOC${minutes < 0 ? "-" : "+"}${hours}:${Math.abs(minutes) % 60}\0`;
}

/** One instance of the module, for one repair: its memory goes with it. */
class Engine {
  /** @param {WebAssembly.Module} module */
  constructor(module) {
    /** @type {Host | undefined} */
    this.host = undefined;
    this.complaint = "";
    /** @type {unknown} */
    this.hostFailure = undefined;
    this.decoder = new TextDecoder();
    const instance = new WebAssembly.Instance(module, {
      env: this.#hostFunctions(),
      wasi_snapshot_preview1: this.#systemFunctions(),
    });
    this.exports = /** @type {any} */ (instance.exports);
    this.exports._initialize();
  }

  /**
   * Throws what the host's functions throw. Only a repair of status "repaired" is whole.
   * @param {Host} host
   * @param {Settings} [settings]
   * @returns {Summary}
   */
  repair(host, settings = {}) {
    if (this.host) throw new Error("an engine repairs one figure");
    this.host = host;
    const { mergeLimit = 0, minSeparators = 2, removeMesh = false, verbose = false } = settings;
    const counts = this.exports.counts_of_repair();
    const status = this.exports.repair_figure(
      host.size,
      mergeLimit,
      minSeparators,
      Number(removeMesh),
      Number(verbose),
      counts,
    );
    if (this.hostFailure !== undefined) throw this.hostFailure;
    const found = new Float64Array(this.exports.memory.buffer, counts, 5);
    const [groups, polygonsRead, polygonsLeft, mergers, areaLost] = found;
    return {
      status: outcomes[status],
      message: this.complaint,
      groups,
      polygonsRead,
      polygonsLeft,
      mergers,
      areaLost: areaLost !== 0,
    };
  }

  /**
   * A view of the module's memory, until that grows.
   * @param {number} position
   * @param {number} size
   */
  #bytes(position, size) {
    return new Uint8Array(this.exports.memory.buffer, position >>> 0, size >>> 0);
  }

  /**
   * No exception may pass through the module: it is kept until the module has ended, which the
   * first failed read or nothing more to do brings about.
   * @param {(host: Host) => void} call
   */
  #ask(call) {
    if (!this.host || this.hostFailure !== undefined) return;
    try {
      call(this.host);
    } catch (failure) {
      this.hostFailure = failure ?? new Error("the host failed");
    }
  }

  #hostFunctions() {
    /** @type {Record<string, (...values: number[]) => number | void>} */
    const functions = {
      host_read: (position, capacity) => {
        let count = -1;
        this.#ask((host) => (count = host.read(this.#bytes(position, capacity))));
        return count;
      },
      host_write: (position, size) => this.#ask((host) => host.write(this.#bytes(position, size))),
      host_console: (position, size) => {
        const text = this.decoder.decode(this.#bytes(position, size), { stream: true });
        this.#ask((host) => host.console?.(text));
      },
      host_complain: (position, size) => {
        this.complaint = new TextDecoder().decode(this.#bytes(position, size));
      },
      host_progress: (fraction) => this.#ask((host) => host.progress?.(fraction)),
      emscripten_notify_memory_growth: () => {},
      // Figures could be made that are slow to repair if the keys of hashes could be foretold.
      getentropy: (position, size) => {
        let status = inputOutputError;
        this.#ask(() => {
          crypto.getRandomValues(this.#bytes(position, size));
          status = 0;
        });
        return status;
      },
    };
    return functions;
  }

  #systemFunctions() {
    const zone = new TextEncoder().encode(timeZone(new Date()));
    const view = () => new DataView(this.exports.memory.buffer);
    return {
      clock_time_get: (
        /** @type {number} */ _clock,
        /** @type {bigint} */ _precision,
        /** @type {number} */ result,
      ) => {
        view().setBigUint64(result, BigInt(Date.now()) * 1_000_000n, true);
        return 0;
      },
      environ_sizes_get: (/** @type {number} */ count, /** @type {number} */ size) => {
        view().setUint32(count, 1, true);
        view().setUint32(size, zone.length, true);
        return 0;
      },
      environ_get: (/** @type {number} */ entries, /** @type {number} */ texts) => {
        view().setUint32(entries, texts, true);
        this.#bytes(texts, zone.length).set(zone);
        return 0;
      },
      // The module has no files; these stand in the C library's way out of a fatal error.
      fd_write: () => badFile,
      fd_seek: () => badFile,
      fd_close: () => badFile,
      proc_exit: (/** @type {number} */ status) => {
        throw new Error(`the module ended with status ${status}`);
      },
    };
  }
}

/** The error number of the system interface for a file that is not open. */
const badFile = 8;

/** And that for a device that fails. */
const inputOutputError = 29;

/**
 * Makes the module ready for one repair.
 * @param {BufferSource} bytes  of the module
 * @returns {Promise<Engine>}
 */
export async function createEngine(bytes) {
  return new Engine(await WebAssembly.compile(bytes));
}
