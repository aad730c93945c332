// Writes the built files as C++: node embed.mjs BUILT_FOLDER ASSETS_CPP

import { readdir, readFile, writeFile } from "node:fs/promises";
import { extname, join } from "node:path";

const TYPES = {
  ".css": "text/css; charset=utf-8",
  ".html": "text/html; charset=utf-8",
  ".js": "text/javascript; charset=utf-8",
  ".svg": "image/svg+xml",
};
const BYTES_A_LINE = 64;

const [folder, output] = process.argv.slice(2);
if (!output) {
  console.error("usage: node embed.mjs BUILT_FOLDER ASSETS_CPP");
  process.exit(2);
}

/** A byte as it stands in a literal; octal, of three digits always, takes no digit that follows. */
function escaped(byte) {
  const isPlain = byte >= 0x20 && byte < 0x7f && !'"\\?'.includes(String.fromCharCode(byte));
  return isPlain ? String.fromCharCode(byte) : `\\${byte.toString(8).padStart(3, "0")}`;
}

function literal(content) {
  const lines = [];
  for (let at = 0; at < content.length; at += BYTES_A_LINE) {
    lines.push(`    "${[...content.subarray(at, at + BYTES_A_LINE)].map(escaped).join("")}"`);
  }
  return lines.join("\n");
}

const names = (await readdir(folder)).sort();
const entries = [];
for (const name of names) {
  const type = TYPES[extname(name)];
  if (!type) throw new Error(`${name}: of which media type?`);
  const content = await readFile(join(folder, name));
  const path = name === "index.html" ? "/" : `/${name}`;
  entries.push(`    {"${path}", "${type}",\n     std::string_view(\n${literal(content)},\n` +
    `    ${content.length})},`);
}

await writeFile(output, `// Made by embed.mjs when the program is built.
#include "hub/http/Assets.h"

#include <array>

namespace Hub {

namespace {

constexpr std::array kAssets = std::to_array<SAsset>({
${entries.join("\n")}
});

} // namespace

std::span<const SAsset> Assets() {
    return kAssets;
}

} // namespace Hub
`);
