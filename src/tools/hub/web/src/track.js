// The plot of the track or of the scatter, and its numbers.

import { byId, setHidden, setText } from "./dom.js";
import { accuracy, count, distance } from "./format.js";
import { onColourScheme } from "./palette.js";
import { scatter } from "./statistics.js";
import { drawNothing, drawScatter, drawTrack } from "./track-drawing.js";
import { lengthOf, pointsOf } from "./track-points.js";

const MOVED = 10; // metres of CEP95 past which the antenna has hardly stood still

const length = (metres) => (metres < 1 ? accuracy(metres) : distance(metres));

const signed = (metres, positive, negative) =>
  `${length(Math.abs(metres))} ${metres < 0 ? negative : positive}`;

function trackWords(points) {
  const place = `${signed(points.east.at(-1), "east", "west")}, ` +
    `${signed(points.north.at(-1), "north", "south")} of the first point`;
  return `${place}; ${length(lengthOf(points))} along the track`;
}

function scatterWords(points, { cep50, cep95, sigmaEast, sigmaNorth }) {
  const words = `${count(points.east.length)} points about their mean: CEP50 ${accuracy(cep50)}, ` +
    `CEP95 ${accuracy(cep95)}; standard deviation ${accuracy(sigmaEast)} east, ` +
    `${accuracy(sigmaNorth)} north`;
  return cep95 > MOVED ? `${words}. The antenna has moved: this is no accuracy` : words;
}

export function createTrack() {
  const [canvas, empty, summary, card, older] =
    ["track-canvas", "track-empty", "track-summary", "track", "track-older"].map(byId);
  let shown = { samples: null, step: 1, latest: null };

  function draw() {
    const isScatter = card.querySelector("input[value=scatter]").checked;
    setHidden(older, isScatter);
    const { samples, step, latest } = shown;
    const points = samples && pointsOf(samples, step, isScatter);
    setHidden(empty, Boolean(points));
    if (!points) {
      drawNothing(canvas);
      setText(summary, "");
    } else if (isScatter) {
      const numbers = scatter(points.east, points.north);
      drawScatter(canvas, points, numbers);
      setText(summary, scatterWords(points, numbers));
    } else {
      drawTrack(canvas, points, latest);
      setText(summary, trackWords(points));
    }
    canvas.setAttribute("aria-label", summary.textContent);
  }

  new ResizeObserver(draw).observe(canvas);
  onColourScheme(draw);
  for (const input of card.querySelectorAll("input[name=track-mode]")) {
    input.addEventListener("change", draw);
  }

  return {
    show(samples, step, latest) {
      shown = { samples, step, latest };
      draw();
    },
  };
}

