// What comes from the ports: logs with their rates, checksums, bytes.

import { byId, setHidden } from "./dom.js";
import { count, fixed } from "./format.js";
import { createPeriods } from "./periods.js";
import { createRows, setCells } from "./rows.js";

const LIMIT = 5;

const LOG_COLUMNS = [["log", "Log"], ["number", "Number"], ["name", "Port handler"],
                     ["number", "Count"], ["number", "Rate"], ["age number", "Last"]];
const PORT_COLUMNS = [["name", "Port handler"], ["number", "Good"], ["number", "Rejected"],
                      ["number", "Share"], ["age number", "Last"]];
const ACTIVITY_COLUMNS = [["name", "Port handler"], ["number", "Chunks of bytes"],
                          ["number", "Sentences"], ["age number", "Last"]];

/** Rejected sentences in per cent of all; nothing without any. */
export function rejectedShare({ good, rejected }) {
  return good + rejected > 0 ? (100 * rejected) / (good + rejected) : null;
}

export function createRates(ages) {
  const [logRows, portRows, activityRows, none] =
    ["log-rows", "checksum-rows", "activity-rows", "rates-none"].map(byId);
  const limitOf = createPeriods();
  const marked = (limit, each, row, cell) => ages.show(cell, each.age, { owner: row, limit });

  let uptime = 0;

  const showLogs = createRows(logRows, ({ name, id }) => `${name} ${id}`, LOG_COLUMNS, (each, cells, row) => {
    // Nobody knows when a log that has come once is to come again.
    const guess = each.count > 1 ? uptime / each.count : Infinity;
    setCells(cells, [each.log, String(each.id), each.name, count(each.count), fixed(each.rate, 1, "/s")]);
    marked(limitOf(`${each.name} ${each.id}`, each.age, guess), each, row, cells[5]);
  });
  const showChecksums = createRows(portRows, ({ name }) => name, PORT_COLUMNS, (each, cells, row) => {
    const share = rejectedShare(each);
    setCells(cells, [each.name, count(each.good), count(each.rejected), fixed(share, 2, "%")]);
    marked(share === null ? Infinity : LIMIT, each, row, cells[4]);
  });
  const showActivity = createRows(activityRows, ({ name }) => name, ACTIVITY_COLUMNS, (each, cells, row) => {
    setCells(cells, [each.name, count(each.received), count(each.sentences)]);
    marked(LIMIT, each, row, cells[3]);
  });

  return {
    panel({ logs, checksums, activity, uptime: seconds }) {
      uptime = seconds;
      setHidden(none, logs.length > 0);
      showLogs(logs);
      showChecksums(checksums);
      showActivity(activity);
    },
  };
}
