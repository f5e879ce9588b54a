// The three ways by which files come in: a button, a drop anywhere on the window, and paste.

/**
 * @param {HTMLInputElement} input
 * @param {HTMLElement} curtain  shown while files are dragged over the window
 * @param {(files: File[]) => void} take
 */
export function watchIntake(input, curtain, take) {
  input.addEventListener("change", () => {
    take([...(input.files ?? [])]);
    input.value = ""; // the same file can be chosen again
  });

  window.addEventListener("paste", (event) => {
    const files = [...(event.clipboardData?.files ?? [])];
    if (files.length > 0) take(files);
  });

  watchDrop(curtain, take);
}

/**
 * @param {HTMLElement} curtain
 * @param {(files: File[]) => void} take
 */
function watchDrop(curtain, take) {
  const carriesFiles = (/** @type {DragEvent} */ event) =>
    event.dataTransfer?.types.includes("Files") ?? false;

  window.addEventListener("dragover", (event) => {
    if (!carriesFiles(event)) return;
    event.preventDefault(); // otherwise the browser would leave the page for the file
    curtain.hidden = false;
  });
  window.addEventListener("dragleave", (event) => {
    if (event.relatedTarget === null) curtain.hidden = true;
  });
  window.addEventListener("drop", (event) => {
    if (!carriesFiles(event)) return;
    event.preventDefault();
    curtain.hidden = true;
    take([...(event.dataTransfer?.files ?? [])]);
  });
}
