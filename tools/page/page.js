// Takes the lines in, draws once per frame, and answers to what people do.
"use strict";

const kSilence = 5000;       // milliseconds without a line until tarnfind counts as silent
const kChoicesPause = 250;   // milliseconds between two writings of the filters' choices
const kAnnouncePause = 5000; // milliseconds between two announcements to a screen reader

const byId = (id) => document.getElementById(id);
const isReport = () => byId("lines") !== null;

const model = new Model();
const wall = new VirtualList(byId("cameras"), byId("wall"), cardTemplate(model));
const table = new VirtualList(byId("cameras"), byId("rows"), rowTemplate(model));

const page = {
  view: "wall", query: new Query(), wanted: "",  // as the address says
  shown: [],              // the cameras that the query shows, in order
  arranging: null,        // the work of a new arrangement
  pending: new Set(),     // touched since that began
  broken: "",             // why no more lines come, though the last one has not come
  heard: performance.now(), announced: 0, toAnnounce: {new: 0, changed: 0, gone: 0}, said: "",
  frameAsked: false, choicesDrawn: -Infinity, lastOpened: null,
};

const list = () => (page.view === "table" ? table : wall);

const details = new Details(byId("details"), model, {
  close: () => {
    if (readAddress().camera) writeAddress({camera: null});
    const index = page.shown.indexOf(page.lastOpened);
    if (index >= 0) list().show(index);
  },
  neighbour: (step) => {
    const next = page.shown[page.shown.indexOf(details.camera) + step];
    if (next) writeAddress({camera: next.key});
  },
});

// ---- the address's fragment keeps what is shown ----

function readAddress() {
  return Object.fromEntries(new URLSearchParams(location.hash.slice(1)));
}

/// Changes members of the fragment; null takes one out. Opening a camera makes an entry, so that Back closes it.
function writeAddress(changes) {
  const before = readAddress();
  const members = Object.entries({...before, ...changes}).filter(([, value]) => value !== null);
  const address = `#${new URLSearchParams(members)}`;
  if (changes.camera && !before.camera) history.pushState(null, "", address);
  else history.replaceState(null, "", address);
  applyAddress();
}

function applyAddress() {
  const address = readAddress();
  const view = address.view === "table" ? "table" : "wall";
  if (view !== page.view) {
    list().clear();
    page.view = view;
  }
  document.body.dataset.view = view;
  for (const name of ["wall", "table"]) setAttribute(byId(`show-${name}`), "aria-pressed", String(name === view));
  const query = new Query({
    text: address.q, state: address.state, vendor: address.vendor ?? null, type: address.type ?? null, sort: address.sort,
    descending: address.order === "descending",
  });
  if (JSON.stringify(query) !== JSON.stringify(page.query)) {
    page.query = query;
    startArranging();
  }
  if (document.activeElement !== byId("search")) byId("search").value = query.text;
  byId("sort").value = query.column?.name ?? "";
  setAttribute(byId("order"), "aria-pressed", String(query.descending));
  setText(byId("order").querySelector("span"), query.descending ? "Descending" : "Ascending");
  drawHeads();
  page.wanted = address.camera ?? "";
  openWanted();
  askFrame();
}

function openWanted() {
  if (!page.wanted) {
    if (byId("details").open) byId("details").close();
    return;
  }
  const camera = model.byKey.get(page.wanted) ?? null;
  if (camera ? details.camera === camera : !model.ended && !page.broken) return;  // it may still come
  if (!camera && byId("details").open) return;
  page.lastOpened = camera;
  details.open(camera, page.wanted);
}

// ---- drawing ----

function askFrame() {
  if (page.frameAsked) return;
  page.frameAsked = true;
  requestAnimationFrame(drawFrame);
}

function startArranging() {
  page.arranging = arrange(model, page.query);
  page.pending.clear();
}

/// Brings `shown` up to date. A long arrangement takes several frames, and the old order stays until it is done.
function updateShown() {
  const touched = model.takeTouched();
  if (page.arranging) {
    for (const camera of touched) page.pending.add(camera);
    const step = page.arranging.next();
    if (!step.done) return askFrame();
    page.arranging = null;
    page.shown = rearranged(step.value, page.pending, model, page.query);
    page.pending = new Set();
  } else if (touched.size > 0) {
    page.shown = rearranged(page.shown, touched, model, page.query);
  }
}

function drawFrame() {
  page.frameAsked = false;
  updateShown();
  list().draw(page.shown);  // first, because it reads the layout
  drawState();
  drawFilters();
  drawEmpty();
  if (page.wanted && !details.camera) openWanted();
  details.draw();
  announce();
}

/// What goes on, as kind (for colour and shape), text, and how far it has come.
function currentState() {
  const {state, summary, error} = model;
  if (error) return {kind: "error", text: error.step ? "No channel" : "Search failed"};
  if (summary) {
    const took = summary.seconds === undefined ? "" : ` after ${seconds(summary.seconds)}`;
    return {kind: "ended", text: summary.interrupted ? `Search interrupted${took}` : `Search ended${took}`};
  }
  if (page.broken) return {kind: "error", text: "tarnfind has gone"};
  if (isReport()) return {kind: "ended", text: "Lines without an end"};
  const silent = performance.now() - page.heard;
  if (silent > kSilence) return {kind: "silent", text: `No sign of life for ${Math.floor(silent / 1000)} s`};
  if (!state || state.state === "connecting")
    return {kind: "connecting", text: `Opening the channel${state ? ` · ${Math.floor(state.seconds)} s` : ""}`};
  const planned = state.planned ? ` of ${state.planned} s` : "";
  return {kind: "searching", text: `Searching · ${Math.floor(state.seconds)} s${planned}`, part: state.planned ? state.seconds / state.planned : null};
}

function drawState() {
  const current = currentState();
  byId("state").className = `is-${current.kind}`;
  setText(byId("state-text"), current.text);
  const progress = byId("progress");
  progress.hidden = current.part === null || current.part === undefined;
  if (!progress.hidden) progress.value = Math.min(current.part, 1);
  document.title = `${model.counts.all} cameras · ${current.text}`;
  setText(byId("about"), isReport() && model.firstTime ? `Report of ${dateOf(model.firstTime)}, ${clock(model.firstTime)} to ${clock(model.lastTime)}` : "");
  setText(byId("totals"), `${counted(model.pictures, "picture")} · ${counted(model.valueLists, "value list")} · ${listText()}`);
  drawAlert();
  drawRemarks();
}

function listText() {
  const state = model.summary?.list ?? model.state?.list ?? "under way";
  return {arrived: "server's list arrived", failed: "server's list failed"}[state] ??
      (model.ended ? "server's list did not arrive" : "server's list under way");
}

/// The loud one: nothing more will come.
function drawAlert() {
  const alert = byId("alert");
  const {error} = model;
  const title = error ? (error.step ? `No channel: the way to the server ended at step “${error.step}”` : "The search failed") : page.broken && !model.ended ? "tarnfind has gone" : "";
  if (alert.dataset.title === title) return;
  alert.dataset.title = title;
  if (!title) return alert.replaceChildren();
  const text = error ? error.error : `${page.broken} What is shown is as it was at ${clock(Date.now())}; start tarnfind page again for a new search.`;
  const next = error?.step && !error.error.includes("tarnfind check") ? [make("p", "", "Next: ", make("code", "", "tarnfind check"), " goes from the library to the server's first answer and shows where the way ends.")] : [];
  alert.replaceChildren(icon("alert"), make("div", "", make("h2", "", title), make("p", "", isolated(text)), ...next));
}

function drawRemarks() {
  const remarks = [...model.problems];
  const list = model.summary ?? model.state;
  if (list?.list === "failed") remarks.push(`The list of known cameras is missing, so known ones count as new: ${list.listError ?? ""}`);
  if (model.summary?.list === "under way") remarks.push("The list of known cameras has not arrived, so known ones count as new");
  if (model.omitted > 0) remarks.push(`${counted(model.omitted, "earlier line")} of this search are no longer kept by tarnfind, so pictures and events from the beginning may be missing`);
  if (model.strayOverflow > 0) remarks.push(`${counted(model.strayOverflow, "picture or value list")} of no known camera are not shown, because there are too many`);
  const key = remarks.join("\n");
  if (byId("remarks").dataset.key === key) return;
  byId("remarks").dataset.key = key;
  byId("remarks").replaceChildren(...remarks.map((text) => make("li", "", icon("alert"), isolated(text))));
}

function drawFilters() {
  for (const chip of document.querySelectorAll("#states button")) {
    const set = chip.dataset.state;
    const count = model.counts[set || "all"];
    setText(chip.querySelector(".count"), grouped(count));
    setAttribute(chip, "aria-pressed", String(page.query.state === set));
    if (set === "shared" || set === "stray") chip.hidden = count === 0 && page.query.state !== set;
  }
  if (performance.now() - page.choicesDrawn < kChoicesPause) return;
  page.choicesDrawn = performance.now();
  drawChoices(byId("vendor"), "All vendors", model.vendors, page.query.vendor);
  drawChoices(byId("type"), "All types", model.types, page.query.type);
}

const kMostChoices = 200;

/// The options of a filter, each with the number of its cameras. An open box is left alone.
function drawChoices(select, all, counts, chosen) {
  const choices = [...counts].sort((a, b) => (a[0] < b[0] ? -1 : 1)).slice(0, kMostChoices);
  if (chosen !== null && !choices.some(([text]) => text === chosen)) choices.push([chosen, counts.get(chosen) ?? 0]);
  const key = JSON.stringify([choices, chosen]);
  if (select.dataset.key === key || document.activeElement === select) return;
  select.dataset.key = key;
  const option = (value, text, selected) => {
    const element = make("option", "", text);
    element.value = value;
    element.selected = selected;
    return element;
  };
  // "=" before a value tells the empty text from all.
  select.replaceChildren(option("", all, chosen === null),
      ...choices.map(([text, count]) => option(`=${text}`, `${visible(text) || "(empty)"} (${grouped(count)})`, text === chosen)));
}

function drawEmpty() {
  const empty = byId("empty");
  const filtered = model.counts.all + model.counts.stray > 0;
  const nothing = page.shown.length === 0 && !page.arranging;
  empty.hidden = !nothing;
  byId("clear").hidden = !filtered;
  if (!nothing) return;
  setText(empty.querySelector("p"), filtered ? "No camera matches the search and the filters." :
      model.error || page.broken ? "No camera arrived." :
      model.summary ? (model.summary.list === "arrived" ?
          "Nothing arrived, and the server's list is empty; tarnfind check shows how far the way to it goes." : "Nothing arrived.") :
      "Waiting for the first camera…");
}

/// Says at most every few seconds what has happened to how many cameras.
function announce() {
  const now = performance.now(), state = currentState();
  const parts = [];
  if (state.text !== page.said && !["searching", "connecting", "silent"].includes(state.kind)) parts.push(state.text);
  else if (now - page.announced < kAnnouncePause) return;
  page.said = state.text;
  const counts = {new: model.counts.new, changed: model.counts.changed, gone: model.counts.gone};
  for (const [what, count] of Object.entries(counts))
    if (count > page.toAnnounce[what]) parts.push(`${count - page.toAnnounce[what]} ${what}`);
  if (parts.length === 0) return;
  page.announced = now;
  page.toAnnounce = counts;
  setText(byId("live"), `${parts.join(", ")}; ${counted(model.counts.all, "camera")}`);
}

// ---- the lines ----

/// Takes the lines in; many at once let frames pass between.
async function takeLines(texts) {
  for (let i = 0, deadline = performance.now() + kPieceOfWork; i < texts.length; ++i) {
    if (texts[i].trim()) model.take(texts[i]);
    if (performance.now() < deadline) continue;
    askFrame();
    await new Promise((resume) => setTimeout(resume));
    deadline = performance.now() + kPieceOfWork;
  }
  page.heard = performance.now();
  askFrame();
}

async function readEvents() {
  try {
    const response = await fetch("events", {cache: "no-store"});
    if (!response.ok) throw new Error(`it answered with status ${response.status}`);
    const reader = response.body.pipeThrough(new TextDecoderStream()).getReader();
    for (let rest = "";;) {
      const {done, value} = await reader.read();
      if (done) break;
      const texts = (rest + value).split("\n");
      rest = texts.pop();
      await takeLines(texts);
    }
    if (!model.ended) page.broken = "Its answer broke off before the search ended.";
  } catch (error) {
    if (!model.ended) page.broken = `Nothing can be read from it: ${error.message}.`;
  }
  askFrame();
}

// ---- what people do ----

function fillPageOnce() {
  byId("sort").append(...[["", "Arrival"], ...kColumns.map((column) => [column.name, column.title])].map(([name, title]) => {
    const option = make("option", "", title);
    option.value = name;
    return option;
  }));
  for (const column of kColumns) {
    const button = make("button", "", column.title, icon("order"));
    button.addEventListener("click", () => sortBy(column.name, page.query.sort === column.name && !page.query.descending));
    const head = make("th", `column-${column.name}`, button);
    head.scope = "col";
    byId("heads").append(head);
  }
}

function sortBy(name, descending) {
  writeAddress({sort: name || null, order: descending ? "descending" : null});
}

function drawHeads() {
  for (const [i, column] of kColumns.entries()) {
    const sorted = page.query.sort === column.name;
    setAttribute(byId("heads").children[i], "aria-sort", sorted ? (page.query.descending ? "descending" : "ascending") : null);
  }
}

function listen() {
  byId("show-wall").addEventListener("click", () => writeAddress({view: null}));
  byId("show-table").addEventListener("click", () => writeAddress({view: "table"}));
  byId("search").addEventListener("input", (event) => writeAddress({q: event.target.value || null}));
  byId("sort").addEventListener("change", (event) => sortBy(event.target.value, page.query.descending));
  byId("order").addEventListener("click", () => sortBy(page.query.sort, !page.query.descending));
  byId("clear").addEventListener("click", () => {
    byId("search").value = "";
    writeAddress({q: null, state: null, vendor: null, type: null});
  });
  for (const name of ["vendor", "type"]) {
    byId(name).addEventListener("change", (event) => {
      event.target.blur();
      const {value} = event.target;
      writeAddress({[name]: value ? value.slice(1) : null});
    });
  }
  for (const chip of document.querySelectorAll("#states button"))
    chip.addEventListener("click", () => writeAddress({state: page.query.state === chip.dataset.state ? null : chip.dataset.state || null}));
  byId("cameras").addEventListener("scroll", askFrame, {passive: true});
  byId("cameras").addEventListener("click", openByClick);
  byId("details").addEventListener("click", openByClick);
  new ResizeObserver(() => {
    list().measure();
    askFrame();
  }).observe(byId("cameras"));
  addEventListener("hashchange", applyAddress);
  addEventListener("keydown", onKey);
  addEventListener("beforeprint", () => setPrinting(true));
  addEventListener("afterprint", () => setPrinting(false));
}

/// A click anywhere on a card or row opens it. The link's own address would drop what else the fragment says.
function openByClick(event) {
  if (event.ctrlKey || event.metaKey || event.shiftKey || getSelection().toString()) return;
  const link = event.target.closest(".link") ?? event.target.closest(".card, .row")?.querySelector(".link");
  if (!link) return;
  event.preventDefault();
  writeAddress({camera: new URLSearchParams(link.hash.slice(1)).get("camera")});
}

function onKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey || byId("details").open) return;
  const inField = event.target.closest("input, select, textarea") !== null;
  if (event.key === "/" && !inField) {
    event.preventDefault();
    byId("search").select();
    byId("search").focus();
  } else if (event.key === "Escape" && event.target.id === "search") {
    event.target.value = "";
    writeAddress({q: null});
  } else if (event.key === "ArrowDown" && event.target.id === "search") {
    event.preventDefault();
    if (page.shown.length > 0) list().show(0);
  } else if (!inField && byId("cameras").contains(event.target) && list().moveBy(event.key)) {
    event.preventDefault();
  }
}

function setPrinting(printing) {
  list().printing = printing;
  const left = page.shown.length - kMostPrinted;
  setText(byId("not-printed"), printing && left > 0 ? `${counted(left, "more camera")} not printed` : "");
  list().draw(page.shown);
}

fillPageOnce();
listen();
if (isReport()) takeLines(byId("lines").textContent.split("\n"));
else {
  readEvents();
  setInterval(askFrame, 1000);  // the state says how long nothing has been heard
}
applyAddress();
startArranging();
