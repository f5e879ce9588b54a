// What the page says about a result, in one sentence or two.

import { formatCount, formatCountOf } from "./format.js";

/** @typedef {import("../worker/messages.js").Repair} Repair */
/** @typedef {import("../worker/messages.js").Judgement} Judgement */

const otherWays = "trellion-batch from the trellion package knows more ways.";

export const nothingToJoin = `Nothing to join: no two polygons in a row share an edge and a colour; ${otherWays}`;

/**
 * Why a repair came to nothing; an empty text if it did not.
 * @param {Repair} repair
 */
export function repairFailure({ status, message }) {
  switch (status) {
    case "repaired":
      return "";
    case "no operators":
      return `No polygons found that follow each other. ${otherWays}`;
    case "no safe name":
      return "The file uses every name that the page would need to close the mesh. Try it without.";
    case "collapsed path":
      return "Two polygons of this figure cancel each other out, so it cannot be joined.";
    case "bad coordinate":
      return ended(`The figure has a bad coordinate: ${message}`);
    case "no memory":
      return "Not enough memory for this figure in the browser. The program on the command line takes larger ones.";
    case "failed":
      return ended(`The repair failed: ${message}`);
  }
}

/** @param {string} reason */
function ended(reason) {
  return /[.?!]$/.test(reason) ? reason : `${reason}.`;
}

/** @param {Judgement} judgement */
function samenessSentence({ pixels, differing }) {
  const all = formatCountOf(pixels, "pixel");
  if (differing === 0) return `The picture is the same: all ${all} agree.`;
  const some = formatCount(differing);
  return `The picture is the same: ${some} of ${all} differ, at the rims of areas, by a pixel’s width at most.`;
}

/** @param {Judgement} judgement */
function changeSentence({ wrong, reason }) {
  const verb = wrong === 1 ? "shows" : "show";
  const change = wrong > 0 ? `${formatCountOf(wrong, "pixel")} ${verb} another colour` : reason;
  return `The picture has changed: ${ended(change)} The result is withheld. ${otherWays}`;
}

/**
 * What kept a picture from being drawn; the reader's own words for it may begin as the sentence does.
 * @param {string} problem
 */
export function notDrawnReason(problem) {
  return ended(problem.replace(/^not drawn: /, ""));
}

/**
 * Whether a result is handed out only on demand.
 * @param {Judgement} judgement
 */
export function isWithheld({ verdict }) {
  return verdict === "changed" || verdict === "broken";
}

/** @param {Judgement} judgement */
export function verdictSentence(judgement) {
  const reason = notDrawnReason(judgement.reason);
  switch (judgement.verdict) {
    case "same":
      return samenessSentence(judgement);
    case "changed":
      return changeSentence(judgement);
    case "broken":
      return `The result cannot be drawn: ${reason} It is withheld. ${otherWays}`;
    case "unknown":
      return `Not checked: ${reason} Look at the result before you use it.`;
    case "not drawn":
      return `Not drawn, not checked: ${reason} Look at the result before you use it.`;
  }
}
