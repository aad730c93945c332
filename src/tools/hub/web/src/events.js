// The last events, newest first.

import { byId, setHidden, setText } from "./dom.js";
import { dateTime } from "./format.js";
import { createRows, setCells } from "./rows.js";

const COLUMNS = [["time", ""], ["level", "Level"], ["name", "Told by"], ["words", "Event"]];
const SYMBOLS = { warning: "\u25b2 warning", error: "\u2716 error" };

export function createEvents(ages) {
  const [card, age, none, body] = ["events", "events-age", "events-none", "events-rows"].map(byId);
  const show = createRows(body, ({ number }) => number, COLUMNS, (each, cells, row) => {
    setCells(cells, [dateTime(each.time), SYMBOLS[each.level] ?? each.level, each.name, each.text]);
    row.dataset.level = each.level;
  });

  return {
    panel({ events }) {
      ages.show(age, 0, { owner: card, limit: 5, source: "hub" });
      setHidden(none, events.length > 0);
      setText(none, "No event since the hub has started.");
      show(events);
    },
  };
}
