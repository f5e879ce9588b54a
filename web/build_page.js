// Writes the page as one HTML file: bundled, the workers and the program inside, and with a policy
// that lets nothing in or out.
//
//     node build_page.js --wasm FILE --output FILE

import { createHash } from "node:crypto";
import { mkdir, readFile, writeFile } from "node:fs/promises";
import { dirname, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { parseArgs } from "node:util";
import { gzipSync } from "node:zlib";
import { build } from "esbuild";

const largestPage = 300_000;
const room = fileURLToPath(new URL(".", import.meta.url));

/** @param {string} entry */
async function bundle(entry) {
  const { outputFiles } = await build({
    entryPoints: [resolve(room, entry)],
    bundle: true,
    minify: true,
    write: false,
    format: "iife",
    target: ["chrome117", "firefox115", "safari16.6"],
    legalComments: "none",
  });
  const text = outputFiles[0].text.trim();
  if (/<\/(script|style)|<!--/i.test(text)) throw new Error(`${entry} would end its own block`);
  return text;
}

/**
 * The page unpacks it when it needs it.
 * @param {string} id
 * @param {string | Uint8Array} content
 */
function packedBlock(id, content) {
  const packed = gzipSync(content, { level: 9 }).toString("base64");
  return `<script type="text/plain" id="${id}">${packed}</script>`;
}

/** @param {string} text */
function hash(text) {
  return `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
}

/**
 * @param {string} script
 * @param {string} style
 */
function contentPolicy(script, style) {
  return [
    "default-src 'none'",
    `script-src ${hash(script)} 'wasm-unsafe-eval'`,
    "worker-src blob:",
    `style-src ${hash(style)}`,
    "img-src blob: data:",
    "connect-src 'none'",
    "form-action 'none'",
    "base-uri 'none'",
  ].join("; ");
}

/** @param {string} page  whose mark becomes the icon */
function icon(page) {
  const area = /class="mark-area" d="([^"]+)"/.exec(page)?.[1];
  if (!area) throw new Error("the page has no mark");
  const image = `<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 48 48"><path fill="#0f5c6e" d="${area}"/></svg>`;
  return `<link rel="icon" href="data:image/svg+xml,${encodeURIComponent(image)}" />`;
}

/**
 * @param {string} page
 * @param {Record<string, string>} parts
 */
function filled(page, parts) {
  return Object.entries(parts).reduce((text, [name, content]) => {
    const place = `<!-- ${name} -->`;
    if (!text.includes(place)) throw new Error(`the page has no place for its ${name}`);
    return text.replace(place, () => content);
  }, page);
}

/**
 * The notices of all that the page is made of.
 * @returns {Promise<string>}
 */
async function licences() {
  const ofPacker = resolve(room, "node_modules/fflate/LICENSE");
  const [own, packer] = await Promise.all(
    [resolve(room, "../LICENSE"), ofPacker].map((path) => readFile(path, "utf8")),
  );
  const copyright = /^Copyright.*$/m.exec(packer)?.[0];
  if (!copyright || `${own}${packer}`.includes("--")) throw new Error("a licence has another form");
  return `<!--\ntrellion\n\n${own}\nThis page contains fflate, also under the MIT License.\n${copyright}\n-->`;
}

/** Indentation is for those who read the source. @param {string} page */
function withoutIndentation(page) {
  return page.replaceAll(/\n\s+/g, "\n");
}

/**
 * Returns the sizes of the page and of its parts before they are packed.
 * @param {string} wasm  path of the engine's module
 * @param {string} output
 */
async function buildPage(wasm, output) {
  const [script, style, repairWorker, pictureWorker, engine, page] = await Promise.all([
    bundle("page/main.js"),
    bundle("page/style.css"),
    bundle("worker/repair_worker.js"),
    bundle("worker/picture_worker.js"),
    readFile(wasm),
    readFile(resolve(room, "page/index.html"), "utf8"),
  ]);
  const html = filled(withoutIndentation(page), {
    licences: await licences(),
    policy: `<meta http-equiv="Content-Security-Policy" content="${contentPolicy(script, style)}" />`,
    icon: icon(page),
    style: `<style>${style}</style>`,
    scripts: [
      packedBlock("engine", engine),
      packedBlock("repair-worker", repairWorker),
      packedBlock("picture-worker", pictureWorker),
      `<script>${script}</script>`,
    ].join("\n"),
  });
  const size = Buffer.byteLength(html);
  if (size > largestPage) throw new Error(`the page has ${size} bytes, more than ${largestPage}`);
  await mkdir(dirname(output), { recursive: true });
  await writeFile(output, html);
  return {
    page: size,
    script: script.length,
    repairWorker: repairWorker.length,
    pictureWorker: pictureWorker.length,
    engine: engine.length,
  };
}

if (process.argv[1] && resolve(process.argv[1]) === fileURLToPath(import.meta.url)) {
  const { values } = parseArgs({
    options: { wasm: { type: "string" }, output: { type: "string" } },
  });
  const { wasm, output } = values;
  if (!wasm || !output) throw new Error("--wasm and --output are needed");
  console.log(JSON.stringify(await buildPage(wasm, output)));
}
