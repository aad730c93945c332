// The stream of frames from the hub, opened again whenever it is lost.

import { elapsed, moment } from "./moment.js";

const RETRY = 2000; // ms
const PATIENCE = 6; // s; a connection that brings nothing for so long is given up

/** Calls `onFrame(kind, frame)` with each "live" and "panel". */
export function connect(onFrame) {
  let source = null;
  let heard = moment();

  function open() {
    source?.close();
    heard = moment();
    source = new EventSource("api/stream");
    for (const kind of ["live", "panel"]) {
      source.addEventListener(kind, (event) => {
        heard = moment();
        onFrame(kind, JSON.parse(event.data));
      });
    }
  }

  open();
  // The browser itself tries again after a loss, but not after a refusal or into silence.
  setInterval(() => {
    const isRefused = source.readyState === EventSource.CLOSED;
    if (isRefused || elapsed(heard, moment()) > PATIENCE) open();
  }, RETRY);
}
