// Tables whose rows stay when their values change, so that a selection or a focus in them stays.

import { element, setText } from "./dom.js";

/**
 * Shows items as rows of a table's body, in their order.
 *   keyOf: what tells an item's row from others
 *   columns: [class, heading] each, the heading for narrow screens
 *   fill: called with an item, its row's cells and the row
 */
export function createRows(body, keyOf, columns, fill) {
  const rows = new Map();

  function make() {
    // Roles are told: the table's own are lost where it is laid out as a grid.
    const cells = columns.map(([name, heading]) =>
      element("td", { class: name, role: "cell", "data-heading": heading }));
    return { row: element("tr", { role: "row" }, ...cells), cells };
  }

  return (items) => {
    const wanted = new Set(items.map(keyOf));
    for (const [key, { row }] of rows) {
      if (wanted.has(key)) continue;
      row.remove();
      rows.delete(key);
    }
    let place = body.firstElementChild;
    for (const item of items) {
      const key = keyOf(item);
      if (!rows.has(key)) rows.set(key, make());
      const { row, cells } = rows.get(key);
      fill(item, cells, row);
      if (row === place) place = place.nextElementSibling;
      else body.insertBefore(row, place);
    }
  };
}

export function setCells(cells, texts) {
  texts.forEach((text, i) => setText(cells[i], text));
}
