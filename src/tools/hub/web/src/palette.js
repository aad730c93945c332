// The colours of the style sheet, for what is drawn on a canvas.

const styles = getComputedStyle(document.documentElement);

/** The present value of a custom property, such as "--line": it follows the colour scheme. */
export const colour = (name) => styles.getPropertyValue(name).trim();

/** A font of so many rem, as a canvas wants it. */
export const font = (rem) => `${rem * parseFloat(styles.fontSize)}px system-ui, sans-serif`;

export function onColourScheme(redraw) {
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", redraw);
}
