// Numbers, names and commands as people read them.

const counts = new Intl.NumberFormat("en", { maximumFractionDigits: 0 });

/** @param {number} value */
export function formatCount(value) {
  return counts.format(value);
}

/**
 * Of one thing without the plural's letter.
 * @param {number} value
 * @param {string} noun
 */
export function formatCountOf(value, noun) {
  return `${formatCount(value)} ${noun}${value === 1 ? "" : "s"}`;
}

/** @param {number} bytes */
export function formatKilobytes(bytes) {
  const kilobytes = bytes / 1000;
  return `${kilobytes < 10 ? kilobytes.toFixed(1) : formatCount(kilobytes)} kB`;
}

/** @param {number} seconds */
export function formatSeconds(seconds) {
  return `${seconds.toFixed(seconds < 10 ? 2 : 0)} s`;
}

const invisible = /[\p{Cc}\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/gu;

/**
 * Without what would hide or turn a part of the name.
 * @param {string} name
 */
export function visibleName(name) {
  return name.replace(invisible, "_");
}

/**
 * A name in the folder where it is put, and for all to see there.
 * @param {string} name
 */
function fileName(name) {
  return visibleName(name).replaceAll(/[/\\]|^\.+/g, "_");
}

/**
 * plot.eps becomes plot_r.eps, as the program itself names its results.
 * @param {string} given
 */
export function repairedName(given) {
  const name = fileName(given);
  const dot = name.lastIndexOf(".");
  return dot < 0 ? `${name}_r.eps` : `${name.slice(0, dot)}_r${name.slice(dot)}`;
}

/**
 * Names that differ, also where letters' case does not count: a second plot_r.eps is called
 * plot_r-2.eps.
 * @param {string[]} names
 */
export function uniqueNames(names) {
  /** @type {Set<string>} */
  const taken = new Set();
  return names.map((name) => {
    let candidate = name;
    for (let number = 2; taken.has(candidate.toLowerCase()); ++number) {
      candidate = name.replace(/(?=\.[^.]*$)|$/, `-${number}`);
    }
    taken.add(candidate.toLowerCase());
    return candidate;
  });
}

/**
 * A word that a shell takes as it stands, and that is no option.
 * @param {string} name
 */
function shellWord(name) {
  const path = name.startsWith("-") ? `./${name}` : name;
  return /^[\w./+,@-]+$/.test(path) ? path : `'${path.replaceAll("'", "'\\''")}'`;
}

/**
 * The command that does on the command line what the page has done; empty for a file whose name the
 * programs would take in another way.
 * @param {{ name: string, packedName: string }} figure
 * @param {import("../worker/messages.js").Settings} settings
 */
export function commandLine({ name, packedName }, settings) {
  const isPlain = name.includes(".") && fileName(name) === name;
  if (!isPlain || (packedName && packedName !== `${name}.gz`)) return "";
  const words = packedName ? ["gunzip", "-k", shellWord(packedName), "&&"] : [];
  words.push("trellion", shellWord(name));
  if (settings.mergeLimit !== 0) words.push(`-m${settings.mergeLimit}`);
  if (settings.minSeparators !== 2) words.push(`-s${settings.minSeparators}`);
  if (settings.removeMesh) words.push("-r");
  return words.join(" ");
}

/**
 * The program draws its progress over the same line of a terminal; only the last state of such a
 * line is kept.
 * @param {string} text
 */
export function withoutTerminalControls(text) {
  /** @type {string[]} */
  const lines = [];
  for (const line of text.split("\n")) {
    const upwards = /^\x1b\[(\d*)A/.exec(line); // eslint-disable-line no-control-regex
    if (upwards) lines.splice(-Number(upwards[1] || 1));
    lines.push(upwards ? line.slice(upwards[0].length) : line);
  }
  return lines.join("\n").trim();
}
