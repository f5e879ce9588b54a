// The package works when it is installed from its packed file.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { masked, nativeProgram, packageFolder, root, run } from "./native.js";

test("packed, installed, run and imported", (t) => {
  const folder = mkdtempSync(join(tmpdir(), "trellion-npm-"));
  t.after(() => rmSync(folder, { recursive: true }));
  const inside = { cwd: folder, encoding: /** @type {const} */ ("utf8") };
  const packed = execFileSync("npm", ["pack", "--silent", packageFolder], inside).trim();
  writeFileSync(join(folder, "package.json"), '{ "type": "module" }');
  execFileSync("npm", ["install", "--offline", "--no-audit", `./${packed}`], inside);

  const example = join(root, "examples/surface.eps");
  copyFileSync(example, join(folder, "figure.eps"));
  const native = run([nativeProgram], example, ["figure.eps", "-r"]);
  const said = execFileSync("npx", ["--offline", "trellion", "figure.eps", "-r"], inside);
  assert.equal(masked(Buffer.from(said)), native.out);
  assert.equal(masked(readFileSync(join(folder, "figure_r.eps"))), native.file);

  // Checked with its types, then run.
  writeFileSync(
    join(folder, "use.ts"),
    `import { readFile, writeFile } from "node:fs/promises";
     import { repair } from "trellion";
     const { figure, summary } = await repair(await readFile("figure.eps"), { removeMesh: true });
     const left: number = summary.polygonsLeft;
     await writeFile("used.eps", figure);
     console.log(summary.status, left < summary.polygonsRead);
     for (const wrong of [-1, 1.5, 2 ** 31, NaN]) {
       const fates = [{ mergeLimit: wrong }, { minSeparators: wrong }].map((settings) =>
         repair(figure, settings).catch((error) => error instanceof RangeError));
       if (!(await Promise.all(fates)).every((fate) => fate === true)) throw new Error("taken");
     }`,
  );
  const compiler = join(root, "web/node_modules/.bin/tsc");
  const types = join(root, "web/node_modules/@types");
  const target = ["--strict", "--target", "es2022", "--module", "nodenext"];
  execFileSync(compiler, [...target, "--typeRoots", types, "--types", "node", "use.ts"], inside);
  assert.equal(execFileSync(process.execPath, ["use.js"], inside), "repaired true\n");
  assert.equal(masked(readFileSync(join(folder, "used.eps"))), native.file);
});
