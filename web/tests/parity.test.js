// The package says and writes what the native program does, byte for byte, as a command and as a
// library. FIGURES names more folders of figures, parted by ":".

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { figures, masked, nativeProgram, packageFolder, run } from "./native.js";

const command = [process.execPath, join(packageFolder, "npm/cli.js")];
const { repair } = await import(join(packageFolder, "npm/index.js"));
const moreFolders = (process.env.FIGURES ?? "").split(":").filter((name) => name !== "");

/** The options, and what they are for the library. */
const ways = [
  { options: ["-s2"], settings: { minSeparators: 2 } },
  { options: ["-s1"], settings: { minSeparators: 1 } },
  { options: ["-r"], settings: { removeMesh: true } },
  { options: ["-v"], settings: { verbose: true } },
  { options: ["-m5"], settings: { mergeLimit: 5 } },
];

test("every figure is repaired as by the native program", async (t) => {
  const all = figures(moreFolders);
  assert.ok(all.length > 20);
  let repaired = 0;
  for (const figure of all) {
    for (const { options, settings } of ways) {
      const native = run([nativeProgram], figure, ["figure.eps", ...options]);
      const what = `${figure} ${options}`;
      assert.deepEqual(run(command, figure, ["figure.eps", ...options]), native, what);

      const made = await repair(readFileSync(figure), settings);
      assert.equal(masked(made.figure), native.file, what);
      assert.ok(native.out.includes(made.console), what);
      const whole = native.status === 0 && native.out.includes("Processing completed");
      assert.equal(made.summary.status === "repaired", whole, what);
      repaired += whole ? 1 : 0;
    }
  }
  t.diagnostic(`${all.length} figures, ${repaired} repairs`);
  assert.ok(repaired > all.length);
});

test("the command line without a figure, and with mistakes", () => {
  const example = figures()[0];
  /** @type {[string | null, string[], string?][]} */
  const lines = [
    [null, []],
    [null, ["nowhere"]],
    [example, ["figure.eps", "-x"]],
    [example, ["figure", "-s0"]],
    [example, [], "figure\n0\n2\n2\n1\n"],
    [example, [], "figure\n"],
    [null, ["."]],
  ];
  for (const [figure, options, answers] of lines) {
    const native = run([nativeProgram], figure, options, answers);
    assert.deepEqual(run(command, figure, options, answers), native, options.join(" "));
  }
});

test("a library that meets trouble says so", async () => {
  assert.equal((await repair(new Uint8Array())).summary.status, "no operators");
  const figure = new TextEncoder().encode(". . 7\n0 0 m 1 0 l 1 . l h f 0 0 m 1 0 l 0 1 l h f\n");
  const { summary } = await repair(figure);
  assert.equal(summary.status, "bad coordinate");
  assert.match(summary.message, /'\.' is not a coordinate in line 2/);
});
