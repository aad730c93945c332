// The receiver: what it is, how it is, and how it is set up.

import { byId, createOnChange, element, setHidden, setText } from "./dom.js";
import { count, fixed, UNKNOWN } from "./format.js";

const LIMIT = 5;

function bitItems(bits) {
  return bits.map(({ bit, words }) => element("li", {}, words, element("span", { class: "unit" }, ` bit ${bit}`)));
}

/** A word of bits: its digits, since when, and every set bit in words. */
function createWord(name, ages) {
  const [word, age, bits, none] =
    ["word", "age", "bits", "none"].map((part) => byId(`receiver-${name}-${part}`));
  const onChange = createOnChange();
  return (told) => {
    // The daemon tells a word when it changes: it is as old as its value, not out of date.
    ages.show(age, told?.age, {
      missing: "not told yet",
      words: (text, isOld) => `told ${text} ago${isOld ? ", old" : ""}`,
    });
    setText(word, told?.word ?? UNKNOWN);
    setHidden(none, !told || told.bits.length > 0);
    onChange(told?.bits ?? [], () => bits.replaceChildren(...bitItems(told?.bits ?? [])));
  };
}

function portRow({ name, baud, transmit, receive }) {
  const cells = [count(baud), transmit ?? UNKNOWN, receive ?? UNKNOWN];
  return element("tr", {},
    element("th", { scope: "row" }, name), ...cells.map((text) => element("td", {}, text)));
}

function groupRow({ number, words }, { current, desired }) {
  const marks = [];
  if (number === current) marks.push("in use");
  if (number === desired) marks.push("wanted");
  return element("tr", { class: number === current ? "is-current" : null },
    element("th", { scope: "row" }, String(number)),
    element("td", {}, words), element("td", {}, marks.join(", ")));
}

function channelWords({ current, desired, available }) {
  const number = (value) => (value === null || value === undefined ? "not known" : value);
  return `In use: ${number(current)}; wanted: ${number(desired)}; available: ${number(available)}`;
}

export function createReceiver(ages) {
  const [card, age, ports, noPorts, channels, groups] =
    ["receiver", "receiver-age", "receiver-ports", "receiver-no-ports", "receiver-channels",
     "receiver-groups"].map(byId);
  const texts = ["model", "serial", "hardware", "firmware"].map((name) => [name, byId(`receiver-${name}`)]);
  const idle = byId("receiver-idle");
  const [showStatus, showError] = ["status", "error"].map((name) => createWord(name, ages));
  const onPorts = createOnChange();
  const onChannels = createOnChange();

  function showChannels(configuration) {
    setText(channels, configuration ? channelWords(configuration) : "Not told yet");
    const rows = configuration?.groups ?? [];
    groups.replaceChildren(...rows.map((each) => groupRow(each, configuration)));
  }

  return {
    panel({ receiver, logs }) {
      // What the receiver is changes hardly ever: how long it has said nothing at all is its age.
      const quiet = logs.length ? Math.min(...logs.map((each) => each.age)) : null;
      ages.show(age, quiet, { owner: card, limit: LIMIT, missing: "none yet" });
      for (const [name, target] of texts) setText(target, receiver?.[name] ?? UNKNOWN);
      setText(idle, fixed(receiver?.idle, 0, "%"));
      showStatus(receiver?.status);
      showError(receiver?.error);
      const list = receiver?.ports ?? [];
      setHidden(noPorts, list.length > 0);
      onPorts(list, () => ports.replaceChildren(...list.map(portRow)));
      onChannels(receiver?.channelConfiguration ?? null,
        () => showChannels(receiver?.channelConfiguration ?? null));
    },
  };
}
