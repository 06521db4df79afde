// Takes the lines in, draws once per frame, and reacts to input.
'use strict';

const byId = (id) => document.getElementById(id);
const isReport = () => byId('lines') !== null;

const model = new Model();
const wall = new VirtualList(byId('cameras'), byId('wall'), cardTemplate(model));
const table = new VirtualList(byId('cameras'), byId('rows'), rowTemplate(model));

const page = {
  view: 'wall',
  query: new Query(),
  wanted: '',          // as the address says
  shown: [],           // the cameras that the query shows, in order
  arranging: null,     // the work of a new arrangement
  pending: new Set(),  // touched since that began
  broken: '',          // why no more lines come, though the last one has not come
  heard: performance.now(),
  announced: 0,
  toAnnounce: {new: 0, changed: 0, gone: 0},
  said: '',
  frameAsked: false,
  choicesDrawn: -Infinity,
  lastOpened: null,
};

const list = () => (page.view === 'table' ? table : wall);

const details = new Details(byId('details'), model, {
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

function readAddress() { return Object.fromEntries(new URLSearchParams(location.hash.slice(1))); }

/// Changes members of the fragment; null takes one out. Opening a camera adds to the history, so that Back closes it.
function writeAddress(changes) {
  const before = readAddress();
  const members = Object.entries({...before, ...changes}).filter(([, value]) => value !== null);
  const address = `#${new URLSearchParams(members)}`;
  if (changes.camera && !before.camera)
    history.pushState(null, '', address);
  else
    history.replaceState(null, '', address);
  applyAddress();
}

function applyAddress() {
  const address = readAddress();
  const view = address.view === 'table' ? 'table' : 'wall';
  if (view !== page.view) {
    list().clear();
    page.view = view;
  }
  document.body.dataset.view = view;
  for (const name of ['wall', 'table']) setAttribute(byId(`show-${name}`), 'aria-pressed', String(name === view));
  const query = new Query({
    text: address.q,
    state: address.state,
    vendor: address.vendor ?? null,
    type: address.type ?? null,
    sort: address.sort,
    descending: address.order === 'descending',
  });
  if (JSON.stringify(query) !== JSON.stringify(page.query)) {
    page.query = query;
    startArranging();
  }
  if (document.activeElement !== byId('search')) byId('search').value = query.text;
  byId('sort').value = query.column?.name ?? '';
  setAttribute(byId('order'), 'aria-pressed', String(query.descending));
  setText(byId('order').querySelector('span'), query.descending ? 'Descending' : 'Ascending');
  drawHeads();
  page.wanted = address.camera ?? '';
  openWanted();
  askFrame();
}

function openWanted() {
  if (!page.wanted) {
    if (byId('details').open) byId('details').close();
    return;
  }
  const camera = model.byKey.get(page.wanted) ?? null;
  if (camera ? details.camera === camera : !model.ended && !page.broken) return;  // it may still come
  if (!camera && byId('details').open) return;
  page.lastOpened = camera;
  details.open(camera, page.wanted);
}

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
    const response = await fetch('events', {cache: 'no-store'});
    if (!response.ok) throw new Error(`it answered with status ${response.status}`);
    const reader = response.body.pipeThrough(new TextDecoderStream()).getReader();
    for (let rest = '';;) {
      const {done, value} = await reader.read();
      if (done) break;
      const texts = (rest + value).split('\n');
      rest = texts.pop();
      await takeLines(texts);
    }
    if (!model.ended) page.broken = 'Its answer broke off before the search ended.';
  } catch (error) {
    if (!model.ended) page.broken = `Nothing can be read from it: ${error.message}.`;
  }
  askFrame();
}

function fillPageOnce() {
  byId('sort').append(
      ...[['', 'Arrival'], ...kColumns.map((column) => [column.name, column.title])].map(([name, title]) => {
        const option = make('option', '', title);
        option.value = name;
        return option;
      }));
  for (const column of kColumns) {
    const button = make('button', '', column.title, icon('order'));
    button.addEventListener(
        'click', () => sortBy(column.name, page.query.sort === column.name && !page.query.descending));
    const head = make('th', `column-${column.name}`, button);
    head.scope = 'col';
    byId('heads').append(head);
  }
}

function sortBy(name, descending) { writeAddress({sort: name || null, order: descending ? 'descending' : null}); }

function drawHeads() {
  for (const [i, column] of kColumns.entries()) {
    const sorted = page.query.sort === column.name;
    setAttribute(
        byId('heads').children[i], 'aria-sort', sorted ? (page.query.descending ? 'descending' : 'ascending') : null);
  }
}

function listen() {
  byId('show-wall').addEventListener('click', () => writeAddress({view: null}));
  byId('show-table').addEventListener('click', () => writeAddress({view: 'table'}));
  byId('search').addEventListener('input', (event) => writeAddress({q: event.target.value || null}));
  byId('sort').addEventListener('change', (event) => sortBy(event.target.value, page.query.descending));
  byId('order').addEventListener('click', () => sortBy(page.query.sort, !page.query.descending));
  byId('clear').addEventListener('click', () => {
    byId('search').value = '';
    writeAddress({q: null, state: null, vendor: null, type: null});
  });
  for (const name of ['vendor', 'type']) {
    byId(name).addEventListener('change', (event) => {
      event.target.blur();
      const {value} = event.target;
      writeAddress({[name]: value ? value.slice(1) : null});
    });
  }
  for (const chip of document.querySelectorAll('#states button'))
    chip.addEventListener(
        'click',
        () => writeAddress({state: page.query.state === chip.dataset.state ? null : chip.dataset.state || null}));
  byId('cameras').addEventListener('scroll', askFrame, {passive: true});
  byId('cameras').addEventListener('click', openByClick);
  byId('details').addEventListener('click', openByClick);
  new ResizeObserver(() => {
    list().measure();
    askFrame();
  }).observe(byId('cameras'));
  addEventListener('hashchange', applyAddress);
  addEventListener('keydown', onKey);
  addEventListener('beforeprint', () => setPrinting(true));
  addEventListener('afterprint', () => setPrinting(false));
}

/// A click anywhere on a card or row opens it. The link's own address would drop what else the fragment says.
function openByClick(event) {
  if (event.ctrlKey || event.metaKey || event.shiftKey || getSelection().toString()) return;
  const link = event.target.closest('.link') ?? event.target.closest('.card, .row')?.querySelector('.link');
  if (!link) return;
  event.preventDefault();
  writeAddress({camera: new URLSearchParams(link.hash.slice(1)).get('camera')});
}

function onKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey || byId('details').open) return;
  const inField = event.target.closest('input, select, textarea') !== null;
  if (event.key === '/' && !inField) {
    event.preventDefault();
    byId('search').select();
    byId('search').focus();
  } else if (event.key === 'Escape' && event.target.id === 'search') {
    event.target.value = '';
    writeAddress({q: null});
  } else if (event.key === 'ArrowDown' && event.target.id === 'search') {
    event.preventDefault();
    if (page.shown.length > 0) list().show(0);
  } else if (!inField && byId('cameras').contains(event.target) && list().moveBy(event.key)) {
    event.preventDefault();
  }
}

function setPrinting(printing) {
  list().printing = printing;
  const left = page.shown.length - kMostPrinted;
  setText(byId('not-printed'), printing && left > 0 ? `${counted(left, 'more camera')} not printed` : '');
  list().draw(page.shown);
}

fillPageOnce();
listen();
if (isReport())
  takeLines(byId('lines').textContent.split('\n'));
else {
  readEvents();
  setInterval(askFrame, 1000);  // the state says how long nothing has been heard
}
applyAddress();
startArranging();
