// Serves the built page with made-up frames, to work on it without a hub and a receiver:
// node dev-server.mjs BUILT_FOLDER [PORT], then open /?state=live, /?state=no%20position,
// ?state=old, silent, gone or lost (the hub ends after three seconds); &still for an antenna that
// stands, &nohistory for a hub that keeps none.

import { createReadStream, existsSync } from "node:fs";
import { createServer } from "node:http";
import { basename, extname, join } from "node:path";

import { history, liveFrame, panelFrame } from "./dev-frames.mjs";

const TYPES = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".svg": "image/svg+xml" };
const LOST_AFTER = 3; // s

const [folder, port = "8088"] = process.argv.slice(2);
const seconds = () => Date.now() / 1000;
const start = seconds() - 812;

/** What the page was opened with: its requests carry it back. */
function wishes(request) {
  const cookie = /wishes=([^;]*)/.exec(request.headers.cookie ?? "")?.[1] ?? "";
  const query = new URLSearchParams(decodeURIComponent(cookie));
  return { state: query.get("state") ?? "live", isStill: query.has("still"), isOff: query.has("nohistory") };
}

function json(response, content) {
  response.writeHead(200, { "Content-Type": "application/json" }).end(JSON.stringify(content));
}

function stream(request, response) {
  const { state, isStill } = wishes(request);
  const told = state === "lost" ? "live" : state;
  const opened = seconds();
  let count = 0;
  response.writeHead(200, { "Content-Type": "text/event-stream", "Cache-Control": "no-store" });
  const timer = setInterval(() => {
    const now = seconds();
    if (state === "lost" && now - opened > LOST_AFTER) return void response.destroy();
    const since = now - opened + 8;
    const send = (kind, frame) => response.write(`event: ${kind}\ndata: ${JSON.stringify(frame)}\n\n`);
    send("live", liveFrame(now, told, since, isStill));
    if (count++ % 5 === 0) send("panel", panelFrame(now, told, since, start));
  }, 200);
  response.on("close", () => clearInterval(timer));
  if (state === "lost") setTimeout(() => lost.add(request.socket.remoteAddress), LOST_AFTER * 1000);
}

const lost = new Set();

createServer((request, response) => {
  const { pathname, searchParams, search } = new URL(request.url, "http://localhost");
  const { state, isStill, isOff } = wishes(request);
  if (pathname === "/api/stream") {
    if (state === "lost" && lost.has(request.socket.remoteAddress)) return void request.socket.destroy();
    return void stream(request, response);
  }
  if (pathname === "/api/live") return void json(response, liveFrame(seconds(), state, 8, isStill));
  if (pathname === "/api/panel") return void json(response, panelFrame(seconds(), state, 8, start));
  if (pathname === "/api/history/positions" && !isOff) {
    const [from, to, points] = ["from", "to", "points"].map((name) => Number(searchParams.get(name)));
    return void json(response, history(from, to, points, isStill));
  }
  const file = join(folder, pathname === "/" ? "index.html" : basename(pathname));
  if (pathname.startsWith("/api/") || !existsSync(file)) return void response.writeHead(404).end();
  if (pathname === "/") lost.clear();
  response.writeHead(200, {
    "Content-Type": TYPES[extname(file)],
    "Content-Security-Policy": "default-src 'self'",
    ...(pathname === "/" && { "Set-Cookie": `wishes=${encodeURIComponent(search.slice(1))}; Path=/` }),
  });
  createReadStream(file).pipe(response);
}).listen(Number(port), "127.0.0.1", () => console.log(`http://127.0.0.1:${port}/`));
