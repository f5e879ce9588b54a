// What becomes of one figure: it is repaired, the picture compared and, where that is asked for and
// the picture has changed, repaired in another way.

import { reasonOf } from "../worker/failure.js";
import { FigureError } from "./figure_file.js";
import { isWithheld, repairFailure } from "./sentences.js";
import { ask, engineProgram, startWorker } from "./workers.js";

/** @typedef {import("./figure_file.js").Figure} Figure */
/** @typedef {import("./options.js").Options} Options */
/** @typedef {import("../worker/messages.js").Repair} Repair */
/** @typedef {import("../worker/messages.js").Judgement} Judgement */
/** @typedef {import("../worker/messages.js").Settings} Settings */

/**
 * @typedef {object} Result
 * @property {Settings} settings
 * @property {Repair} repair
 * @property {Judgement | null} judgement  null until the picture has been compared
 */

/** @typedef {"waiting" | "unpacking" | "repairing" | "waiting to be compared" | "comparing"} Phase */

/**
 * Where a job waits for its turn. A place is held for one repair or one comparison only.
 * @typedef {object} Queues
 * @property {import("./queue.js").Queue} repairs
 * @property {import("./queue.js").Queue} comparisons
 */

/**
 * Told how a job gets on.
 * @typedef {object} Watcher
 * @property {(what: Phase) => void} phase
 * @property {(fraction: number) => void} progress
 * @property {(result: Result) => void} offer  a result that can be downloaded already
 */

const longestComparison = 120_000; // milliseconds

const notSeen = /** @type {const} */ ({
  kind: "judgement",
  pixels: 0,
  differing: 0,
  wrong: 0,
  hairlines: null,
});

/**
 * @param {Blob} packed
 * @param {AbortSignal} signal
 * @param {Watcher["phase"]} phase
 * @returns {Promise<Blob>}
 */
export async function unpackFigure(packed, signal, phase) {
  phase("unpacking");
  const worker = await startWorker("repair-worker");
  try {
    /** @type {import("../worker/messages.js").Unpacked} */
    const { text } = await ask(worker, { kind: "unpack", packed }, signal, () => {});
    return text;
  } catch (error) {
    signal.throwIfAborted();
    throw new FigureError(reasonOf(error));
  } finally {
    worker.terminate();
  }
}

/** @param {Options} options */
function settingsToTry({ separators, mergeLimit, removeMesh }) {
  const tries = separators === "by itself" ? [2, 1] : [separators];
  return tries.map((minSeparators) => ({ mergeLimit, minSeparators, removeMesh, verbose: false }));
}

/**
 * @param {Figure} figure
 * @param {Settings} settings
 * @param {AbortSignal} signal
 * @param {Watcher} watcher
 * @returns {Promise<Repair>}
 */
async function repairOnce(figure, settings, signal, watcher) {
  watcher.phase("repairing");
  const program = await engineProgram();
  const worker = await startWorker("repair-worker");
  try {
    const request = /** @type {const} */ ({
      kind: "repair",
      figure: figure.text,
      program,
      settings,
    });
    return await ask(worker, request, signal, watcher.progress);
  } finally {
    worker.terminate();
  }
}

/**
 * @param {Figure} figure
 * @param {Result} result
 * @param {AbortSignal} signal
 * @param {Watcher} watcher
 * @returns {Promise<Judgement>}
 */
async function judge(figure, { repair, settings }, signal, watcher) {
  watcher.phase("comparing");
  const worker = await startWorker("picture-worker");
  const limit = new AbortController();
  const timer = setTimeout(() => limit.abort(), longestComparison);
  const giveUp = () => limit.abort();
  signal.addEventListener("abort", giveUp);
  if (signal.aborted) giveUp();
  try {
    const request = /** @type {const} */ ({
      kind: "judge",
      before: figure.text,
      after: repair.result,
      meshClosed: settings.removeMesh,
      mergers: repair.mergers,
    });
    return await ask(worker, request, limit.signal, watcher.progress);
  } catch (error) {
    signal.throwIfAborted();
    if (limit.signal.aborted) {
      return { ...notSeen, verdict: "unknown", reason: "comparing takes too long" };
    }
    return { ...notSeen, verdict: "not drawn", reason: reasonOf(error) };
  } finally {
    clearTimeout(timer);
    signal.removeEventListener("abort", giveUp);
    worker.terminate();
  }
}

/**
 * The result to show in the end: the first that need not be withheld. Where there is none it is one
 * that is withheld, or one in which nothing was joined; its outlines may close the mesh.
 * @param {Figure} figure
 * @param {Options} options
 * @param {Queues} queues
 * @param {AbortSignal} signal
 * @param {Watcher} watcher
 * @returns {Promise<Result>}
 */
export async function runJob(figure, options, queues, signal, watcher) {
  const offerAndJudge = async (/** @type {Result} */ result) => {
    watcher.offer(result);
    watcher.phase("waiting to be compared");
    const judging = () => judge(figure, result, signal, watcher);
    return { ...result, judgement: await queues.comparisons.run(judging, signal) };
  };
  /** @type {{ failed?: Result, unjoined?: Result, withheld?: Result }} */
  const others = {};
  for (const settings of settingsToTry(options)) {
    watcher.phase("waiting");
    const repairing = () => repairOnce(figure, settings, signal, watcher);
    const repair = await queues.repairs.run(repairing, signal);
    const result = { settings, repair, judgement: null };
    if (repair.status !== "repaired") others.failed = moreTelling(others.failed, result);
    else if (repair.mergers === 0) others.unjoined ??= result;
    else {
      const judged = await offerAndJudge(result);
      if (!isWithheld(judged.judgement)) return judged;
      others.withheld ??= judged;
    }
  }
  if (others.withheld) return others.withheld;
  if (others.unjoined) {
    if (!options.removeMesh) return others.unjoined;
    return offerAndJudge(others.unjoined);
  }
  if (!others.failed) throw new Error("no way to repair it was tried");
  const { repair } = others.failed;
  throw new FigureError(repairFailure(repair), repair.console);
}

/**
 * Another way to look for polygons may find out what is wrong with them.
 * @param {Result | undefined} first
 * @param {Result} second
 */
function moreTelling(first, second) {
  const foundNone = first?.repair.status === "no operators";
  return first && !(foundNone && second.repair.status !== "no operators") ? first : second;
}
