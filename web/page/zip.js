// Packs the results into one file. It is done in small parts between which the page stays awake.

import { Zip, ZipDeflate } from "fflate";

const partSize = 1 << 18;

/** @returns {Promise<void>} */
function breathe() {
  return new Promise((resolve) => setTimeout(resolve));
}

/**
 * @param {{ name: string, content: Blob }[]} files
 * @returns {Promise<Blob>}
 */
export async function zipped(files) {
  /** @type {BlobPart[]} */
  const parts = [];
  const zip = new Zip((error, data) => {
    if (error) throw error;
    parts.push(/** @type {Uint8Array<ArrayBuffer>} */ (data));
  });
  for (const { name, content } of files) {
    const entry = new ZipDeflate(name);
    zip.add(entry);
    for (let start = 0; start < content.size; start += partSize) {
      const part = content.slice(start, start + partSize);
      entry.push(new Uint8Array(await part.arrayBuffer()));
      await breathe();
    }
    entry.push(new Uint8Array(0), true);
  }
  zip.end();
  return new Blob(parts, { type: "application/zip" });
}
