// Which rows a search finds.

/** A row is found by texts that hold every word of the query, in any order and case. */
export function matches(query, texts) {
  const all = texts.join(" ").toLowerCase();
  return query.toLowerCase().split(/\s+/).every((word) => all.includes(word));
}
