// What the page needs and an old browser may lack.

const needs = /** @type {const} */ ([
  ["WebAssembly", () => typeof WebAssembly === "object"],
  ["Worker", () => typeof Worker === "function"],
  ["OffscreenCanvas", () => typeof OffscreenCanvas === "function"],
  ["DecompressionStream", () => typeof DecompressionStream === "function"],
  ["createImageBitmap", () => typeof createImageBitmap === "function"],
]);

/** One line for the reader, or an empty text. */
export function missingFeatures() {
  const missing = needs.filter(([, isThere]) => !isThere()).map(([name]) => name);
  if (missing.length === 0) return "";
  return `This browser is too old for the page: it lacks ${missing.join(", ")}.`;
}
