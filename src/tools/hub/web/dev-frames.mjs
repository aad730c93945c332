// Frames as the hub would make them, of a vehicle that drives in a field; for dev-server.mjs.

const HEADING_PERIOD = 240; // s for one round
const A = 6378137;
const HOME = { latitude: 52.0924, longitude: 5.1211 };
const RADIAN = Math.PI / 180;

const wave = (time, period, size) => size * Math.sin((2 * Math.PI * time) / period);

/** East and north of the vehicle, metres: a round with a bulge. */
function placeAt(time, isStill) {
  if (isStill) {
    // Sums of waves without a common period pass for noise and are the same in every run.
    return [wave(time, 7.3, 0.006) + wave(time, 31.7, 0.009) + wave(time, 2.13, 0.004),
            wave(time, 5.9, 0.007) + wave(time, 23.1, 0.011) + wave(time, 1.71, 0.004)];
  }
  const angle = (2 * Math.PI * time) / HEADING_PERIOD;
  const radius = 60 + wave(time, 80, 14);
  return [1.6 * radius * Math.sin(angle), radius * Math.cos(angle)];
}

function toDegrees([east, north]) {
  return {
    latitude: HOME.latitude + north / A / RADIAN,
    longitude: HOME.longitude + east / (A * Math.cos(HOME.latitude * RADIAN)) / RADIAN,
  };
}

/** Every ten minutes the corrections fail for one. */
const qualityAt = (time) => (time % 600 < 540 ? 3 : time % 600 < 580 ? 2 : 1);
const FIXES = {
  3: { words: "best", fix: "narrow-lane integer (RTK fixed)", sigma: 0.011, indicator: 4, class: 6 },
  2: { words: "good", fix: "narrow-lane float (RTK float)", sigma: 0.21, indicator: 5, class: 6 },
  1: { words: "usable", fix: "single point", sigma: 1.6, indicator: 1, class: 4 },
};

function sampleAt(time, isStill) {
  const quality = qualityAt(time);
  const sigma = FIXES[quality].sigma * (1 + wave(time, 47, 0.2));
  return {
    ...toDegrees(placeAt(time, isStill)), height: 48.9 + wave(time, 90, 0.4), quality,
    satellitesUsed: Math.round(14 + wave(time, 300, 2.4)), sigmaHorizontal: 1.4 * sigma,
    sigma, sigmaUp: 2 * sigma, differentialAge: quality > 1 ? 1 + (time % 1) : 30 + (time % 60),
    cn0: 44 + wave(time, 130, 1.5),
  };
}

const SKY = [
  [2, 71, 40, 49, true], [5, 44, 205, 46, true], [7, 63, 121, 47, true], [9, 18, 310, 37, true],
  [12, 9, 22, 33, false], [13, 35, 85, 44, true], [15, 27, 262, 41, true], [20, 4, 178, null, false],
  [25, 12, 348, 36, true], [29, 52, 290, 48, true], [30, 21, 148, 40, true], [37, 31, 158, 39, true],
  [44, 26, 222, 36, false],
];
const GLONASS = [[38, 46, 41], [39, 44, 38], [47, 48, 43], [53, 39, 33], [54, 45, 40], [61, 35, null]];

function channels(time) {
  const shake = (prn) => Math.round(wave(time + prn * 3, 11, 1.2));
  const gps = SKY.filter(([prn, , , cn0]) => prn < 33 && cn0 !== null)
    .map(([prn, , , cn0]) => ({ prn, system: "GPS", cn0: [cn0 + shake(prn), cn0 - 6 + shake(prn + 1)] }));
  const glonass = GLONASS.map(([prn, one, two]) => ({
    prn, system: "GLONASS",
    cn0: [one + shake(prn), ...(two === null ? [] : [two + shake(prn + 1)])],
  }));
  const sbas = [{ prn: 124, system: "SBAS", cn0: [39] }, { prn: 131, system: "SBAS", cn0: [36] }];
  return [...gps, ...glonass, ...sbas];
}

const WORDS = {
  live: "Live", "no position": "No position", old: "Old", gone: "The daemon is gone",
  silent: "The receiver is silent",
};

/** `since`: seconds for which the state has lasted, where it makes things old. */
export function liveFrame(now, state, since, isStill) {
  const isStopped = ["old", "silent", "gone"].includes(state);
  const age = isStopped ? since : 0.04;
  const time = now - age;
  const has = state !== "no position";
  const sample = sampleAt(time, isStill);
  const fix = FIXES[sample.quality];
  const [from, to] = [placeAt(time - 0.5, isStill), placeAt(time + 0.5, isStill)];
  const [east, north] = [to[0] - from[0], to[1] - from[1]];
  const position = {
    ...sample, heightAboveGeoid: sample.height - 43.8, x: 3911451.2042, y: 350542.1181, z: 5009170.6612,
    speed: Math.hypot(east, north), course: isStill ? null : (Math.atan2(east, north) / RADIAN + 360) % 360,
    velocityEast: east, velocityNorth: north, velocityUp: 0.01, sigmaEast: sample.sigma,
    sigmaNorth: sample.sigma * 1.1, qualityWords: fix.words, fix: fix.fix,
    fixIndicator: fix.indicator, solutionClass: fix.class, satellites: [9, 5, 0],
  };
  const without = {
    ...Object.fromEntries(Object.keys(position).map((name) => [name, null])), quality: 0,
    qualityWords: "no position", fix: "none", fixIndicator: 0, solutionClass: -1,
    satellitesUsed: 0, satellites: [0, 0, 0],
  };
  return {
    now, health: { state, words: WORDS[state] },
    solution: { time, age, utc: time, week: 2393, seconds: time % 604800, hasPosition: has,
                velocityLatency: 0.15, ...(has ? position : without) },
    base: { age: (isStopped ? since : 0) + (now % 10), latitude: 52.101, longitude: 5.13, height: 51.2,
            distance: 1203.4 },
    sky: { age: (isStopped ? since : 0) + (now % 1), mode: has ? 3 : 1, pdop: 1.6, hdop: 0.9, vdop: 1.3,
           satellites: SKY.map(([prn, elevation, azimuth, cn0, isUsed]) =>
             ({ prn, elevation, azimuth, cn0, isUsed: isUsed && has })) },
    signals: { age: (isStopped ? since : 0) + (now % 1), channels: channels(Math.floor(time)) },
  };
}

const LOGS = [[42, "BESTPOS", 1], [37, "VERSION", 0], [93, "RXSTATUS", 0.1], [83, "TRACKSTAT", 1],
              [43, "RANGE", 1], [244, "RTKXYZ", 20], [469, "PDPXYZ", 20], [174, "PSRDOP", 0.1],
              [317, "COMCONFIG", 0.03], [101, "TIME", 1], [65535, "NMEA sentences", 4]];

export function panelFrame(now, state, since, start) {
  const isStopped = ["silent", "gone"].includes(state);
  const age = isStopped ? since : 0;
  const status = (name, key, value, level = "essential", old = 0.1) =>
    ({ name, key, value, level, time: now - old - age, age: old + age });
  return {
    now, version: "0.1.0", uptime: now - start, health: { state, words: WORDS[state] },
    processes: [
      { process: "corvane", pid: 411, version: "0.1.0", isConnected: state !== "gone", since: now - 812 - age,
        names: ["NovatelPortHandler", "NovatelPortHandler2", "NovatelPositionManager", "NovatelReceiverStatus"] },
      { process: "corvane-mux", pid: 398, version: "0.1.0", isConnected: true, since: now - 820,
        names: ["PortMultiplexer"] },
    ],
    receiver: {
      model: "L12RTGV", serial: "DAB07170027", hardware: "OEMV3-3.01-X2T", firmware: "3.907", idle: 43,
      status: { word: "0x00000008", age: 317 + age, bits: [{ bit: 3, words: "Antenna not powered" }] },
      error: { word: "0x00000000", age: 810 + age, bits: [] },
      ports: [{ name: "COM1", baud: 460800, transmit: "NOVATEL", receive: "NOVATEL" },
              { name: "COM2", baud: 115200, transmit: "NONE", receive: "RTCM" },
              { name: "USB1", baud: 9600, transmit: "NOVATEL", receive: "NOVATEL" }],
      channelConfiguration: { current: 1, desired: 4, available: 4, groups: [
        { number: 1, words: "14 GPSL1, 2 SBASL1" }, { number: 2, words: "12 GPSL1, 4 SBASL1" },
        { number: 3, words: "10 GPSL1, 4 GLOL1" }, { number: 4, words: "8 GPSL1, 6 GLOL1" }] },
    },
    diagnostics: [
      { name: "CDiagnosticsObserver", code: 70950, sub: 4, value: 1, since: now - 317 - age,
        words: "The antenna is not powered" },
      { name: "CPositionManager", code: 79141, sub: 2, value: 1, since: now - 12 - age,
        words: "The smoothing filter has lost its carrier phases" },
    ],
    events: [
      { number: 3, time: now - 12 - age, level: "warning", name: "NovatelPositionManager",
        text: "Glide dropped zero phase measurements: 0,1,1,0,0,0,0,0" },
      { number: 2, time: start + 70, level: "error", name: "NovatelPortHandler",
        text: "CorvanePortTimeout resetting receiver" },
      ...Array.from({ length: 14 }, (_, i) => ({
        number: -i, time: start + 2 - i / 10, level: "warning", name: "NovatelPortHandler",
        text: `Sending buffered command: log usb2 rtkxyzb ontime 0.05 <b>${i}</b>` })),
    ],
    statuses: [
      status("NovatelPortHandler", "started", "started", "essential", 812),
      status("NovatelPortHandler", "receiver_initialisations", "1", "essential", 811),
      status("NovatelPortHandler", "checksum_stats", `${Math.floor((now - start) * 52)},2`),
      status("NovatelReceiverStatus", "ReceiverStatus", "0x00000008, Antenna not powered", "essential", 317),
      status("NovatelReceiverStatus", "ReceiverCPUIdlePercentage", "43", "info", 2.5),
      status("NovatelReceiverStatus", "sats_tracked_gps", "11,11", "essential", 0.6),
      status("NovatelReceiverStatus", "sats_tracked", "19; 11,6; 11,5", "essential", 0.6),
      status("NovatelReceiverStatus", "component_00.softwareVersion", "3.907", "essential", 809),
      status("NovatelPositionManager", "rtkxyz_info", "0,50,0,8,0.150,1.000,0.000,19,14,14,10,1,0,0,1,33"),
      status("NovatelPositionManager", "novatel_undulation", "43.8125", "essential", 1),
      status("PlatformLink", "dropped_messages", "0", "info", 812),
      { ...status("PortMultiplexer", "open_devices", "2", "info", 820), age: 820 },
    ],
    logs: LOGS.map(([id, log, rate]) => ({
      name: "NovatelPortHandler", id, log, count: Math.max(1, Math.floor((now - start) * rate)),
      rate: isStopped ? 0 : rate, age: age + (rate ? 0.7 / rate : 809) })),
    checksums: [{ name: "NovatelPortHandler", good: Math.floor((now - start) * 52), rejected: 2, age: age + 0.02 },
                { name: "NovatelPortHandler2", good: 0, rejected: 0, age: 812 + age }],
    activity: [{ name: "NovatelPortHandler", received: isStopped ? 0 : 40, sentences: isStopped ? 0 : 52,
                 age: state === "gone" ? since : 0.5 },
               { name: "NovatelPortHandler2", received: 0, sentences: 0, age: state === "gone" ? since : 0.5 }],
    link: { dropped: 0, messages: Math.floor((now - start) * 130), refused: 0 },
  };
}

/** Columns as the hub's history tells them; with a loss in the middle. */
export function history(from, to, points, isStill) {
  const step = Math.max(1, (to - from) / points);
  const times = [];
  for (let time = from; time < to; time += step) {
    const part = (time - from) / (to - from);
    if (part < 0.55 || part > 0.6) times.push(time);
  }
  const samples = times.map((time) => sampleAt(time, isStill));
  const column = (name) => samples.map((each) => each[name]);
  return {
    from, to, step, time: times, latitude: column("latitude"), longitude: column("longitude"),
    height: column("height"), quality: column("quality"), satellites: column("satellitesUsed"),
    sigmaHorizontal: column("sigmaHorizontal"), sigmaUp: column("sigmaUp"),
    differentialAge: column("differentialAge"), cn0: column("cn0"),
  };
}
