// node draw.mjs DIRECTORY PDF...: draws all pages of each at 144 dpi with the pdf.js (package
// pdfjs-dist) and the canvas (@napi-rs/canvas) below DIRECTORY/node_modules; prints its milliseconds.

import fs from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const [directory, ...files] = process.argv.slice(2);
const require = createRequire(path.resolve(directory, 'package.json'));
const canvas = require('@napi-rs/canvas');
for (const name of ['Path2D', 'DOMMatrix', 'ImageData']) globalThis[name] = canvas[name];
const script = require.resolve('pdfjs-dist/legacy/build/pdf.mjs');
const pdfjs = await import(pathToFileURL(script));
const standardFontDataUrl = path.resolve(path.dirname(script), '../../standard_fonts') + '/';

for (const file of files) {
  const data = new Uint8Array(fs.readFileSync(file));
  const pdf = await pdfjs.getDocument({ data, standardFontDataUrl, verbosity: 0 }).promise;
  const begun = performance.now();
  for (let number = 1; number <= pdf.numPages; number++) {
    const page = await pdf.getPage(number);
    const viewport = page.getViewport({ scale: 2 });
    const sheet = canvas.createCanvas(Math.ceil(viewport.width), Math.ceil(viewport.height));
    const canvasContext = sheet.getContext('2d');
    await page.render({ canvasContext, viewport, canvas: sheet }).promise;
    canvasContext.getImageData(0, 0, 1, 1); // all that was put off is drawn now
  }
  console.log((performance.now() - begun).toFixed(0));
}
process.exit(0);
