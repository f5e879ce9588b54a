// Unpacks a gzip file, up to a size that a browser can take.

const largestText = 2 ** 30;

/**
 * Throws a sentence for the page.
 * @param {Blob} packed
 * @returns {Promise<Blob>}
 */
export async function unpack(packed) {
  let size = 0;
  const counter = new TransformStream({
    transform(/** @type {Uint8Array} */ chunk, controller) {
      size += chunk.length;
      if (size <= largestText) controller.enqueue(chunk);
      else controller.error(new Error("too large"));
    },
  });
  const unpacked = packed.stream().pipeThrough(new DecompressionStream("gzip"));
  try {
    return await new Response(unpacked.pipeThrough(counter)).blob();
  } catch {
    if (size > largestText) {
      throw new Error("Unpacked, the file has more than 1 GiB, too much for this page.");
    }
    throw new Error("The gzip file could not be unpacked: it is damaged, or has several parts.");
  }
}
