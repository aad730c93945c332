// The position: quality, coordinates, accuracy, motion; further numbers of the solution on demand.

import { byId, setText } from "./dom.js";
import * as format from "./format.js";
import { SOLUTION_LIMIT } from "./health.js";

const BASE_LIMIT = 60; // s; reference stations tell their place every 10 to 30 s

const metres = (value) => format.fixed(value, 3, "m");
const perSecond = (value) => format.fixed(value, 2, "m/s");
const usedBySystem = ([gps, glonass, other]) =>
  `GPS ${gps}, GLONASS ${glonass}` + (other ? `, others ${other}` : "");

// What stands in the elements with data-field, of a solution.
const FIELDS = {
  latitude: (s) => format.latitude(s.latitude),
  longitude: (s) => format.longitude(s.longitude),
  height: (s) => metres(s.height),
  heightAboveGeoid: (s) => metres(s.heightAboveGeoid),
  sigmaHorizontal: (s) => format.accuracy(s.sigmaHorizontal),
  sigmaUp: (s) => format.accuracy(s.sigmaUp),
  speed: (s) => perSecond(s.speed),
  course: (s) => format.fixed(s.course, 1, "°").replace(" °", "°"),
  satellitesUsed: (s) => format.count(s.satellitesUsed),
  satellites: (s) => (s.satellites ? usedBySystem(s.satellites) : ""),
  differentialAge: (s) => format.fixed(s.differentialAge, 1, "s"),
  utc: (s) => format.dateTime(s.utc, 2),
  x: (s) => metres(s.x),
  y: (s) => metres(s.y),
  z: (s) => metres(s.z),
  sigmaEast: (s) => format.accuracy(s.sigmaEast),
  sigmaNorth: (s) => format.accuracy(s.sigmaNorth),
  velocityEast: (s) => perSecond(s.velocityEast),
  velocityNorth: (s) => perSecond(s.velocityNorth),
  velocityUp: (s) => perSecond(s.velocityUp),
  velocityLatency: (s) => format.fixed(s.velocityLatency, 3, "s"),
  gpsTime: (s) => `${s.week} / ${format.fixed(s.seconds, 2, "s")}`,
  solutionClass: (s) => format.fixed(s.solutionClass, 0),
  fixIndicator: (s) => format.fixed(s.fixIndicator, 0),
};

function offerCopy(button) {
  // Browsers offer the clipboard to pages of the same machine or over TLS only.
  if (!navigator.clipboard) return;
  button.hidden = false;
  button.addEventListener("click", async () => {
    await navigator.clipboard.writeText(button.value);
    setText(button, "Copied");
    setTimeout(() => setText(button, "Copy"), 1500);
  });
}

export function createPosition(ages) {
  const card = byId("position");
  const fields = [...card.querySelectorAll("[data-field]")];
  const [quality, fix, meter, age, copy] =
    ["quality", "fix", "quality-meter", "position-age", "copy-position"].map(byId);
  const [baseRow, basePlace, baseAge] = ["base-row", "base-place", "base-age"].map(byId);
  offerCopy(copy);

  function showSolution(solution) {
    setText(quality, format.capitalised(solution.qualityWords));
    setText(fix, solution.hasPosition ? solution.fix : "");
    meter.dataset.quality = solution.hasPosition ? solution.quality : 0;
    copy.value = `${solution.latitude}, ${solution.longitude}`;
    copy.disabled = !solution.hasPosition;
    for (const target of fields) setText(target, FIELDS[target.dataset.field](solution));
  }

  function showBase(base) {
    setText(basePlace, base.distance === null ? "told" : `${format.distance(base.distance)} away`);
    basePlace.title = `${format.latitude(base.latitude)}, ${format.longitude(base.longitude)}, ` +
      metres(base.height);
    ages.show(baseAge, base.age, {
      owner: baseRow, limit: BASE_LIMIT,
      words: (text, isOld) => `told ${text} ago${isOld ? ", old" : ""}`,
    });
  }

  return {
    live({ solution, base }) {
      ages.show(age, solution?.age, { owner: card, limit: SOLUTION_LIMIT, missing: "none yet" });
      if (solution) showSolution(solution);
      if (base) showBase(base);
    },
  };
}
