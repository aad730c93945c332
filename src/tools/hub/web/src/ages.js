// Every age on the page: it goes on by the page's own clock, also when nothing comes any more.

import { duration, UNKNOWN } from "./format.js";
import { isOldBecauseOf } from "./health.js";
import { elapsed } from "./moment.js";
import { setText } from "./dom.js";

/**
 * The present state of an age.
 *   age: seconds at `since`, null when there has been nothing
 *   limit: past it the thing is old
 *   isKnownOld: old for a reason of its own
 */
export function ageNow({ age, since, limit, source, isKnownOld }, now, state) {
  if (age === null) return { seconds: null, isOld: false };
  const seconds = age + elapsed(since, now);
  const isOld = seconds > limit || isKnownOld || isOldBecauseOf(state, source);
  return { seconds, isOld };
}

const USUAL = {
  limit: Infinity, source: "port", isKnownOld: false, missing: UNKNOWN,
  words: (text, isOld) => (isOld ? `old: ${text}` : text),
};

export function createAges() {
  const shown = new Map();
  let frame = null; // the moment of which the frame that is shown now tells

  function put(target, entry, now, state) {
    const { seconds, isOld } = ageNow(entry, now, state);
    setText(target, seconds === null ? entry.missing : entry.words(duration(seconds), isOld));
    entry.owner.classList.toggle("is-old", isOld);
    entry.owner.classList.toggle("is-missing", seconds === null);
  }

  return {
    setFrame(at) {
      frame = at;
    },
    /**
     * Shows an age, in `words` of the text and whether it is old, or `missing`; `owner`, the row
     * or card that shows the thing, is marked when it is old.
     */
    show(target, age, options = {}) {
      shown.set(target, { ...USUAL, owner: target, ...options, age: age ?? null, since: frame });
    },
    tick(now, state) {
      for (const [target, entry] of shown) {
        if (target.isConnected) put(target, entry, now, state);
        else shown.delete(target);
      }
    },
  };
}
