// The built page in a browser, as its users meet it.

import assert from "node:assert/strict";
import { mkdirSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { gzipSync } from "node:zlib";
import { unzipSync } from "fflate";
import {
  card,
  choose,
  downloaded,
  file,
  give,
  launch,
  open,
  pageUrl,
  projectFile,
  repairedByProgram,
  sheet,
} from "./browser.js";
import { masked, root } from "./native.js";

/** @typedef {import("playwright-core").Locator} Locator */

const screenshots = join(root, "build/web/screenshots");
const surfacePath = "examples/surface.eps";
const levelsPath = "tests/batch/figures/levels.eps";
const relativePath = "tests/batch/figures/relative.eps";
const [surface, levels, relative] = [surfacePath, levelsPath, relativePath].map(projectFile);
const meshOf = (/** @type {Locator} */ shown) => shown.getByRole("group", { name: "Picture" });

/** @type {import("playwright-core").Browser} */
let browser;
before(async () => (browser = await launch()));
after(() => browser.close());

/** @param {Locator} shown  a card */
function sameness(shown) {
  return shown.getByText(/^The picture is the same/).waitFor();
}

/** @param {Locator} shown  a card */
function sharp(shown) {
  return shown.locator("[data-sharp=true]").waitFor();
}

test("a dropped figure becomes what the program makes of it, with either setting", async (t) => {
  const page = await open(t, browser);
  await give(page, "drop", surface);
  const shown = card(page, "surface.eps");
  await sameness(shown);
  const download = shown.getByRole("link", { name: "Download surface_r.eps" });
  const plain = await downloaded(download);
  assert.equal(plain.name, "surface_r.eps");
  assert.equal(masked(plain.bytes), repairedByProgram(surfacePath));
  assert.match(await shown.getByRole("definition").first().innerText(), /^6,048\b.*\b21$/s);

  await sharp(shown);
  await download.focus();
  await page.getByLabel("Close the mesh").evaluate((box) => {
    /** @type {HTMLInputElement} */ (box).checked = true;
    box.dispatchEvent(new Event("change", { bubbles: true }));
  });
  await shown.getByText("trellion surface.eps -r", { exact: true }).waitFor();
  await sameness(shown);
  await sharp(shown); // the comparison is there again
  assert.equal(await page.locator(":focus").innerText(), "Download surface_r.eps");
  const closed = await downloaded(download);
  assert.equal(masked(closed.bytes), repairedByProgram(surfacePath, "-r"));
});

test("several results come as one archive, without those that are withheld", async (t) => {
  const page = await open(t, browser);
  const packed = file("levels.eps.gz", gzipSync(levels.buffer));
  const unseen = sheet(4, 4).replace("showpage", "<< /ShadingType 2 >> shfill\nshowpage");
  await choose(page, surface, file("unseen.eps", unseen), packed, relative, levels);
  await card(page, "relative.eps")
    .getByText(/^The picture has changed/)
    .waitFor();
  const archive = page.getByRole("button", { name: "Download 3 checked results as one zip" });
  const { name, bytes } = await downloaded(archive);
  assert.equal(name, "repaired_figures.zip");
  const files = unzipSync(bytes);
  assert.deepEqual(Object.keys(files), ["surface_r.eps", "levels_r.eps", "levels_r-2.eps"]);
  assert.equal(masked(files["surface_r.eps"]), repairedByProgram(surfacePath));
  const ofLevels = repairedByProgram(levelsPath, "-s1"); // two operators are not found there
  assert.equal(masked(files["levels_r.eps"]), ofLevels);
  assert.equal(masked(files["levels_r-2.eps"]), ofLevels);
});

test("a result whose picture has changed is handed out only on demand", async (t) => {
  const page = await open(t, browser);
  await choose(page, relative);
  const shown = card(page, "relative.eps");
  await shown.getByText(/^The picture has changed: .* withheld\./).waitFor();
  assert.equal(await shown.getByRole("link").count(), 0);
  const { name, bytes } = await downloaded(shown.getByRole("button", { name: "all the same" }));
  assert.equal(name, "relative_r.eps");
  assert.equal(masked(bytes), repairedByProgram(relativePath));
});

test("a result that cannot be drawn, as the figure can, is withheld", async (t) => {
  const page = await open(t, browser);
  const [head, squares] = sheet(4, 4).split(/(?<=setrgbcolor\n)/);
  const counted = `currentfile ${squares.length} string readstring pop cvx exec\n${squares}`;
  const text = `(${"another part ".repeat(100)}) pop\n`; // which the shorter polygons tear apart
  await choose(page, file("counted.eps", head + counted + text));
  const shown = card(page, "counted.eps");
  await shown.getByText(/^The result cannot be drawn: undefined: \w+\. It is withheld\./).waitFor();
  await shown.getByRole("button", { name: "all the same" }).waitFor();
  assert.equal(await shown.getByRole("link").count(), 0);
  assert.equal(await shown.getByRole("button", { name: /^Copy|^Compare/ }).count(), 0);
});

test("what cannot be drawn is said not to be checked, and can be had", async (t) => {
  const page = await open(t, browser);
  const content = sheet(4, 4).replace("showpage", "<< /ShadingType 2 >> shfill\nshowpage");
  await choose(page, file("shaded.eps", content));
  const shown = card(page, "shaded.eps");
  await shown.getByText(/^Not drawn, not checked: shfill\. Look at the result/).waitFor();
  await shown.getByRole("link", { name: "Download shaded_r.eps" }).waitFor();
  assert.equal(await shown.getByRole("slider").count(), 0);
});

test("a comparison that takes too long ends, and keeps no repair waiting", async (t) => {
  const page = await open(t, browser);
  await page.clock.install();
  const slow = sheet(4, 4).replace("showpage", "0 1 1e8 { pop } for\nshowpage");
  await choose(page, file("slow.eps", slow), file("slow2.eps", slow), file("slow3.eps", slow));
  const comparing = page.getByText("The picture is being compared…");
  await comparing.first().waitFor();
  await page.getByText("Waiting to be compared…").first().waitFor();
  assert.equal(await page.getByRole("link", { name: /^Download slow/ }).count(), 3);
  await page.clock.fastForward("02:01");
  await page
    .getByText(/^Not checked: comparing takes too long\. Look/)
    .first()
    .waitFor();
});

test("the picture follows divider, zoom and mesh, by keyboard alone", async (t) => {
  const page = await open(t, browser);
  await choose(page, surface);
  const shown = card(page, "surface.eps");
  const picture = meshOf(shown).getByRole("application");
  await sharp(shown);
  await picture.hover({ position: { x: 40, y: 90 } });
  await page.mouse.wheel(0, -10); // is for the page
  await shown.getByText(/the wheel zooms/).waitFor();
  assert.equal(await meshOf(shown).getAttribute("data-zoomed"), "false");

  /** @type {Buffer[]} */
  const seen = [await picture.screenshot()];
  const press = async (/** @type {Locator} */ where, /** @type {string[]} */ ...keys) => {
    for (const key of keys) await where.press(key);
    await sharp(shown);
    const now = await picture.screenshot();
    assert(!seen.some((before) => before.equals(now)), `${keys} shows nothing new`);
    seen.push(now);
  };
  const divider = shown.getByRole("slider");
  await press(divider, "End");
  assert.equal(await divider.getAttribute("aria-valuenow"), "100");
  await press(divider, "Home", "ArrowRight");
  assert.equal(await divider.getAttribute("aria-valuenow"), "2");
  await press(shown.getByRole("button", { name: "To the mesh" }), "Enter");
  await press(picture, "ArrowLeft");
  await press(picture, "+");
  await press(shown.getByRole("button", { name: "Zoom out" }), "Space");

  await shown.getByRole("button", { name: "Compare" }).press("Enter");
  await picture.waitFor({ state: "detached" });
});

test("long work can be cancelled, taken up again and removed", async (t) => {
  const page = await open(t, browser);
  await choose(page, file("sheet.eps", sheet(500, 300)));
  const shown = card(page, "sheet.eps");
  await shown.getByRole("progressbar").waitFor();
  await shown.getByRole("button", { name: "Cancel" }).press("Enter");
  await shown.getByText(/^Cancelled/).waitFor();
  assert.match(await page.getByRole("log").innerText(), /^sheet\.eps: Cancelled/);
  assert.equal(await shown.getByRole("progressbar").count(), 0);

  assert.equal(await page.locator(":focus").innerText(), "Try again");
  await page.keyboard.press("Enter");
  await sameness(shown);
  await choose(page, surface);
  await shown.getByRole("button", { name: "Remove sheet.eps" }).press("Enter");
  await shown.waitFor({ state: "detached" });
  const focused = page.locator(":focus");
  assert.equal(await focused.getAttribute("aria-label"), "Remove surface.eps");
  await focused.press("Enter");
  assert.equal(await page.locator(":focus").getAttribute("id"), "files");
});

test("what cannot be repaired is said in one line", async (t) => {
  const page = await open(t, browser);
  const head = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 9 9\n%%EndComments\n";
  const corner = "0 0 m 1 0 l 0 1 l h f\n";
  const apart = `${corner}5 5 m 6 5 l 5 6 l h f\n`;
  /** @type {[string, string | Buffer, RegExp][]} */
  const refused = [
    ["letter.eps", "Dear editor,", /^This is not an EPS file/],
    ["empty.eps", "", /^The file is empty\.$/],
    ["plain.eps", `${head}1 1 moveto (a) show\n`, /^No polygons found/],
    [
      "point.eps",
      head + apart.replace("6", "."),
      /^The figure has a bad coordinate: '\.' .* line 5\.$/,
    ],
    ["twice.eps", head + corner + corner, /cancel each other out/],
    ["apart.eps", head + apart, /^Nothing to join/],
    [
      "preview.eps",
      Buffer.from("c5d0d3c620000000", "hex"),
      /DOS preview header; export it without/,
    ],
    ["figure.pdf", "%PDF-1.4\n", /^This page repairs EPS\. For PDF use trellion-batch/],
    [
      "cut.eps.gz",
      gzipSync(surface.buffer).subarray(0, 5000),
      /^The gzip file could not be unpacked/,
    ],
  ];
  await choose(page, ...refused.map(([name, content]) => file(name, content)));
  for (const [name, , sentence] of refused) {
    const shown = card(page, name);
    await shown.getByText(sentence).waitFor();
    assert.equal(await shown.getByRole("link").count(), 0, name);
  }
});

test("nothing can be sent, not even by a worker", async (t) => {
  const page = await browser.newPage();
  t.after(() => page.close());
  await page.goto(pageUrl);
  const fates = await page.evaluate(() => {
    const send = () =>
      fetch("data:,figure").then(
        () => "sent",
        () => "refused",
      );
    const script = new Blob([`(${send})().then(postMessage)`]);
    const worker = new Worker(URL.createObjectURL(script));
    const ofWorker = new Promise((resolve) => (worker.onmessage = ({ data }) => resolve(data)));
    return Promise.all([send(), ofWorker]);
  });
  assert.deepEqual(fates, ["refused", "refused"]);
});

test("a browser that lacks something is told what", async (t) => {
  const page = await browser.newPage();
  t.after(() => page.close());
  await page.addInitScript(() => Reflect.deleteProperty(globalThis, "OffscreenCanvas"));
  await page.goto(pageUrl);
  assert.match(await page.getByRole("alert").innerText(), /too old .* lacks OffscreenCanvas\.$/);
  assert.equal(await page.getByRole("form").count(), 0);
});

test("a screen reader finds its way, and hears each result once", async (t) => {
  const page = await open(t, browser);
  await choose(page, surface);
  const shown = card(page, "surface.eps");
  await sharp(shown);
  const tree = await page.locator("body").ariaSnapshot();
  const expected = [
    /^- banner:\n {2}- heading "trellion" \[level=1\]/m,
    /^- main:\n {2}- region "Repair figures":/m,
    /- checkbox "Close the mesh"/,
    /- combobox "How a polygon ends"/,
    /- article "surface\.eps":\n\s+- heading "surface\.eps" \[level=3\]/,
    /- button "Compare" \[expanded\]/,
    /- slider "Divider between before and after"/,
    /- region "Privacy":/,
  ];
  for (const part of expected) assert.match(tree, part);
  const news = await page.getByRole("log").innerText();
  assert.equal(news.match(/surface\.eps: The picture is the same/g)?.length, 1);
});

test("it reads well in light, in dark and on a small screen", async (t) => {
  mkdirSync(screenshots, { recursive: true });
  const page = await open(t, browser);
  await give(page, "paste", surface);
  await choose(page, relative);
  await card(page, "relative.eps")
    .getByText(/^The picture has changed/)
    .waitFor();
  /** @type {string[]} */
  const colours = [];
  for (const colorScheme of /** @type {const} */ (["light", "dark"])) {
    await page.emulateMedia({ colorScheme });
    for (const width of [1100, 390, 320]) {
      await page.setViewportSize({ width, height: 800 });
      await sharp(card(page, "surface.eps"));
      await page.screenshot({
        path: join(screenshots, `${colorScheme}-${width}.png`),
        fullPage: true,
      });
      const overflow = await page.evaluate(
        () => document.documentElement.scrollWidth - document.documentElement.clientWidth,
      );
      assert.equal(overflow, 0, `at ${width} pixels the page is wider than the window`);
    }
    colours.push(await page.evaluate(() => getComputedStyle(document.body).backgroundColor));
  }
  assert.notEqual(colours[0], colours[1]);
});
