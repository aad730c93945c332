// Numbers, ages and times as text. What is not known is a dash.

export const UNKNOWN = "–";
const NARROW_SPACE = "\u202f";

const isNumber = (value) => typeof value === "number" && Number.isFinite(value);

/** With so many decimals and a unit; a minus sign is a real one, so that figures align. */
export function fixed(value, decimals, unit = "") {
  if (!isNumber(value)) return UNKNOWN;
  const text = value.toFixed(decimals).replace(/^-(?=0\.?0*$)/, "").replace("-", "\u2212");
  return unit ? `${text} ${unit}` : text;
}

/** A whole number with its thousands set apart. */
export function count(value) {
  return fixed(value, 0).replace(/\B(?=(\d{3})+$)/g, NARROW_SPACE);
}

/** An accuracy: millimetres matter below a metre, metres above a hundred. */
export function accuracy(metres) {
  if (!isNumber(metres)) return UNKNOWN;
  const size = Math.abs(metres);
  return fixed(metres, size < 1 ? 3 : size < 100 ? 2 : 0, "m");
}

export function distance(metres) {
  if (!isNumber(metres)) return UNKNOWN;
  return metres < 10000 ? fixed(metres, 1, "m") : fixed(metres / 1000, 2, "km");
}

function angle(degrees, positive, negative) {
  if (!isNumber(degrees)) return UNKNOWN;
  return `${Math.abs(degrees).toFixed(9)}° ${degrees < 0 ? negative : positive}`;
}

export const latitude = (degrees) => angle(degrees, "N", "S");
export const longitude = (degrees) => angle(degrees, "E", "W");

const two = (value) => String(value).padStart(2, "0");

/** How long, in words that a glance takes in: "0.3 s", "12 s", "3 min 05 s", "2 h 03 min". */
export function duration(seconds) {
  if (!isNumber(seconds) || seconds >= 10) return wholeDuration(seconds);
  return `${(Math.floor(Math.max(0, seconds) * 10) / 10).toFixed(1)} s`;
}

/** The same without tenths: "0 s". */
export function wholeDuration(seconds) {
  if (!isNumber(seconds)) return UNKNOWN;
  const positive = Math.max(0, seconds);
  const whole = Math.floor(positive);
  if (whole < 60) return `${whole} s`;
  if (whole < 3600) return `${Math.floor(whole / 60)} min ${two(whole % 60)} s`;
  if (whole < 86400) return `${Math.floor(whole / 3600)} h ${two(Math.floor(whole / 60) % 60)} min`;
  return `${Math.floor(whole / 86400)} d ${Math.floor(whole / 3600) % 24} h`;
}

// Whole milliseconds first: a binary fraction must not show a hundredth less.
const iso = (seconds) => new Date(Math.round(seconds * 1000)).toISOString();

/** Seconds since the Unix epoch as UTC: "19:26:40", with so many decimals. */
export function time(seconds, decimals = 0) {
  if (!isNumber(seconds)) return UNKNOWN;
  return iso(seconds).slice(11, decimals > 0 ? 20 + decimals : 19);
}

/** "2025-11-21 19:26:40", with so many decimals. */
export function dateTime(seconds, decimals = 0) {
  if (!isNumber(seconds)) return UNKNOWN;
  return `${iso(seconds).slice(0, 10)} ${time(seconds, decimals)}`;
}

export function capitalised(words) {
  return words ? words[0].toUpperCase() + words.slice(1) : UNKNOWN;
}
