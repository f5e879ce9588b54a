// Why something came to nothing, in a few words for the page.

/** @param {unknown} error */
export function reasonOf(error) {
  if (!(error instanceof Error)) return String(error);
  if (/call stack|recursion/.test(error.message)) return "it is nested too deeply for the browser";
  if (error instanceof RangeError) return "there is not enough memory for it in the browser";
  const isFileGone = error.name === "NotReadableError" || error.name === "NotFoundError";
  return isFileGone ? "the file cannot be read any more" : error.message;
}
