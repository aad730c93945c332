// How long frames were under way: the hub's ages are those of the moment when it made a frame.

const REMEMBERED = 50; // ten seconds of frames: then a clock that was set no longer matters

/**
 * Gives a function that takes the hub's time in a frame and the page's at its arrival, and returns
 * by how many seconds the frame was slower than the fastest of the last ones.
 */
export function createDelay() {
  const offsets = [];
  return (hubTime, pageTime) => {
    offsets.push(pageTime - hubTime);
    if (offsets.length > REMEMBERED) offsets.shift();
    return pageTime - hubTime - Math.min(...offsets);
  };
}
