// Builds the page into a folder: node build.mjs OUTPUT_FOLDER

import { copyFile, mkdir, readFile } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";

import { build } from "esbuild";

const COPIED = ["index.html", "favicon.svg", "favicon-live.svg", "favicon-warning.svg", "favicon-bad.svg"];

const here = dirname(fileURLToPath(import.meta.url));
const folder = process.argv[2];
if (!folder) {
  console.error("usage: node build.mjs OUTPUT_FOLDER");
  process.exit(2);
}
const output = resolve(folder);

const license = await readFile(join(here, "node_modules/uplot/LICENSE"), "utf8");

await mkdir(output, { recursive: true });
await build({
  absWorkingDir: here,
  entryPoints: { app: "src/main.js", "app-style": "app.css" },
  entryNames: "app",
  bundle: true,
  minify: true,
  format: "iife",
  target: "es2021",
  banner: { js: `/*! With uPlot:\n${license}*/` },
  outdir: output,
  logLevel: "warning",
});
for (const name of COPIED) await copyFile(join(here, name), join(output, name));
