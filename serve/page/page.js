"use strict";

import {curve, recall, remember} from "./curves.js";
import {el, foreign, svg} from "./elements.js";

// Replaces what stands in an element when it is another thing, so that a reader keeps the place.
const drawn = new Map();
function draw(id, data, make) {
  const key = JSON.stringify(data);
  if (drawn.get(id) !== key) {
    drawn.set(id, key);
    document.getElementById(id).replaceChildren(...[make()].flat());
  }
}

function list(pairs) {
  return el("dl", {}, ...pairs.flatMap(([name, value]) =>
    [el("dt", {}, name), el("dd", {}, value instanceof Node ? value : foreign(value))]));
}

// ---- The document

let overview = null;
let status = null;
let lastEvent = 0;  // of a clock that nobody sets
let connected = false;

function isReported(path) {
  return !overview.NotReported.some((gone) => path === gone || path.startsWith(gone + "/") || path.startsWith(gone + "["));
}
const shown = (value, path, unit = "") =>
  value === undefined || !isReported(path) ? "not reported" : value + (unit === "" ? "" : " " + unit);

const UNITS = {
  Celsius: "°C", TemperatureKelvin: "K", Humidity: "%", CurrentRpm: "rpm", AverageRpm: "rpm", Rpm: "rpm",
  InputVoltage: "V", OutputVoltage: "V", InputVoltages: "V", OutputVoltages: "V",
  OneMinLuxAverage: "lx", TenMinLuxAverage: "lx", Latitude: "°", Longitude: "°",
};
const NO_READINGS = new Set(["Class", "NumberOfAttributes", "Connected", "SyncLossCounter", "Address", "Bus", "Face",
  "Revision", "IdType", "HardwareID", "BoardConnected", "SpareAverage", "SyncControlStartBit"]);
const words = (name) => name.replace(/([a-z])([A-Z0-9])/g, "$1 $2").toLowerCase();
const kind = (name) => words(name.replace(/^CAN/, "").replace(/(Sensor|InputType|OutputType)$/, ""));

// Each sensor with the path that it has in the document.
function allSensors() {
  const found = status.Sensors.map((sensor, at) => [sensor, `Sensors[${at}]`, "controller"]);
  status.Outputs.forEach((output, o) => output.DisplayInterfaces.forEach((display, d) => display.Sensors.forEach(
    (sensor, at) => found.push([sensor, `Outputs[${o}]/DisplayInterfaces[${d}]/Sensors[${at}]`,
      `${words(display.Class.replace("DisplayInterface", ""))} ${display.Address ?? ""}`.trim()]))));
  return found;
}

// ---- What needs attention

function drawFindings() {
  draw("findings", overview.Findings, () => {
    if (overview.Findings.length === 0) {
      return el("p", {class: "well"}, "All well: nothing was found in rows and sources.");
    }
    return el("ul", {class: "grid"}, ...overview.Findings.map((finding) =>
      el("li", {class: "card finding " + finding.Severity},
        el("p", {class: "word"}, el("span", {class: finding.Severity}, finding.Severity)),
        el("p", {}, foreign(finding.Message + (finding.Where === "" ? "" : ", " + finding.Where))),
        el("p", {class: "faint"}, finding.Before ? "since before " : "since ", el("time", {datetime: finding.Since}, localTime(finding.Since))),
        ...(finding.Hint === "" ? [] : [el("p", {class: "faint"}, "look at: ", foreign(finding.Hint))]),
        ...(finding.Path === "" ? [] : [el("p", {class: "faint"}, foreign(finding.Path))]))));
  });
}

function drawEnded() {
  const count = overview.EndedCount;
  document.getElementById("ended-count").textContent = count === 0 ? "None." : count === 1 ? "1 finding" : `${count} findings` +
    (count > overview.Ended.length ? `; the latest ${overview.Ended.length}` : "");
  draw("ended", overview.Ended, () => el("ul", {class: "grid"}, ...overview.Ended.map((finding) =>
    el("li", {class: "card"},
      el("p", {}, `${finding.Severity}: `, foreign(finding.Message + (finding.Where === "" ? "" : ", " + finding.Where))),
      el("p", {class: "faint"}, finding.Before ? "from before " : "from ",
        el("time", {datetime: finding.Begin}, localTime(finding.Begin)), " to ",
        el("time", {datetime: finding.End}, localTime(finding.End))),
      ...(finding.Path === "" ? [] : [el("p", {class: "faint"}, foreign(finding.Path))])))));
}

// ---- The display

const FLAGS = [[0x4, "power off"], [0x400, "watchdog event"], [0x800, "pixel tracker active"], [0x1000, "output blanked"],
  [0x2000, "ambient sensor failure"], [0x4000, "ambient override"]];
const MODES = {0: "auto", 1: "manual", 2: "schedule", 3: "gps", 4: "vmax", 5: "remote", 6: "override"};
const MOST_MODULES = 4000;

function face(table, number, state, level) {
  const {Rows: rows, Columns: columns, ModuleWidth: width, ModuleHeight: height} = table;
  const picture = svg("svg", {
    class: "face" + (state === "on" ? " lit" : ""), viewBox: `0 0 ${columns * width} ${rows * height}`,
    role: "img", "aria-label": `Face ${number}: ${rows} rows and ${columns} columns of modules, ${state}`,
  });
  const step = rows * columns > MOST_MODULES ? [columns * width, rows * height] : [width, height];
  for (let y = 0; y < rows * height; y += step[1]) {
    for (let x = 0; x < columns * width; x += step[0]) {
      picture.append(svg("rect", {x, y, width: step[0], height: step[1],
        ...(state === "on" ? {"fill-opacity": Math.max(0.15, Math.min(1, level / 100))} : {})}));
    }
  }
  return picture;
}

function drawOutput(output, at) {
  const path = `Outputs[${at}]/`;
  const known = isReported(path + "StatusFlags");
  const flags = known ? FLAGS.filter(([bit]) => (output.StatusFlags & bit) !== 0).map(([, name]) => name) : [];
  const level = output.Dimming.ActualDimmingLevel;
  const state = !known ? "state not reported" : flags.includes("power off") ? "power off"
    : flags.includes("output blanked") ? "blanked" : level === 0 ? "dimmed to nothing" : "on";
  const table = output.Ttable;
  const pixels = table.Columns * table.ModuleWidth * table.Rows * table.ModuleHeight;
  const faces = pixels > 0 ? Array.from({length: Math.min(Math.max(table.FaceCount, 1), 8)},
    (_, number) => face(table, number + 1, state, level)) : [];
  return [
    list([
      ["Title", shown(output.Title, path + "Title")],
      ["State", state],
      ["Flags", known ? flags.join(", ") || "none" : "not reported"],
      ["Brightness", `${shown(level, path + "Dimming/ActualDimmingLevel", "%")}; asked for: ${
        shown(output.Dimming.DimmingLevel, path + "Dimming/DimmingLevel", "%")}`],
      ["Mode", shown(MODES[output.Dimming.DimmingMode] ?? output.Dimming.DimmingMode, path + "Dimming/DimmingMode")],
      ["Modules", `${shown(table.Columns, path + "Ttable/Columns")} columns, ${shown(table.Rows, path + "Ttable/Rows")} rows, ${
        shown(table.FaceCount, path + "Ttable/FaceCount")} faces`],
      ["Fans", shown(output.Fans.Enabled ? "enabled" : "disabled", path + "Fans/Enabled")],
    ]),
    ...(faces.length > 0 ? [el("div", {class: "grid"}, ...faces)] : [el("p", {}, "The T-table gives no modules to draw.")]),
  ];
}

// ---- Sensors

const readingsOf = (sensor) => Object.entries(sensor).filter(([name, value]) => !NO_READINGS.has(name) &&
  (typeof value !== "object" || (Array.isArray(value) && typeof value[0] === "number")));

// The reading that is drawn: one with a unit, and what is read now rather than an average.
const NO_CURVES = new Set(["AverageRpm", "Latitude", "Longitude"]);
const mainOf = (sensor) => readingsOf(sensor).find(([name, value]) =>
  name in UNITS && !NO_CURVES.has(name) && typeof value === "number");

function drawSensor([sensor, path, where]) {
  const main = mainOf(sensor);
  return el("li", {class: "card", "data-path": path},
    el("h3", {}, `${kind(sensor.Class)}, ${where}${sensor.Address === undefined ? "" : ", address " + sensor.Address}`),
    list([
      ["connected", sensor.Connected ? "yes" : "no"],
      ...(sensor.Connected ? readingsOf(sensor).map(([name, value]) =>
        [words(name), shown(Array.isArray(value) ? value.join(", ") : value, path + "/" + name, UNITS[name])]) : []),
    ]),
    ...(main ? curve(path + "/" + main[0], words(main[0]), UNITS[main[0]]) : []));
}

const plainSensors = () => allSensors().filter(([sensor]) => sensor.Points === undefined);

// What the curves are of, and when: another sensor at a path, a clock that was set, cycles that were missed, and a
// server that was started again make them other ones.
let recalled = null;
let clock = null;

async function rememberAll() {
  const of = plainSensors().map(([sensor, path]) => [path, sensor.Class, sensor.Address, mainOf(sensor)?.[0]]);
  const time = Date.parse(overview.Began) / 1000;
  const now = performance.now() / 1000;
  const known = clock !== null && Math.abs(time - clock.time - (now - clock.now)) < 5 && overview.Cycle >= clock.cycle &&
    time - clock.time <= 2 * overview.Interval + 5;
  clock = {time, now, cycle: overview.Cycle};
  const key = JSON.stringify(of);
  if (!known || key !== recalled) {
    recalled = null;  // until it is there: the next cycle asks again
    await recall(of.filter(([, , , name]) => name !== undefined).map(([path, , , name]) => path + "/" + name))
      .then(() => { recalled = key; }, () => {});
  }
  for (const [sensor, path] of plainSensors()) {
    const main = mainOf(sensor);
    if (main) {
      const there = sensor.Connected && isReported(path + "/" + main[0]);
      remember(path + "/" + main[0], time, there ? main[1] : null, overview.Interval);
    }
  }
}

function drawSensors() {
  const sensors = plainSensors();
  draw("sensors", [sensors, overview.Cycle, overview.NotReported], () => sensors.length === 0 ? el("p", {}, "There are none.")
    : el("ul", {class: "grid"}, ...sensors.map(drawSensor)));
}

// ---- Boards

function drawPoints(points) {
  const lamp = (lit, word, point) => el("li", {class: "lamp" + (lit ? " lit" : "")},
    `${point.Index} `, foreign(point.Label || kind(point.Class)), `: ${word}`);
  return el("ul", {},
    ...(points.Inputs?.Points ?? []).map((point) => lamp(point.State === 1, point.State === 1 ? "active" : "inactive", point)),
    // The stored state of outputs is the inverse of their state.
    ...(points.Outputs?.Points ?? []).map((point) => lamp(point.StoredState === 0, point.StoredState === 0 ? "on" : "off", point)));
}

function drawBoards() {
  const boards = allSensors().filter(([sensor]) => sensor.Points !== undefined);
  const own = status.Outputs.flatMap((output) => output.DisplayInterfaces.filter((each) => each.Points !== undefined));
  const devices = status.DCIO.Devices;
  draw("boards", [boards, own, devices], () => {
    if (boards.length + own.length + devices.length === 0) {
      return el("p", {}, "There are none.");
    }
    return el("div", {class: "grid"},
      ...boards.map(([board, path, where]) => el("div", {class: "card", "data-path": path},
        el("h3", {}, `${kind(board.Class)}, ${where}, address ${board.Address}`),
        el("p", {}, board.Connected ? "connected" : "not connected"),
        drawPoints(board.Points),
        ...(board.FanRpms ?? []).map((fan) => el("p", {}, `fan ${fan.FanNumber}: ${fan.Rpm} rpm`)))),
      ...own.map((board) => el("div", {class: "card"}, el("h3", {}, `${words(board.Class)} ${board.Address ?? ""}`), drawPoints(board.Points))),
      ...(devices.length === 0 ? [] : [el("div", {class: "card"}, el("h3", {}, "discrete I/O devices"),
        el("ul", {}, ...devices.map((device) => el("li", {class: "lamp" + (device.State === 1 ? " lit" : "")},
          `${words(device.Class)}, address ${device.Address ?? "not reported"}: ${
            device.State === undefined ? "not reported" : device.State === 1 ? "active" : "inactive"}`))))]));
  });
}

// ---- Network, controller

function drawNetwork() {
  draw("network", [status.Network, overview.NotReported], () => el("div", {class: "grid"},
    ...status.Network.Devices.map((device, at) => {
      const path = `Network/Devices[${at}]/`;
      return el("div", {class: "card"}, el("h3", {}, foreign(device.Name)), list([
        ["IPv4", shown(device.IPv4Address, path + "IPv4Address")], ["IPv6", shown(device.IPv6Address, path + "IPv6Address")],
        ["Gateway", shown(device.Gateway, path + "Gateway")], ["MAC", shown(device.MACAddress, path + "MACAddress")],
        ["Link came or went", device.Statistics.First < 0 ? "not reported" : device.Statistics.First],
        ["Errors", device.Statistics.Second < 0 ? "not reported" : device.Statistics.Second]]));
    }),
    el("div", {class: "card"}, el("h3", {}, "Name servers"),
      el("ul", {}, ...status.Network.DNS.Addresses.map((server) => el("li", {}, foreign(server.Address)))))));
}

function drawController() {
  const value = (name, unit) => [words(name), shown(status[name], name, unit)];
  const rows = [value("GUID"), value("SerialNumber"), value("FirmwareVersion"), value("DisplayFirmwareVersion"),
    value("LocalTime"), value("Uptime"), value("ConfigurationTimestamp"), value("MemoryFree", "kB"), value("MemoryTotal", "kB"),
    value("StorageFree", "kB"), value("StorageTotal", "kB"), value("ErrorFlags"), ["rows", overview.RowCount]];
  draw("controller", rows, () => list(rows));
}

// ---- Sources and rows

function drawSources() {
  // What is wrong stands first.
  const sources = [...overview.Sources].sort((one, other) => (one.State === "ok") - (other.State === "ok"));
  draw("source-list", sources, () => el("ul", {class: "grid"}, ...sources.map((source) =>
    el("li", {class: "card"}, el("h3", {}, foreign(source.Name)),
      el("p", {class: source.State === "ok" ? "well" : source.Required ? "critical" : "faint"}, source.State),
      ...(source.Reason === "" ? [] : [el("p", {}, foreign(source.Reason))]),
      el("p", {class: "faint"}, source.Required ? "required" : "optional")))));
  draw("row-list", [overview.Rows, overview.RowsInError], () => overview.Rows.length === 0
    ? el("p", {class: "well"}, `None of ${overview.RowCount} rows is in error.`)
    : [el("p", {}, `${overview.RowsInError} of ${overview.RowCount} rows are in error` +
        (overview.RowsInError > overview.Rows.length ? `; the first ${overview.Rows.length}:` : ":")),
      el("ul", {class: "grid"}, ...overview.Rows.map((row) => el("li", {class: "card"},
        el("h3", {}, foreign(row.Key)), el("p", {}, "= ", foreign(row.Value)), el("p", {}, foreign(row.Text)),
        el("p", {class: "faint"}, foreign(row.Cure)))))]);
}

// ---- How far all this can be relied on

const localTime = (text) => new Date(text).toLocaleString();

function say(kindOf, text) {
  const banner = document.getElementById("banner");
  if (banner.textContent !== text) {
    banner.textContent = text;
  }
  banner.className = kindOf;
}

// Data grow old when no event comes for two intervals.
function judge() {
  const old = performance.now() - lastEvent > 1000 * (2 * (overview?.Interval ?? 10) + 1);
  if (overview === null) {
    say("unknown", connected ? "There is no document yet." : "No connection to the controller.");
  } else if (!connected) {
    say("critical", `No connection to the controller. What is shown is of ${localTime(overview.Began)}.`);
  } else if (overview.Hanging) {
    say("critical", `The collector hangs since ${localTime(overview.Hanging.Since)}: ${overview.Hanging.Asked}. ` +
      (overview.Began ? `What is shown is of ${localTime(overview.Began)}.` : "There is no document yet."));
  } else if (overview.Failure !== "" || overview.Result) {
    say("critical", `The latest cycle failed: ${overview.Failure || overview.Trouble || "the rows were not all read"}`);
  } else if (old) {
    say("critical", `Stale: there is nothing new since ${localTime(overview.Began)}.`);
  } else if (overview.Findings === undefined) {
    say("unknown", "There is no document yet.");
  } else {
    const count = (severity) => overview.Findings.filter((finding) => finding.Severity === severity).length;
    const counted = (severity) => `${count(severity)} ${severity}${severity === "warning" && count(severity) > 1 ? "s" : ""}`;
    const worst = ["critical", "unknown", "warning"].filter((severity) => count(severity) > 0);
    say(worst[0] ?? "well", worst.length === 0 ? "All well." : worst.map(counted).join(", ") + ".");
  }
}

function drawAll() {
  const title = status.Outputs[0]?.Title || "Display";
  document.getElementById("title").replaceChildren(foreign(title));
  document.title = title;
  document.getElementById("time").textContent = `As of ${localTime(overview.Began)}; a new cycle each ${overview.Interval} s.`;
  drawFindings();
  drawEnded();
  draw("picture", [status.Outputs, overview.NotReported], () => status.Outputs.flatMap(drawOutput));
  drawSensors();
  drawBoards();
  drawNetwork();
  drawController();
  drawSources();
}

async function load() {
  const [newOverview, newStatus] = await Promise.all(["/overview.json", "/status.json"].map((path) => fetch(path)));
  overview = await newOverview.json();
  if (newStatus.ok && overview.Findings !== undefined) {
    status = await newStatus.json();
    await rememberAll();
    drawAll();
  }
  judge();
}

let loading = Promise.resolve();
function listen() {
  const events = new EventSource("/events");
  events.addEventListener("state", () => {
    connected = true;
    lastEvent = performance.now();
    loading = loading.then(load).catch(() => {});
  });
  events.addEventListener("error", () => {
    connected = false;
    judge();
    if (events.readyState === EventSource.CLOSED) {  // the browser gives up where it was refused
      setTimeout(listen, 2000);
    }
  });
}

// ---- Tabs

function choose(tab) {
  for (const each of document.querySelectorAll("[role=tab]")) {
    const chosen = each === tab;
    each.setAttribute("aria-selected", String(chosen));
    each.tabIndex = chosen ? 0 : -1;
    document.getElementById(each.getAttribute("aria-controls")).hidden = !chosen;
  }
}

const tabs = [...document.querySelectorAll("[role=tab]")];
tabs.forEach((tab, at) => {
  tab.addEventListener("click", () => choose(tab));
  tab.addEventListener("keydown", (event) => {
    const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
    if (step !== undefined) {
      const next = tabs[(at + step + tabs.length) % tabs.length];
      choose(next);
      next.focus();
    }
  });
});

setInterval(judge, 1000);
listen();
