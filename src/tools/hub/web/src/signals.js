// The carrier to noise densities of all systems, as bars.

import { byId, createOnChange, element, setText } from "./dom.js";
import { count, fixed } from "./format.js";
import { bySystem, fromNmea, meanDensity, satelliteName } from "./satellites.js";

const LIMIT = 5;
const FULL = 60; // dB-Hz, the height of the plot

function bar(value, signal) {
  const fill = element("span", { class: `bar-fill is-signal-${signal}` });
  fill.style.height = `${Math.max(0, Math.min(1, (value ?? 0) / FULL)) * 100}%`;
  return element("span", { class: "bar" },
    element("span", { class: "bar-value" }, fixed(value, 0)), fill);
}

function satellite(channel, isUsed) {
  const name = satelliteName(channel.system, channel.prn);
  const values = channel.cn0.map((value) => fixed(value, 0)).join(" and ");
  const words = `${name}: ${values} dB-Hz${isUsed ? ", used" : ""}`;
  return element("li", { class: isUsed ? "bar-group is-used" : "bar-group", title: words },
    element("span", { class: "bars", "aria-hidden": "true" },
      ...channel.cn0.map((value, i) => bar(value, Math.min(i, 2) + 1))),
    element("span", { class: "bar-name", "aria-hidden": "true" }, name),
    element("span", { class: "visually-hidden" }, words));
}

function group({ system, channels }, used) {
  const title = `${system} (${channels.length})`;
  return element("div", { class: "bar-system" },
    element("h3", {}, title),
    element("ul", { class: "bar-list" },
      ...channels.map((each) => satellite(each, used.has(satelliteName(system, each.prn))))));
}

export function createSignals(ages) {
  const [card, age, plot, summary] =
    ["signals", "signals-age", "signals-plot", "signals-summary"].map(byId);
  const onChange = createOnChange();

  function show(channels, used) {
    plot.replaceChildren(...bySystem(channels).map((each) => group(each, used)));
    const mean = meanDensity(channels);
    setText(summary, `${count(channels.length)} satellites tracked` +
      (mean === null ? "" : `, ${fixed(mean, 1, "dB-Hz")} on average`));
  }

  return {
    live({ signals, sky }) {
      ages.show(age, signals?.age, { owner: card, limit: LIMIT, missing: "none yet" });
      if (!signals) return;
      const names = (sky?.satellites ?? [])
        .filter((each) => each.isUsed)
        .map((each) => fromNmea(each.prn))
        .map(({ system, prn }) => satelliteName(system, prn));
      onChange([signals.channels, names], () => show(signals.channels, new Set(names)));
    },
  };
}
