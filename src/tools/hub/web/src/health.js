// What the page says about the whole, and what of it is therefore old.

import { wholeDuration } from "./format.js";

export const SILENCE_LIMIT = 2; // seconds without a frame, of which five come a second
export const SOLUTION_LIMIT = 2;

const TEXTS = {
  "no position": "Solutions come, but without a position.",
  old: "What is shown is the last that came.",
  silent: "The daemon is there, but the receiver's ports bring nothing.",
  gone: "What is shown is the last that was told.",
};
const TONES = { live: "good", "no position": "warning", old: "warning", connecting: "neutral" };

/**
 * What is the matter: the hub's word, unless the page knows better: nothing comes from the hub, or
 * the last solution has become old since the hub last spoke.
 *   quiet: seconds since the last frame, or since the page began
 *   health: as the hub has told it last, null when it never did
 *   solutionAge: seconds, null without a solution
 */
export function stateOf({ quiet, health, solutionAge }) {
  if (quiet > SILENCE_LIMIT) return "disconnected";
  if (!health) return "connecting";
  if (health.state === "live" && solutionAge !== null && solutionAge > SOLUTION_LIMIT) return "old";
  return health.state;
}

/** The headline and what stands below it. */
export function wordsOf(state, { quiet, health, solutionAge }) {
  if (state === "connecting") return { headline: "Connecting to the hub", detail: "" };
  if (state === "disconnected") {
    const detail = health
      ? "Everything below is old. The page goes on trying."
      : "Nothing has come from it yet. The page goes on trying.";
    return { headline: `No connection to the hub for ${wholeDuration(quiet)}`, detail };
  }
  if (state === "old") {
    return { headline: `The last solution is ${wholeDuration(solutionAge)} old`, detail: TEXTS.old };
  }
  const isEmpty = state === "gone" && solutionAge === null;
  return { headline: health.words, detail: isEmpty ? "" : TEXTS[state] ?? "" };
}

export const toneOf = (state) => TONES[state] ?? "bad";

/**
 * Whether the state alone makes something old, whatever its own age.
 *   source: what tells it: "port" (the receiver), "daemon" or "hub"
 */
export function isOldBecauseOf(state, source) {
  if (state === "disconnected") return true;
  if (state === "gone") return source !== "hub";
  return state === "silent" && source === "port";
}
