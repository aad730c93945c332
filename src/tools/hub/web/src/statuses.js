// Every status key with its value and age, searchable.

import { byId, setHidden, setText } from "./dom.js";
import { count } from "./format.js";
import { createRows, setCells } from "./rows.js";
import { matches } from "./search.js";

const COLUMNS = [["name", "Told by"], ["key", "Key"], ["value", "Value"], ["level", "Level"],
                 ["age number", "Age"]];

/** The names whose program is gone: what they told stays, and is old. */
export function goneNames(processes) {
  const namesOf = (isConnected) =>
    processes.filter((each) => each.isConnected === isConnected).flatMap((each) => each.names);
  const there = new Set(namesOf(true));
  return new Set(namesOf(false).filter((name) => !there.has(name)));
}

/** The "/" key leads to the search from anywhere but a field; Escape empties it. */
function listenToKeys(field, onChange) {
  document.addEventListener("keydown", (event) => {
    const isTyping = event.target.closest?.("input[type=search], textarea, select");
    if (event.key !== "/" || isTyping || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    field.focus();
    field.select();
  });
  field.addEventListener("keydown", (event) => {
    if (event.key !== "Escape") return;
    field.value = "";
    onChange();
  });
  field.addEventListener("input", onChange);
}

export function createStatuses(ages) {
  const [field, found, body, none] =
    ["search", "status-found", "status-rows", "status-none"].map(byId);
  let statuses = [];
  let gone = new Set();

  const showRows = createRows(body, ({ name, key }) => `${name} ${key}`, COLUMNS, (each, cells, row) => {
    setCells(cells, [each.name, each.key, each.value, each.level]);
    // A status is told when it changes, so its age alone says nothing against it.
    ages.show(cells[4], each.age, { owner: row, source: "hub", isKnownOld: gone.has(each.name) });
  });

  function show() {
    const query = field.value.trim();
    const shown = statuses.filter((each) => matches(query, [each.name, each.key, each.value]));
    const all = count(statuses.length);
    setText(found, query ? `${count(shown.length)} of ${all} keys` : `${all} keys`);
    setHidden(none, shown.length > 0);
    setText(none, query ? `No key, value or name holds "${query}".` : "No status has been told yet.");
    showRows(shown);
  }

  listenToKeys(field, show);
  return {
    panel(frame) {
      gone = goneNames(frame.processes);
      statuses = [...frame.statuses].sort((a, b) =>
        a.name.localeCompare(b.name) || a.key.localeCompare(b.key, "en", { numeric: true }));
      show();
    },
  };
}
