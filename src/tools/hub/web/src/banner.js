// The head of the page: state, age of the last solution; the tab's title and icon say the same.

import { byId, setHidden, setText } from "./dom.js";
import { accuracy, capitalised, duration } from "./format.js";
import { toneOf, wordsOf } from "./health.js";

const SYMBOLS = { good: "\u2713", warning: "!", bad: "\u2717", neutral: "\u2026" };
const ICONS = {
  good: "favicon-live.svg", warning: "favicon-warning.svg", bad: "favicon-bad.svg",
  neutral: "favicon.svg",
};

function detailOf(solution) {
  return `${capitalised(solution.qualityWords)} position, ${solution.fix}, ` +
    `±${accuracy(solution.sigmaHorizontal)} horizontal`;
}

function titleOf(state, headline, solution) {
  if (state !== "live" || !solution) return headline;
  return `${capitalised(solution.qualityWords)} ±${accuracy(solution.sigmaHorizontal)}`;
}

export function createBanner() {
  const [banner, icon, headline, detail, age, ago, announcer] =
    ["banner", "banner-icon", "headline", "banner-detail", "solution-age", "solution-ago",
     "announcer"].map(byId);
  const favicon = document.querySelector("link[rel=icon]");
  let last = null;

  // Fetched while the hub is there: the one for its absence is wanted when it is not.
  for (const path of Object.values(ICONS)) new Image().src = path;

  return {
    /** `facts` as for stateOf; solution may be null. */
    tick(state, facts, solution) {
      const tone = toneOf(state);
      const words = wordsOf(state, facts);
      setText(headline, words.headline);
      setText(detail, state === "live" && solution ? detailOf(solution) : words.detail);
      setText(age, facts.solutionAge === null ? "none yet" : duration(facts.solutionAge));
      setHidden(ago, facts.solutionAge === null);
      const title = `${SYMBOLS[tone]} ${titleOf(state, words.headline, solution)} · corvane`;
      if (document.title !== title) document.title = title;
      if (state === last) return;
      last = state;
      banner.dataset.tone = tone;
      document.body.dataset.state = state;
      icon.firstElementChild.setAttribute("href", `#icon-${tone}`);
      favicon.setAttribute("href", ICONS[tone]);
      setText(announcer, words.headline);
    },
  };
}
