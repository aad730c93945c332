// The diagnostics that are raised, with since when.

import { byId, setHidden, setText } from "./dom.js";
import { capitalised, dateTime, duration, fixed } from "./format.js";
import { createRows, setCells } from "./rows.js";

const COLUMNS = [["words", "Diagnostic"], ["code", "Code"], ["name", "Told by"],
                 ["number", "Value"], ["time", "Since (UTC)"], ["age number", "For"]];

const keyOf = ({ name, code, sub }) => `${name} ${code} ${sub}`;

export function createDiagnostics(ages) {
  const [card, age, none, body, table, badge] =
    ["diagnostics", "diagnostics-age", "diagnostics-none", "diagnostics-rows",
     "diagnostics-table", "diagnostics-badge"].map(byId);
  let now = 0;
  const show = createRows(body, keyOf, COLUMNS, (each, cells) => {
    setCells(cells, [
      capitalised(each.words || "not documented"), `${each.code}, ${each.sub}`, each.name,
      fixed(each.value, Number.isInteger(each.value) ? 0 : 2), dateTime(each.since),
      duration(now - each.since),
    ]);
  });

  return {
    panel(frame) {
      now = frame.now;
      const list = [...frame.diagnostics].sort((a, b) => b.since - a.since);
      ages.show(age, 0, { owner: card, limit: 5, source: "daemon" });
      setHidden(none, list.length > 0);
      setText(none, frame.processes.length > 0
        ? "\u2713 No diagnostic is raised." : "No program has told of any yet.");
      setHidden(table, list.length === 0);
      setHidden(badge, list.length === 0);
      setText(badge, list.length === 1 ? "1 diagnostic raised" : `${list.length} diagnostics raised`);
      show(list);
    },
  };
}
