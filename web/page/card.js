// The card of one figure: shows what is known of it. What is to be done is told to the owner.

import {
  commandLine,
  formatCount,
  formatKilobytes,
  formatSeconds,
  repairedName,
  visibleName,
  withoutTerminalControls,
} from "./format.js";
import { CompareView } from "./compare_view.js";
import { fromTemplate, part } from "./parts.js";
import { isWithheld, nothingToJoin, verdictSentence } from "./sentences.js";

/** @typedef {import("./figure_file.js").Figure} Figure */
/** @typedef {import("./repair_job.js").Result} Result */

/**
 * @typedef {object} Owner
 * @property {() => void} cancel
 * @property {() => void} retry
 * @property {() => void} remove
 * @property {(sentence: string) => void} announce
 */

/** What is said of each, before an ellipsis. */
const phases = {
  waiting: "Waiting for its turn",
  unpacking: "Unpacking",
  repairing: "Repairing",
  "waiting to be compared": "Waiting to be compared",
  comparing: "The picture is being compared",
};

let cardCount = 0;

export class Card {
  element = fromTemplate("card-template");
  #progress = /** @type {HTMLProgressElement} */ (this.#part("progress"));
  #download = /** @type {HTMLAnchorElement} */ (this.#part("download"));
  /** @type {CompareView | null} */
  #compareView = null;
  #lostDownload = false; // had the focus before another repair began
  #wantsComparison = false; // also of the result of another repair
  /** @type {{ figure: Figure, result: Result } | null} */
  #shown = null;

  /**
   * @param {string} name
   * @param {Owner} owner
   */
  constructor(name, owner) {
    this.name = visibleName(name);
    const heading = this.#part("name");
    heading.textContent = this.name;
    heading.id = `figure-${++cardCount}`;
    this.#part("article").setAttribute("aria-labelledby", heading.id);
    this.#part("remove").setAttribute("aria-label", `Remove ${this.name}`);

    this.#onClick("cancel", owner.cancel);
    this.#onClick("retry", owner.retry);
    this.#onClick("remove", owner.remove);
    this.#onClick("download-anyway", () => this.#download.click());
    this.#onClick("compare", () => this.toggleComparison());
    this.#onClick("copy", async () => owner.announce(await this.#copyCommand()));
  }

  /** As before anything is known. */
  clear() {
    this.#endComparison();
    this.#withdraw();
    this.#say("", "");
    for (const element of this.element.querySelectorAll("[data-optional]")) {
      /** @type {HTMLElement} */ (element).hidden = true;
    }
  }

  /** @param {import("./repair_job.js").Phase} phase */
  phase(phase) {
    if (phase === "waiting" || phase === "repairing") this.clear();
    this.#work(phases[phase]);
    this.#rescueFocus();
  }

  /** @param {number} fraction */
  progress(fraction) {
    this.#progress.value = fraction;
  }

  /**
   * The result can be downloaded, whatever the picture turns out to be.
   * @param {Figure} figure
   * @param {Result} result
   */
  offer(figure, result) {
    this.#shown = { figure, result };
    this.#showNumbers(figure, result);
    this.#download.href = URL.createObjectURL(result.repair.result);
    this.#download.download = repairedName(figure.name);
    this.#part("copy").textContent = "Copy";
    this.#part("download-name").textContent = this.#download.download;
    const command = commandLine(figure, result.settings);
    this.#part("command").textContent = command;
    this.#show("download", "copy");
    if (command) this.#show("command-line");
  }

  /**
   * @param {Figure} figure
   * @param {Result} result
   * @returns {string} what it says
   */
  judged(figure, result) {
    const { judgement } = result;
    if (!judgement) return this.#nothingJoined(result);
    this.#hide("work");
    if (this.#shown?.result.settings !== result.settings) {
      this.#withdraw();
      this.offer(figure, result);
    }
    this.#shown = { figure, result };
    const { verdict } = judgement;
    this.#say(verdict.replace(" ", "-"), verdictSentence(judgement));
    if (isWithheld(judgement)) {
      this.#hide("download");
      this.#hide("copy");
      this.#show("download-anyway");
    }
    if (verdict !== "not drawn" && verdict !== "broken") {
      this.#show("compare");
      if (this.#wantsComparison) this.#compare();
    }
    if (judgement.hairlines) this.#showHairlines(judgement.hairlines);
    this.#rescueFocus();
    return this.#part("verdict").textContent ?? "";
  }

  /**
   * There is no result, so its numbers would be of something that nobody gets.
   * @param {Result} result
   */
  #nothingJoined({ repair }) {
    this.clear();
    this.#showMessages(repair.console);
    const sentence = nothingToJoin;
    this.#say("nothing", sentence);
    this.#rescueFocus();
    return sentence;
  }

  /**
   * @param {string} sentence
   * @param {string} console  what the program said, if anything
   */
  failed(sentence, console) {
    this.clear();
    if (console) this.#showMessages(console);
    this.#say("error", sentence);
    this.#rescueFocus();
  }

  /**
   * A result that is offered already stays, not compared.
   * @returns {string} what it says
   */
  cancelled() {
    const sentence = this.#shown ? "Cancelled: the picture was not compared." : "Cancelled.";
    this.#hide("work");
    this.#say("cancelled", sentence);
    this.#show("retry");
    this.#rescueFocus();
    return sentence;
  }

  showComparison() {
    if (!this.#compareView) this.toggleComparison();
  }

  toggleComparison() {
    this.#wantsComparison = !this.#compareView;
    if (this.#wantsComparison) this.#compare();
    else this.#endComparison();
  }

  get canCompare() {
    return this.#shown !== null && !this.#part("compare").hidden;
  }

  #compare() {
    if (!this.#shown) return;
    const { figure, result } = this.#shown;
    this.#compareView = new CompareView(figure.text, result.repair.result);
    this.#part("picture").append(this.#compareView.element);
    this.#show("picture");
    this.#part("compare").setAttribute("aria-expanded", "true");
  }

  remove() {
    this.clear();
    this.element.remove();
  }

  /**
   * @param {Figure} figure
   * @param {Result} result
   */
  #showNumbers(figure, { repair }) {
    this.#part("polygons-before").textContent = formatCount(repair.polygonsRead);
    this.#part("polygons-after").textContent = formatCount(repair.polygonsLeft);
    this.#part("size-before").textContent = formatKilobytes(figure.text.size);
    this.#part("size-after").textContent = formatKilobytes(repair.result.size);
    this.#part("seconds").textContent = formatSeconds(repair.seconds);
    this.#showMessages(repair.console);
    this.#show("numbers");
  }

  /** @param {string} console */
  #showMessages(console) {
    this.#part("console").textContent = withoutTerminalControls(console);
    this.#show("messages");
  }

  /** @param {{ before: number, after: number }} pixels */
  #showHairlines({ before, after }) {
    this.#part("hairlines-before").textContent = formatCount(before);
    this.#part("hairlines-after").textContent = formatCount(after);
    this.#show("hairlines");
  }

  #withdraw() {
    if (document.activeElement === this.#download) {
      this.#lostDownload = true;
      this.#part("name").focus(); // a link that leads nowhere has no focus
    }
    if (this.#download.href) URL.revokeObjectURL(this.#download.href);
    this.#download.removeAttribute("href");
    this.#shown = null;
  }

  #endComparison() {
    this.#compareView?.end();
    this.#compareView = null;
    this.#part("compare").setAttribute("aria-expanded", "false");
    this.#hide("picture");
  }

  /** @returns {Promise<string>} what became of it */
  async #copyCommand() {
    const command = this.#part("command");
    getSelection()?.selectAllChildren(command);
    try {
      await navigator.clipboard.writeText(command.textContent ?? "");
      this.#part("copy").textContent = "Copied";
      return "The command is copied.";
    } catch {
      this.#part("copy").textContent = "Selected";
      return "The command is selected: copy it.";
    }
  }

  /** The button that had the focus may have gone. */
  #rescueFocus() {
    const focused = document.activeElement;
    if (this.#lostDownload && focused === this.#part("name") && !this.#download.hidden) {
      this.#lostDownload = false;
      this.#download.focus();
    }
    if (!focused?.closest("[hidden]") || !this.element.contains(focused)) return;
    const next = ["retry", "cancel", "name"].map((name) => this.#part(name));
    next.find((element) => !element.closest("[hidden]"))?.focus();
  }

  /** @param {string} what */
  #work(what) {
    this.#progress.value = 0;
    this.#progress.setAttribute("aria-label", `${what}: ${this.name}`);
    this.#part("phase").textContent = `${what}…`;
    this.#show("work");
  }

  /**
   * @param {string} tone
   * @param {string} sentence
   */
  #say(tone, sentence) {
    const verdict = this.#part("verdict");
    verdict.dataset.tone = tone;
    verdict.textContent = sentence;
    verdict.hidden = sentence === "";
  }

  /** @param {string[]} names */
  #show(...names) {
    for (const name of names) this.#part(name).hidden = false;
  }

  /** @param {string} name */
  #hide(name) {
    this.#part(name).hidden = true;
  }

  /**
   * @param {string} name
   * @param {() => void} action
   */
  #onClick(name, action) {
    this.#part(name).addEventListener("click", action);
  }

  /** @param {string} name */
  #part(name) {
    return part(this.element, name);
  }
}
