import assert from "node:assert/strict";
import { test } from "node:test";

import { isOldBecauseOf, stateOf, toneOf, wordsOf } from "../src/health.js";

const LIVE = { state: "live", words: "Live" };
const facts = (changes) => ({ quiet: 0.2, health: LIVE, solutionAge: 0.1, ...changes });

test("the hub's word counts while it speaks", () => {
  for (const state of ["live", "no position", "silent", "gone"]) {
    assert.equal(stateOf(facts({ health: { state, words: "..." } })), state);
  }
});

test("a hub that says nothing for more than two seconds is not connected", () => {
  assert.equal(stateOf(facts({ quiet: 2 })), "live");
  assert.equal(stateOf(facts({ quiet: 2.1 })), "disconnected");
});

test("before the first frame the page is connecting, and then without a connection", () => {
  assert.equal(stateOf({ quiet: 1, health: null, solutionAge: null }), "connecting");
  assert.equal(stateOf({ quiet: 3, health: null, solutionAge: null }), "disconnected");
});

test("nothing is live with a solution that has become old", () => {
  assert.equal(stateOf(facts({ solutionAge: 2 })), "live");
  assert.equal(stateOf(facts({ solutionAge: 2.1 })), "old");
});

test("the headline tells for how long the hub has been away", () => {
  const words = wordsOf("disconnected", facts({ quiet: 12.4 }));
  assert.equal(words.headline, "No connection to the hub for 12 s");
});

test("the headline of an old solution tells its age", () => {
  assert.equal(wordsOf("old", facts({ solutionAge: 8.9 })).headline, "The last solution is 8 s old");
});

test("other states are told in the hub's words", () => {
  const health = { state: "silent", words: "The receiver is silent: no byte for 14 s" };
  assert.equal(wordsOf("silent", facts({ health })).headline, health.words);
});

test("a state that the page does not know is a bad one", () => {
  assert.equal(toneOf("live"), "good");
  assert.equal(toneOf("on fire"), "bad");
});

test("what a source has told is old when the source is away", () => {
  const table = { live: "", old: "", silent: "port", gone: "port daemon", disconnected: "port daemon hub" };
  for (const [state, old] of Object.entries(table)) {
    for (const source of ["port", "daemon", "hub"]) {
      assert.equal(isOldBecauseOf(state, source), old.split(" ").includes(source), `${state} ${source}`);
    }
  }
});
