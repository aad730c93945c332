// A plane in metres on a canvas: equal axes, a grid and a scale.

import { colour, font } from "./palette.js";
import { lengthWords, multiples, roundedDown } from "./scale.js";

const MARGIN = 34; // pixels for whatever stands at the border
const SMALLEST = 0.05; // metres across; below it there is only rounding

/** The middle and the metres a pixel that show all points, in a room of so many pixels. */
export function fit(east, north, width, height, reach = 0) {
  let [left, right, low, high] = [Infinity, -Infinity, Infinity, -Infinity];
  for (let i = 0; i < east.length; i++) {
    left = Math.min(left, east[i]);
    right = Math.max(right, east[i]);
    low = Math.min(low, north[i]);
    high = Math.max(high, north[i]);
  }
  if (left > right) [left, right, low, high] = [0, 0, 0, 0];
  const across = Math.max(right - left + 2 * reach, SMALLEST) / Math.max(1, width - 2 * MARGIN);
  const along = Math.max(high - low + 2 * reach, SMALLEST) / Math.max(1, height - 2 * MARGIN);
  return { east: (left + right) / 2, north: (low + high) / 2, metres: Math.max(across, along) };
}

/** Prepares a canvas at the screen's own resolution: its context in CSS pixels, and its size. */
export function prepare(canvas) {
  const ratio = window.devicePixelRatio || 1;
  const { clientWidth: width, clientHeight: height } = canvas;
  const [w, h] = [Math.round(width * ratio), Math.round(height * ratio)];
  if (canvas.width !== w || canvas.height !== h) [canvas.width, canvas.height] = [w, h];
  const context = canvas.getContext("2d");
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  context.clearRect(0, 0, width, height);
  context.font = font(0.75);
  return { context, width, height };
}

/** From metres to pixels. */
export function mapping(view, width, height) {
  return (east, north) => [
    width / 2 + (east - view.east) / view.metres,
    height / 2 - (north - view.north) / view.metres,
  ];
}

function label(context, text, x, y) {
  context.strokeStyle = colour("--card");
  context.lineWidth = 4;
  context.lineJoin = "round";
  context.strokeText(text, x, y);
  context.fillText(text, x, y);
}

/** Lines at round metres with their numbers at the left and lower border. */
export function drawGrid({ context, width, height }, view) {
  const step = roundedDown(view.metres * Math.max(110, width / 5));
  const at = mapping(view, width, height);
  const half = [(width / 2) * view.metres, (height / 2) * view.metres];
  const decimals = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
  const number = (value) => (Math.abs(value) < step / 2 ? 0 : value).toFixed(decimals).replace("-", "\u2212");
  context.lineWidth = 1;
  context.strokeStyle = colour("--grid");
  const columns = multiples(step, view.east - half[0], view.east + half[0]);
  const rows = multiples(step, view.north - half[1], view.north + half[1]);
  context.beginPath();
  for (const east of columns) {
    const x = Math.round(at(east, 0)[0]) + 0.5;
    context.moveTo(x, 0);
    context.lineTo(x, height);
  }
  for (const north of rows) {
    const y = Math.round(at(0, north)[1]) + 0.5;
    context.moveTo(0, y);
    context.lineTo(width, y);
  }
  context.stroke();
  context.fillStyle = colour("--muted");
  context.textAlign = "center";
  for (const east of columns) {
    const x = at(east, 0)[0];
    if (x > 50 && x < width - 20) label(context, number(east), x, height - 6);
  }
  context.textAlign = "left";
  for (const north of rows) {
    const y = at(0, north)[1];
    if (y > 44 && y < height - 30) label(context, number(north), 5, y + 4);
  }
}

/** A bar of round length at the upper right, and the plot's directions. */
export function drawScale({ context, width }, view) {
  const length = roundedDown(view.metres * 110);
  const pixels = length / view.metres;
  const [right, y] = [width - 14, 24];
  context.strokeStyle = colour("--text");
  context.fillStyle = colour("--text");
  context.lineWidth = 2;
  context.beginPath();
  context.moveTo(right - pixels, y - 5);
  context.lineTo(right - pixels, y);
  context.lineTo(right, y);
  context.lineTo(right, y - 5);
  context.stroke();
  context.textAlign = "center";
  label(context, lengthWords(length), right - pixels / 2, y - 8);
  context.textAlign = "left";
  label(context, "North (m) \u2191   East (m) \u2192", 8, 18);
}

export { label };
