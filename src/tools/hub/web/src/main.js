// Brings the frames of the hub to the parts of the page, and lets their ages go on.

import { createAges } from "./ages.js";
import { createBanner } from "./banner.js";
import { connect } from "./connection.js";
import { createDelay } from "./delay.js";
import { createDiagnostics } from "./diagnostics.js";
import { createEvents } from "./events.js";
import { stateOf } from "./health.js";
import { before, elapsed, moment } from "./moment.js";
import { createPast } from "./past.js";
import { createPosition } from "./position.js";
import { createPrograms } from "./programs.js";
import { createRates } from "./rates.js";
import { createReceiver } from "./receiver.js";
import { createSignals } from "./signals.js";
import { createSky } from "./sky.js";
import { createStatuses } from "./statuses.js";

const TICK = 200; // ms

const ages = createAges();
const banner = createBanner();
const past = createPast(ages);
const parts = [
  createPosition(ages), createSky(ages), createSignals(ages), past, createReceiver(ages),
  createDiagnostics(ages), createEvents(ages), createRates(ages), createPrograms(ages),
  createStatuses(ages),
];
const delayOf = createDelay();

let heard = moment();
let live = null;
let liveAt = null; // the moment of which the last live frame tells
let state = "connecting";

function facts(now) {
  const age = live?.solution?.age ?? null;
  return {
    quiet: elapsed(heard, now),
    health: live?.health ?? null,
    solutionAge: age === null ? null : age + elapsed(liveAt, now),
  };
}

function tick() {
  const now = moment();
  const known = facts(now);
  state = stateOf(known);
  banner.tick(state, known, live?.solution ?? null);
  ages.tick(now, state);
}

connect((kind, frame) => {
  const now = moment();
  if (state === "disconnected") past.missed();
  heard = now;
  const at = before(now, delayOf(frame.now, now.wall));
  ages.setFrame(at);
  if (kind === "live") {
    live = frame;
    liveAt = at;
  }
  for (const part of parts) part[kind]?.(frame);
  tick();
});

setInterval(tick, TICK);
document.addEventListener("visibilitychange", tick);
tick();
