// The programs that publish to the hub, the link to them, and the hub itself.

import { byId, setHidden, setText } from "./dom.js";
import { count, dateTime, duration } from "./format.js";
import { createRows, setCells } from "./rows.js";

const COLUMNS = [["name", "Program"], ["number", "Process"], ["code", "Version"],
                 ["level", "Connection"], ["time", "Since (UTC)"], ["words", "Names"]];

export function createPrograms(ages) {
  const [body, none, card, age, link, hub] =
    ["program-rows", "programs-none", "programs", "programs-age", "link-words", "hub-words"].map(byId);
  const show = createRows(body, ({ process, pid }) => `${process} ${pid}`, COLUMNS, (each, cells, row) => {
    setCells(cells, [
      each.process, String(each.pid), each.version, each.isConnected ? "\u2713 connected" : "\u2717 gone",
      dateTime(each.since), each.names.join(", "),
    ]);
    row.classList.toggle("is-gone", !each.isConnected);
  });

  return {
    panel({ processes, link: told, version, uptime }) {
      ages.show(age, 0, { owner: card, limit: 5, source: "hub" });
      setHidden(none, processes.length > 0);
      show(processes);
      setText(link, `${count(told.messages)} messages taken, ${count(told.refused)} refused as wrong, ` +
        `${count(told.dropped)} dropped by the daemon before they came`);
      setText(hub, `corvane-hub ${version}, running for ${duration(uptime)}`);
    },
  };
}
