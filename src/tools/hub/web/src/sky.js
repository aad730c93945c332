// The sky plot, use and dilutions of precision, from the receiver's own NMEA sentences.

import { byId, createOnChange, element, setText, svgElement } from "./dom.js";
import { fixed } from "./format.js";
import { fromNmea, satelliteName } from "./satellites.js";

const LIMIT = 5;
const RADIUS = 132; // of the horizon, in the drawing's units
const MARK = 11;
const MODES = { 1: "no fix", 2: "two-dimensional fix", 3: "three-dimensional fix" };

/** Where a direction stands in the drawing, north up: [x, y] from its middle. */
export function placeOf(elevation, azimuth) {
  const away = (RADIUS * (90 - elevation)) / 90;
  const angle = (azimuth * Math.PI) / 180;
  return [away * Math.sin(angle), -away * Math.cos(angle)];
}

const useOf = (satellite) =>
  satellite.isUsed ? "used" : satellite.cn0 === null ? "untracked" : "tracked";
const USE_WORDS = { used: "used", tracked: "tracked, not used", untracked: "not tracked" };

function grid() {
  const parts = [0, 30, 60].map((elevation) => {
    const r = (RADIUS * (90 - elevation)) / 90;
    return svgElement("circle", { r, class: "sky-ring" });
  });
  for (const [x, y] of [[RADIUS, 0], [0, RADIUS]]) {
    parts.push(svgElement("line", { x1: -x, y1: -y, x2: x, y2: y, class: "sky-ring" }));
  }
  for (const elevation of [30, 60]) {
    const y = (-RADIUS * (90 - elevation)) / 90 + 10;
    parts.push(svgElement("text", { x: 3, y, class: "sky-elevation" }, `${elevation}°`));
  }
  for (const [text, x, y] of [["N", 0, -1], ["E", 1, 0], ["S", 0, 1], ["W", -1, 0]]) {
    const at = { x: x * (RADIUS + 12), y: y * (RADIUS + 12), class: "sky-direction" };
    parts.push(svgElement("text", at, text));
  }
  return parts;
}

function mark(satellite) {
  const { system, prn } = fromNmea(satellite.prn);
  const [x, y] = placeOf(satellite.elevation, satellite.azimuth);
  const name = satelliteName(system, prn);
  const box = { x: -MARK, y: -MARK, width: 2 * MARK, height: 2 * MARK, rx: 3 };
  const outline = {
    SBAS: () => svgElement("rect", box),
    GLONASS: () => svgElement("rect", { ...box, transform: "rotate(45)" }),
  }[system]?.() ?? svgElement("circle", { r: MARK });
  const title = svgElement("title", {}, `${name}: ${USE_WORDS[useOf(satellite)]}`);
  const label = svgElement("text", { class: system === "SBAS" ? "sky-small" : null },
    String(Number(name.slice(1))));
  const shape = { class: `sky-satellite is-${useOf(satellite)}`, transform: `translate(${x} ${y})` };
  return svgElement("g", shape, title, outline, label);
}

function row(satellite) {
  const { system, prn } = fromNmea(satellite.prn);
  const texts = [
    satelliteName(system, prn), fixed(satellite.elevation, 0, "°").replace(" °", "°"),
    fixed(satellite.azimuth, 0, "°").replace(" °", "°"), fixed(satellite.cn0, 0),
    USE_WORDS[useOf(satellite)],
  ];
  return element("tr", {}, ...texts.map((text) => element("td", {}, text)));
}

export function createSky(ages) {
  const card = byId("sky");
  const [marks, rings, rows, age, summary, pdop, hdop, vdop] =
    ["sky-marks", "sky-rings", "sky-rows", "sky-age", "sky-summary", "pdop", "hdop", "vdop"].map(byId);
  const onChange = createOnChange();
  rings.append(...grid());

  function showSatellites(satellites) {
    const placed = satellites.filter((each) => each.elevation !== null && each.azimuth !== null);
    // Used ones last, so that they lie above the others.
    placed.sort((a, b) => a.isUsed - b.isUsed);
    marks.replaceChildren(...placed.map(mark));
    rows.replaceChildren(...satellites.map(row));
  }

  return {
    live({ sky }) {
      ages.show(age, sky?.age, { owner: card, limit: LIMIT, missing: "none yet" });
      if (!sky) return;
      const used = sky.satellites.filter((each) => each.isUsed).length;
      setText(summary, `${sky.satellites.length} in view, ${used} used: ${MODES[sky.mode] ?? "fix not told"}`);
      setText(pdop, fixed(sky.pdop, 1));
      setText(hdop, fixed(sky.hdop, 1));
      setText(vdop, fixed(sky.vdop, 1));
      onChange(sky.satellites, () => showSatellites(sky.satellites));
    },
  };
}
