// Opens the built page as a file in a real browser, and watches that it keeps to itself.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";
import { nativeProgram, root, run } from "./native.js";

/** @typedef {import("playwright-core").Page} Page */
/** @typedef {import("playwright-core").Locator} Locator */
/** @typedef {{ name: string, mimeType: string, buffer: Buffer }} GivenFile */

export const pageUrl = pathToFileURL(join(root, "build/web/trellion.html")).href;

export function launch() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
    args: [
      "--headless",
      "--no-sandbox",
      "--disable-gpu",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
  });
}

/**
 * @param {import("node:test").TestContext} t
 * @param {import("playwright-core").Browser} browser
 */
export async function open(t, browser) {
  const context = await browser.newContext({ acceptDownloads: true, reducedMotion: "reduce" });
  const page = await context.newPage();
  /** @type {string[]} */
  const complaints = [];
  page.on("console", (message) => complaints.push(message.text()));
  page.on("pageerror", (error) => complaints.push(String(error)));
  page.on("request", (request) => {
    if (request.url() !== pageUrl && !/^(blob|data):/.test(request.url())) {
      complaints.push(`asked for ${request.url()}`);
    }
  });
  t.after(async () => {
    await context.close();
    assert.deepEqual(complaints, []);
  });
  await page.goto(pageUrl);
  return page;
}

/**
 * @param {string} name
 * @param {string | Buffer} content
 * @returns {GivenFile}
 */
export function file(name, content) {
  return { name, mimeType: "", buffer: Buffer.from(content) };
}

/** @param {string} path  below the project */
export function projectFile(path) {
  return file(path.replace(/.*\//, ""), readFileSync(join(root, path)));
}

/**
 * @param {Page} page
 * @param {GivenFile[]} files
 */
export function choose(page, ...files) {
  return page.getByLabel("Choose EPS files").setInputFiles(files);
}

/**
 * As if let go over the window, or pasted.
 * @param {Page} page
 * @param {"drop" | "paste"} how
 * @param {GivenFile} given
 */
export async function give(page, how, { name, buffer }) {
  await page.evaluate(
    ({ how, name, text }) => {
      const data = new DataTransfer();
      data.items.add(new File([text], name));
      const common = { bubbles: true, cancelable: true };
      const events =
        how === "paste"
          ? [new ClipboardEvent(how, { clipboardData: data, ...common })]
          : ["dragover", how].map((type) => new DragEvent(type, { dataTransfer: data, ...common }));
      for (const event of events) document.body.dispatchEvent(event);
    },
    { how, name, text: buffer.toString("latin1") },
  );
}

/**
 * @param {Page} page
 * @param {string} name
 */
export function card(page, name) {
  return page.getByRole("article", { name, exact: true });
}

/**
 * @param {Locator} locator  what to click
 * @returns {Promise<{ name: string, bytes: Buffer }>}
 */
export async function downloaded(locator) {
  const [download] = await Promise.all([locator.page().waitForEvent("download"), locator.click()]);
  return { name: download.suggestedFilename(), bytes: readFileSync(await download.path()) };
}

/**
 * What the program itself makes of a figure of the project.
 * @param {string} path
 * @param {string[]} options
 */
export function repairedByProgram(path, ...options) {
  return run([nativeProgram], join(root, path), ["figure.eps", ...options]).file;
}

/**
 * A sheet of squares in one colour.
 * @param {number} columns
 * @param {number} rows
 */
export function sheet(columns, rows) {
  const squares = Array.from({ length: columns * rows }, (_, i) => {
    const [x, y] = [i % columns, Math.floor(i / columns)];
    return `${x} ${y} m ${x + 1} ${y} l ${x + 1} ${y + 1} l ${x} ${y + 1} l h f`;
  });
  return [
    "%!PS-Adobe-3.0 EPSF-3.0",
    `%%BoundingBox: 0 0 ${columns + 1} ${rows + 1}`,
    "%%EndComments",
    "/m{moveto}def /l{lineto}def /h{closepath}def /f{fill}def",
    "0.2 0.4 0.6 setrgbcolor",
    ...squares,
    "showpage\n",
  ].join("\n");
}
