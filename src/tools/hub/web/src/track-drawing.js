// Draws the track, or the scatter of its points, on a canvas.

import { colour } from "./palette.js";
import { accuracy } from "./format.js";
import { drawGrid, drawScale, fit, label, mapping, prepare } from "./plane.js";

const FADES = 6;
// Colour and dash both tell the quality.
const LOOKS = {
  3: { name: "--quality-3", dash: [] },
  2: { name: "--quality-2", dash: [7, 3] },
  1: { name: "--quality-1", dash: [2, 3] },
};
const lookOf = (quality) => LOOKS[quality] ?? LOOKS[1];

function drawPieces(context, points, at) {
  const [oldest, newest] = [points.time[0], points.time.at(-1)];
  const fade = (time) =>
    newest > oldest ? Math.floor(((FADES - 0.01) * (time - oldest)) / (newest - oldest)) : FADES - 1;
  let open = null;
  for (let i = 0; i < points.time.length; i++) {
    const key = `${points.quality[i]} ${fade(points.time[i])}`;
    if (points.isStart[i] || key !== open) {
      if (open !== null) context.stroke();
      const look = lookOf(points.quality[i]);
      context.strokeStyle = colour(look.name);
      context.globalAlpha = 0.3 + (0.7 * (fade(points.time[i]) + 1)) / FADES;
      context.setLineDash(look.dash);
      context.beginPath();
      const from = points.isStart[i] ? i : i - 1;
      context.moveTo(...at(points.east[from], points.north[from]));
      open = key;
    }
    context.lineTo(...at(points.east[i], points.north[i]));
  }
  context.stroke();
  context.globalAlpha = 1;
  context.setLineDash([]);
}

function drawArrow(context, [x, y], course) {
  const angle = (course * Math.PI) / 180;
  const tip = (turn, length) =>
    [x + length * Math.sin(angle + turn), y - length * Math.cos(angle + turn)];
  context.beginPath();
  context.moveTo(...tip(0, 18));
  context.lineTo(...tip(0.5, 10));
  context.lineTo(...tip(-0.5, 10));
  context.fill();
}

function drawPresent(context, at, points, latest, view) {
  const place = at(points.east.at(-1), points.north.at(-1));
  const reach = (latest?.sigmaHorizontal ?? 0) / view.metres;
  context.fillStyle = colour("--text");
  context.strokeStyle = colour("--text");
  context.lineWidth = 1;
  if (reach > 7) {
    context.beginPath();
    context.arc(...place, reach, 0, 2 * Math.PI);
    context.stroke();
  }
  context.lineWidth = 2;
  context.beginPath();
  context.arc(...place, 5, 0, 2 * Math.PI);
  context.fill();
  if (latest?.course !== null && latest?.course !== undefined) drawArrow(context, place, latest.course);
}

/** `latest` is the solution that stands at the track's end, null when it is old. */
export function drawTrack(canvas, points, latest) {
  const drawing = prepare(canvas);
  const { context, width, height } = drawing;
  const view = fit(points.east, points.north, width, height, latest?.sigmaHorizontal ?? 0);
  const at = mapping(view, width, height);
  drawGrid(drawing, view);
  context.lineWidth = 2;
  context.lineJoin = "round";
  drawPieces(context, points, at);
  drawPresent(context, at, points, latest, view);
  drawScale(drawing, view);
}

function drawCircle(context, at, radius, name, dash, metres) {
  const [x, y] = at(0, 0);
  context.strokeStyle = colour("--text");
  context.fillStyle = colour("--text");
  context.lineWidth = 1.5;
  context.setLineDash(dash);
  context.beginPath();
  context.arc(x, y, radius / metres, 0, 2 * Math.PI);
  context.stroke();
  context.setLineDash([]);
  context.textAlign = "center";
  label(context, `${name} ${accuracy(radius)}`, x, y + radius / metres + 14);
}

/** Points about their mean with the circles that hold half and 95 % of them. */
export function drawScatter(canvas, points, { cep50, cep95 }) {
  const drawing = prepare(canvas);
  const { context, width, height } = drawing;
  const view = fit([...points.east, -cep95, cep95], [...points.north, -cep95, cep95], width, height);
  const at = mapping(view, width, height);
  drawGrid(drawing, view);
  // The more points, the fainter each: where they lie close the plot is darker.
  context.globalAlpha = Math.max(0.25, Math.min(0.9, 60 / points.east.length));
  for (let i = 0; i < points.east.length; i++) {
    context.fillStyle = colour(lookOf(points.quality[i]).name);
    context.beginPath();
    context.arc(...at(points.east[i], points.north[i]), 2, 0, 2 * Math.PI);
    context.fill();
  }
  context.globalAlpha = 1;
  drawCircle(context, at, cep50, "CEP50", [], view.metres);
  drawCircle(context, at, cep95, "CEP95", [6, 4], view.metres);
  drawScale(drawing, view);
}

export function drawNothing(canvas) {
  prepare(canvas);
}
