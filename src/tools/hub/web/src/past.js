// The course of the solution over the chosen time: feeds the track and the time series.

import { createCharts } from "./charts.js";
import { byId, setText } from "./dom.js";
import { SOLUTION_LIMIT } from "./health.js";
import { createSamples, thinned, withGaps } from "./samples.js";
import { createTrack } from "./track.js";

const POINTS = 1800; // of a whole plot
const REDRAW = 1; // s
const RETRY = 5; // s, when the history could not be read
const WHY_OFF = "The hub keeps no history: what is shown began with this page.";
const WHY_FAILED = "The history could not be read: what is shown began with this page.";

export function createPast(ages) {
  const samples = createSamples();
  const track = createTrack();
  const note = byId("history-note");
  const shownIn = ["track", "series"].map((name) => [byId(name), byId(`${name}-age`)]);
  const choices = [...document.querySelectorAll("input[name=window]")];
  // The hub's clock, not the page's: they may differ.
  let now = Date.now() / 1000;
  let drawnAt = -Infinity;
  let nextLoad = -Infinity;
  let latest = null;

  const seconds = () => Number(choices.find((each) => each.checked).value);
  const stepOf = () => Math.max(1, seconds() / POINTS);
  const charts = createCharts(() => [now - seconds(), now]);

  function draw() {
    drawnAt = now;
    const step = stepOf();
    const shown = thinned(samples.since(now - seconds()), step);
    track.show(shown, step, latest);
    charts.show(withGaps(shown, 2.5 * Math.max(step, 2)));
  }

  async function read() {
    const answer = await fetch(
      `api/history/positions?from=${now - seconds()}&to=${now}&points=${POINTS}`);
    if (!answer.ok) throw new Error(answer.status === 404 ? WHY_OFF : WHY_FAILED);
    return answer.json();
  }

  async function load() {
    const wanted = seconds();
    nextLoad = Infinity;
    let why = "";
    try {
      const history = await read();
      if (wanted === seconds()) samples.setPast(history);
    } catch (error) {
      why = error.message === WHY_OFF ? WHY_OFF : WHY_FAILED;
    }
    if (why === WHY_FAILED) nextLoad = now + RETRY;
    setText(note, why);
    draw();
  }

  for (const each of choices) each.addEventListener("change", load);

  return {
    /** The page has missed frames: the history may have what they told. */
    missed() {
      nextLoad = -Infinity;
    },
    live(frame) {
      now = frame.now;
      samples.add(frame);
      for (const [card, age] of shownIn) {
        ages.show(age, frame.solution?.age, { owner: card, limit: SOLUTION_LIMIT, missing: "none yet" });
      }
      latest = frame.health.state === "live" ? frame.solution : null;
      if (now >= nextLoad) {
        load();
      } else if (Math.abs(now - drawnAt) >= Math.max(REDRAW, stepOf() / 2)) {
        draw();
      }
    },
  };
}
