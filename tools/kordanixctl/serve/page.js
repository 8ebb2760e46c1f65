"use strict";
const HISTORY = 250, byId = id => document.getElementById(id);
const make = (tag, parent, text) => {
  const element = parent.appendChild(document.createElement(tag));
  if (text !== undefined) element.textContent = text;
  return element;
};
let values = {}, catalogue = [], cells = {}, history = {}, controls = {}, seen = 0, settings = -1, notice = "", noticeEnd = 0;
let lastReport = null;

async function ask(path, options) {
  const answer = await fetch(path, { cache: "no-store", ...options });
  if (!answer.ok) {
    const body = await answer.json().catch(() => ({ error: "refused: " + answer.status }));
    throw Object.assign(new Error(body.error), { isAnswer: true });
  }
  return answer;
}
function tell(text) { notice = text; noticeEnd = Date.now() + 6000; showMessage(""); }
function showMessage(standstill) {
  const text = Date.now() < noticeEnd ? notice : standstill;
  byId("message").textContent = text;
  byId("message").hidden = !text;
}
async function send(path, body) {
  try {
    await ask(path, { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(body) });
  } catch (error) { tell(error.message); }
  await loadSettings();
}

// Canvases

function context(canvas) {
  const scale = window.devicePixelRatio || 1;
  const width = Math.round(canvas.clientWidth * scale), height = Math.round(canvas.clientHeight * scale);
  if (canvas.width !== width || canvas.height !== height) { canvas.width = width; canvas.height = height; }
  const c = canvas.getContext("2d");
  c.setTransform(scale, 0, 0, scale, 0, 0);
  c.clearRect(0, 0, canvas.clientWidth, canvas.clientHeight);
  return c;
}
const style = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
const ms = time => time.toFixed(time < 10 ? 2 : 1);

function drawFrames(frames) {
  const canvas = byId("frames"), c = context(canvas), left = 46;
  const width = canvas.clientWidth - left, height = canvas.clientHeight - 6;
  const known = frames.filter(frame => frame.total !== null);
  if (!known.length || width <= 0) return;
  const sorted = known.map(frame => frame.total).sort((a, b) => a - b);
  const median = sorted[sorted.length >> 1], slow = sorted[Math.ceil(sorted.length * 0.99) - 1];
  const longest = sorted[sorted.length - 1];
  const top = Math.max(Math.min(longest, 4 * median), slow, 0.001) * 1.08;
  byId("statistics").textContent = "median " + ms(median) + " ms · 99 % " + ms(slow) + " ms · longest " + ms(longest) + " ms";
  const y = time => 3 + height * (1 - Math.min(time / top, 1));
  const colors = ["cpu", "gpu", "swap"].map(part => values["widget_frame_time_" + part + "_color"] || "#888888");
  colors.forEach((color, i) => byId("key" + i).style.setProperty("--key", color));
  const step = width / 256;
  known.slice(-256).forEach((frame, i, all) => {
    const gpu = Math.min(frame.gpu || 0, frame.total), swap = Math.min(frame.swap || 0, frame.total - gpu);
    const x = left + width - (all.length - i) * step, ends = [frame.total - gpu - swap, frame.total - swap, frame.total];
    let from = 0;
    ends.forEach((end, part) => {
      c.fillStyle = colors[part];
      c.fillRect(x, y(end), Math.max(step - (step > 4 ? 1 : 0), 1), Math.max(y(from) - y(end), 0));
      from = end;
    });
  });
  c.font = "11px system-ui, sans-serif"; c.textAlign = "right"; c.textBaseline = "middle";
  const rate = parseFloat(values.screen_rate) || 60;
  const marks = [[1000 / rate, Math.round(rate) + "/s"], [1000 / 30, "30/s"]].filter(([time]) => time < top);
  if (!marks.length) marks.push([median, ms(median)]);
  c.strokeStyle = style("--soft"); c.setLineDash([3, 4]);
  for (const [i, [time, text]] of marks.entries()) {
    if (i && y(marks[0][0]) - y(time) < 14) continue;
    c.beginPath(); c.moveTo(left, y(time)); c.lineTo(left + width, y(time)); c.stroke();
    c.fillStyle = style("--soft"); c.fillText(text, left - 6, y(time));
  }
  c.setLineDash([]);
}
function drawLine(canvas, points, color, least) {
  const c = context(canvas), width = canvas.clientWidth, height = canvas.clientHeight - 4;
  const top = Math.max(least, ...points.filter(value => value !== null)) * 1.08 || 1;
  const shown = Math.max(points.length, 50);  // six seconds at the beginning
  const x = i => width - (points.length - 1 - i) * width / (shown - 1), y = value => 2 + height * (1 - value / top);
  let from = -1;
  points.concat([null]).forEach((value, i) => {
    if (value !== null) { if (from < 0) from = i; return; }
    if (from < 0) return;
    c.beginPath();
    for (let k = from; k < i; ++k) c.lineTo(x(k), y(points[k]));
    c.strokeStyle = color; c.lineWidth = 1.5; c.lineJoin = "round"; c.stroke();
    c.lineTo(x(i - 1), canvas.clientHeight); c.lineTo(x(from), canvas.clientHeight);
    c.globalAlpha = 0.16; c.fillStyle = color; c.fill(); c.globalAlpha = 1;
    from = -1;
  });
}

// Figures

function showFigures(figures) {
  const missing = [];
  for (const figure of catalogue) {
    const now = figures[figure.id];
    if (!now) continue;
    const past = history[figure.id] || (history[figure.id] = []);
    past.push(now.value);
    if (past.length > HISTORY) past.shift();
    const cell = cells[figure.id];
    cell.box.hidden = now.value === null;
    if (now.value === null) { missing.push(figure.name + ": " + now.reason); continue; }
    cell.value.textContent = now.text;
  }
  const box = byId("missing"), list = box.querySelector("ul");
  box.hidden = !missing.length;
  box.querySelector("summary").textContent = missing.length + " figures that this machine or program does not tell";
  if (list.children.length !== missing.length) {
    list.textContent = "";
    missing.forEach(text => make("li", list, text));
  }
}
function drawFigures() {
  for (const figure of catalogue) {
    const cell = cells[figure.id];
    if (!cell.box.hidden) {
      drawLine(cell.canvas, history[figure.id] || [], values[figure.property + "_color"] || "#98a2af",
               figure.unit === "percent" ? 100 : 0);
    }
  }
}
function makeFigures() {
  byId("figures").textContent = "";
  cells = {};
  for (const figure of catalogue) {
    const box = make("div", byId("figures"));
    box.className = "figure"; box.hidden = true; box.id = "figure-" + figure.id;
    const name = figure.name[0].toUpperCase() + figure.name.slice(1);
    make("p", box, name).title = name;
    cells[figure.id] = { box, value: make("b", box), canvas: make("canvas", box) };
  }
}

// Settings

const POSITIONS = ["TOP_LEFT", "TOP_CENTER", "TOP_RIGHT", "CENTER_LEFT", "CENTER_RIGHT", "BOTTOM_LEFT", "BOTTOM_CENTER",
  "BOTTOM_RIGHT"];
// The first one takes what belongs to no other.
const GROUPS = [["status", "Overlay"], ["widget_fps", "Frame rate"], ["widget_cpu_gpu", "CPU and GPU"],
  ["widget_memory", "Memory"], ["widget_frame_time", "Frame times"], ["widget_gpu_activity_thumbnail", "Thumbnail"],
  ["widget_gpu_activity", "GPU activity"], ["keys", "Keys"]];
const groupOf = name => name === "screen_rate" ? groupOf("widget_frame_time")
  : name.startsWith("key_") ? groupOf("keys") : Math.max(0, GROUPS.findIndex(([prefix]) => name === prefix || name.startsWith(prefix + "_")));

function makeControl(row, property) {
  const set = value => send("properties", { [property.name]: String(value) });
  const label = element => { element.setAttribute("aria-label", property.name); element.title = property.name; return element; };
  if (property.type === "position") {
    const select = label(make("select", row));
    for (const position of POSITIONS) make("option", select, position.toLowerCase().replace("_", " ")).value = position;
    select.onchange = () => set(select.value);
    return value => { select.value = value; };
  }
  const input = label(make("input", row));
  if (property.type === "switch") {
    input.type = "checkbox";
    input.onchange = () => set(input.checked);
    return value => { input.checked = value === "true"; };
  }
  if (property.type === "opacity" || property.type === "scale") {
    const isScale = property.type === "scale", output = make("output", row);
    input.type = "range";
    [input.min, input.max, input.step] = isScale ? [0.5, 1.8, 0.05] : [0, 255, 1];
    input.oninput = () => { output.value = input.value; };
    input.onchange = () => set(input.value);
    return value => { input.value = value; output.value = value; };
  }
  input.type = property.type === "color" ? "color" : "text";
  input.onchange = () => set(input.value);
  return value => {
    if (input.type === "color") input.value = value.toLowerCase();
    else if (document.activeElement !== input) input.value = value;
  };
}
function makeSettings(properties) {
  const panel = byId("settings");
  panel.textContent = "";
  controls = {};
  const names = new Set(properties.map(property => property.name));
  GROUPS.forEach(([prefix, title], index) => {
    const own = properties.filter(property => groupOf(property.name) === index);
    const group = make("div", panel);
    group.className = "group";
    for (const property of own) {
      const base = property.name.replace(/_(color|position)$/, "");
      const isBeside = property.type === "color" && base !== property.name && names.has(base);
      let row = isBeside ? controls[base].row : null;
      if (!row) {
        row = make("div", group);
        row.className = "row";
        const text = property.name === prefix ? title : property.meaning === "its place" ? "place" : property.meaning;
        const part = text.split(/[:;,(]/)[0], short = part.length > 12 ? part : text;
        make("span", row, short[0].toUpperCase() + short.slice(1)).title = property.name + ": " + text;
      }
      controls[property.name] = { row, show: makeControl(row, property) };
    }
    // The colour stands before the switch.
    for (const row of group.querySelectorAll(".row")) {
      const color = row.querySelector("input[type=color]"), first = row.querySelector("input[type=checkbox]");
      if (color && first) row.insertBefore(color, first);
    }
  });
}
async function loadSettings() {
  const state = await (await ask("properties")).json();
  values = {};
  if (!Object.keys(controls).length) {
    catalogue = state.figures;
    makeFigures();
    makeSettings(state.properties);
  }
  const changed = new Set();
  for (const property of state.properties) {
    values[property.name] = property.value;
    controls[property.name].show(property.value);
    if (property.value !== property.default) changed.add(controls[property.name].row);
  }
  for (const name in controls) controls[name].row.classList.toggle("changed", changed.has(controls[name].row));
}

// The program

async function update() {
  const state = await (await ask("figures?refresh=" + seen)).json();
  if (state.settings !== settings) { settings = state.settings; await loadSettings(); }
  byId("name").textContent = document.title = state.name;
  const report = state.report;
  let about = "process " + state.process;
  if (report) {
    seen = report.refresh;
    lastReport = report;
    showFigures(report.figures);
    document.body.dataset.state = "live";
  }
  if (lastReport) {
    about += " · " + (lastReport.api === 1 ? "Vulkan" : "OpenGL") + " · " + lastReport.surface.width + " × " + lastReport.surface.height;
  }
  byId("about").textContent = about;
  showMessage(state.standstill);
  if (report) { drawFrames(report.frames); drawFigures(); }
}
async function run() {
  let failures = 0;
  for (;;) {
    try { await update(); failures = 0; } catch (error) {
      if (error.isAnswer || ++failures > 3) {
        document.body.dataset.state = "ended";
        noticeEnd = 0;
        showMessage(error.isAnswer ? error.message : "The program has ended, or 'kordanixctl serve' has.");
        if (!error.isAnswer) return;
      }
    }
    await new Promise(resolve => setTimeout(resolve, document.hidden ? 500 : 100));
  }
}
byId("take").onclick = async () => {
  byId("take").disabled = true;
  try {
    const url = URL.createObjectURL(await (await ask("picture.png")).blob()), box = byId("picture");
    URL.revokeObjectURL(box.querySelector("img").src);
    box.querySelector("img").src = box.querySelector("a").href = url;
    box.hidden = false;
    box.scrollIntoView({ behavior: "smooth", block: "nearest" });
  } catch (error) { tell(error.message); }
  byId("take").disabled = false;
};
byId("reset").onclick = () => send("reset", {});
window.onresize = () => { if (lastReport) { drawFrames(lastReport.frames); drawFigures(); } };
run();
