// The page: takes files in, keeps their tasks and hands all results out.

import { reasonOf } from "../worker/failure.js";
import { formatCountOf, uniqueNames } from "./format.js";
import { watchIntake } from "./intake.js";
import { missingFeatures } from "./missing.js";
import { OptionsForm } from "./options.js";
import { part } from "./parts.js";
import { Queue } from "./queue.js";
import { Task } from "./task.js";
import { zipped } from "./zip.js";

const drawnAtOnce = 3_000_000; // bytes up to which the first figure is drawn unasked
const announcedLines = 4;

const options = new OptionsForm(/** @type {HTMLFormElement} */ (part(document, "options")));
const input = /** @type {HTMLInputElement} */ (part(document, "files"));
// Repairs are short, comparisons long: they do not wait for each other.
const queues = {
  repairs: new Queue(Math.min(Math.max(navigator.hardwareConcurrency || 2, 2), 4)),
  comparisons: new Queue((navigator.hardwareConcurrency || 2) > 2 ? 2 : 1),
};
/** @type {Task[]} */
let tasks = [];
let isFirst = true;

/**
 * Read out by screen readers, once, also where several results come together.
 * @param {string} sentence
 */
function announce(sentence) {
  const announcer = part(document, "announcer");
  const line = document.createElement("p");
  line.textContent = sentence;
  announcer.append(line);
  if (announcer.childElementCount > announcedLines) announcer.firstElementChild?.remove();
}

/** @param {Task} task */
async function run(task) {
  updateSummary();
  const sentence = await task.run(options.read());
  if (sentence) announce(`${task.card.name}: ${sentence}`);
  updateSummary();
  if (!isFirst || !task.checked || !task.card.canCompare) return;
  isFirst = false;
  if (task.file.size <= drawnAtOnce) task.card.showComparison();
}

/** @param {File} file */
function add(file) {
  const task = new Task(file, queues, {
    retry: () => run(task),
    remove: () => remove(task),
    announce,
  });
  tasks.push(task);
  part(document, "cards").append(task.card.element);
  run(task);
}

/** @param {Task} task */
function remove(task) {
  const place = tasks.indexOf(task);
  tasks = tasks.filter((other) => other !== task);
  task.remove();
  updateSummary();
  announce(`${task.card.name} was removed.`);
  const neighbour = tasks[Math.min(place, tasks.length - 1)];
  (neighbour ? part(neighbour.card.element, "remove") : input).focus();
}

/** Nobody looks at each result of an archive: it holds those that were seen to be the same. */
function checkedResults() {
  return tasks.flatMap(({ checked }) => (checked ? [checked] : []));
}

function updateSummary() {
  part(document, "results").hidden = tasks.length === 0;
  const count = checkedResults().length;
  const button = part(document, "download-all");
  button.hidden = count < 2;
  button.textContent = `Download ${formatCountOf(count, "checked result")} as one zip`;
}

async function downloadAll() {
  const files = checkedResults();
  const names = uniqueNames(files.map(({ name }) => name));
  const button = part(document, "download-all");
  if (button.getAttribute("aria-disabled") === "true") return;
  button.setAttribute("aria-disabled", "true"); // and keeps the focus
  try {
    const archive = await zipped(files.map(({ content }, i) => ({ name: names[i], content })));
    const link = document.createElement("a");
    link.href = URL.createObjectURL(archive);
    link.download = "repaired_figures.zip";
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
  } catch (error) {
    announce(`The zip could not be made: ${reasonOf(error)}.`);
  } finally {
    button.setAttribute("aria-disabled", "false");
  }
}

function start() {
  const missing = missingFeatures();
  if (missing) {
    part(document, "missing").textContent = missing;
    part(document, "missing").hidden = false;
    part(document, "repair").hidden = true;
    return;
  }
  watchIntake(input, part(document, "curtain"), (files) => files.forEach(add));
  options.watch(() => tasks.forEach(run));
  part(document, "download-all").addEventListener("click", downloadAll);
}

start();
