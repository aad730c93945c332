// The time series: accuracy, satellites used, differential age and C/N0.

import uPlot from "uplot";

import { byId, element, setText } from "./dom.js";
import { accuracy, fixed, time, UNKNOWN } from "./format.js";
import { colour, font, onColourScheme } from "./palette.js";
import { extremes } from "./series.js";

const HEIGHT = 170;

const CHARTS = [
  {
    title: "Accuracy", unit: "m, one sigma", isLogarithmic: true, words: accuracy,
    lines: [["sigmaHorizontal", "Horizontal", []], ["sigmaUp", "Vertical", [6, 4]]],
  },
  {
    title: "Satellites used", unit: "", words: (value) => fixed(value, 0), isStepped: true,
    lines: [["satellites", "Satellites", []]],
  },
  {
    title: "Differential age", unit: "s", words: (value) => fixed(value, 1, "s"),
    lines: [["differentialAge", "Age", []]],
  },
  {
    title: "C/N0", unit: "dB-Hz, mean of all signals",
    words: (value) => fixed(value, 1, "dB-Hz"), lines: [["cn0", "C/N0", []]],
  },
];

// Logarithmic axes carry the powers of ten alone: what lies between would run together.
const isPowerOfTen = (value) => Math.abs(Math.log10(value) - Math.round(Math.log10(value))) < 1e-6;

function valueAxis({ isLogarithmic }) {
  return {
    stroke: () => colour("--muted"),
    grid: {
      stroke: () => colour("--grid"), width: 1,
      ...(isLogarithmic && { filter: (_, splits) => splits.map((each) => (isPowerOfTen(each) ? each : null)) }),
    },
    ticks: { show: false },
    size: 48,
    font: font(0.75),
    ...(isLogarithmic && {
      values: (_, splits) => splits.map((value) => (isPowerOfTen(value) ? String(Number(value.toPrecision(1))) : "")),
    }),
  };
}

function timeAxis() {
  return {
    stroke: () => colour("--muted"),
    grid: { stroke: () => colour("--grid"), width: 1 },
    ticks: { show: false },
    size: 26,
    space: 64,
    font: font(0.75),
    values: (_, splits, __, ___, step) =>
      splits.map((each) => (step < 60 ? time(each) : time(each).slice(0, 5))),
  };
}

function valueRange({ isLogarithmic }) {
  if (isLogarithmic) {
    return (_, low, high) =>
      low > 0 ? [10 ** Math.floor(Math.log10(low)), 10 ** Math.ceil(Math.log10(high * 1.001))] : [0.01, 1];
  }
  return (_, low, high) => (low === null || low === undefined ? [0, 1] : uPlot.rangeNum(low, high, 0.15, true));
}

function optionsOf(chart, range) {
  return {
    width: 300,
    height: HEIGHT,
    tzDate: (seconds) => uPlot.tzDate(new Date(seconds * 1000), "Etc/UTC"),
    legend: { show: true },
    cursor: { sync: { key: "series" }, drag: { x: false, y: false }, points: { size: 6 } },
    scales: {
      x: { time: true, range },
      y: { range: valueRange(chart), distr: chart.isLogarithmic ? 3 : 1 },
    },
    axes: [timeAxis(), valueAxis(chart)],
    series: [
      { label: "UTC", value: (_, value) => (value === null ? UNKNOWN : time(value)) },
      ...chart.lines.map(([, label, dash], i) => ({
        label,
        stroke: () => colour(`--line-${i + 1}`),
        width: 1.5,
        dash,
        points: { show: false },
        ...(chart.isStepped && { paths: uPlot.paths.stepped({ align: 1 }) }),
        value: (_, value) => (value === null ? UNKNOWN : chart.words(value)),
      })),
    ],
  };
}

function createChart(chart, range) {
  const summary = element("p", { class: "chart-summary" });
  const room = element("div", { class: "chart-room" });
  const title = element("h3", {}, chart.title);
  if (chart.unit) title.append(element("span", { class: "unit" }, ` ${chart.unit}`));
  byId("charts").append(element("div", { class: "chart" }, title, room, summary));
  const empty = [[], ...chart.lines.map(() => [])];
  const plot = new uPlot(optionsOf(chart, range), empty, room);
  new ResizeObserver(() => {
    plot.setSize({ width: Math.max(120, room.clientWidth), height: HEIGHT });
  }).observe(room);
  onColourScheme(() => plot.redraw(false, true));

  return (columns) => {
    const lines = chart.lines.map(([name]) =>
      columns[name].map((value) => (chart.isLogarithmic && !(value > 0) ? null : value)));
    plot.setData([columns.time, ...lines]);
    const parts = chart.lines.map(([, label], i) => {
      const { last, lowest, highest } = extremes(lines[i]);
      if (last === null) return `${label}: nothing in this time`;
      return `${label}: ${chart.words(last)}, from ${chart.words(lowest)} to ${chart.words(highest)}`;
    });
    setText(summary, parts.join("; "));
  };
}

/** `range` gives the first and the last moment shown, seconds since the Unix epoch. */
export function createCharts(range) {
  const charts = CHARTS.map((chart) => createChart(chart, range));
  return { show: (columns) => charts.forEach((show) => show(columns)) };
}
