// The native program beside the ones built here: what each says and writes.

import { spawnSync } from "node:child_process";
import { copyFileSync, existsSync, mkdtempSync, readFileSync, readdirSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { fileURLToPath } from "node:url";

export const root = fileURLToPath(new URL("../../", import.meta.url));
export const nativeProgram = process.env.TRELLION ?? join(root, "build/release/trellion");
export const packageFolder = join(root, "build/web/npm");

/** @typedef {{ status: number | null, out: string, complaint: string, file: string | null }} Run */

/**
 * Bytes as text, one character each; what tells the time is taken out.
 * @param {Uint8Array} bytes
 */
export function masked(bytes) {
  return Buffer.from(bytes)
    .toString("latin1")
    .replace(/ at \d\d:\d\d on [\d/]+$/gm, " at a time")
    .replace(/completed in [ \d.*-]+ seconds/, "completed in some seconds");
}

/**
 * Runs a program on a copy of a figure, or on none.
 * @param {string[]} program
 * @param {string | null} figure
 * @param {string[]} options
 * @param {string} [answers]  to its prompts
 * @returns {Run}
 */
export function run(program, figure, options, answers = "") {
  const folder = mkdtempSync(join(tmpdir(), "trellion-"));
  try {
    if (figure) copyFileSync(figure, join(folder, "figure.eps"));
    const [command, ...leading] = program;
    const ended = spawnSync(command, [...leading, ...options], {
      cwd: folder,
      input: answers,
      maxBuffer: 1 << 28,
    });
    if (ended.error) throw ended.error;
    const written = join(folder, "figure_r.eps");
    return {
      status: ended.status,
      out: masked(ended.stdout),
      complaint: masked(ended.stderr),
      file: existsSync(written) ? masked(readFileSync(written)) : null,
    };
  } finally {
    rmSync(folder, { recursive: true });
  }
}

/**
 * The figures that the native program's tests have, and those below more folders.
 * @param {string[]} [moreFolders]
 */
export function figures(moreFolders = []) {
  const folders = ["examples", "fuzz/corpus/pipeline"].map((name) => join(root, name));
  const found = [...folders, ...moreFolders].flatMap((folder) =>
    readdirSync(folder).map((name) => join(folder, name)),
  );
  const cases = readdirSync(join(root, "tests/cases"), { recursive: true });
  found.push(...cases.map((name) => join(root, "tests/cases", String(name))));
  return found.filter((name) => name.endsWith(".eps") || name.includes("/pipeline/"));
}
