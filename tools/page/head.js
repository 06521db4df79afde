// The head of the page: what goes on, what is wrong, how many cameras there are, and what a screen reader hears.
'use strict';

const kSilence = 5000;        // milliseconds without a line until tarnfind counts as silent
const kChoicesPause = 250;    // milliseconds between two writings of the filters' choices
const kAnnouncePause = 5000;  // milliseconds between two announcements to a screen reader
const kMostChoices = 200;     // options of a filter

/// What goes on, as kind (for colour and shape), text, and how far it has come.
function currentState() {
  const {state, summary, error} = model;
  if (error) return {kind: 'error', text: error.exitCode === 3 ? 'No channel' : 'Search failed'};
  if (summary) {
    const took = summary.seconds === undefined ? '' : ` after ${seconds(summary.seconds)}`;
    return {kind: 'ended', text: summary.interrupted ? `Search interrupted${took}` : `Search ended${took}`};
  }
  if (page.broken) return {kind: 'error', text: 'tarnfind has gone'};
  if (isReport()) return {kind: 'ended', text: 'Lines without an end'};
  const silent = performance.now() - page.heard;
  if (silent > kSilence) return {kind: 'silent', text: `No sign of life for ${Math.floor(silent / 1000)} s`};
  if (!state || state.state === 'connecting')
    return {kind: 'connecting', text: `Opening the channel${state ? ` · ${Math.floor(state.seconds)} s` : ''}`};
  const planned = state.planned ? ` of ${state.planned} s` : '';
  return {
    kind: 'searching',
    text: `Searching · ${Math.floor(state.seconds)} s${planned}`,
    part: state.planned ? state.seconds / state.planned : null
  };
}

function drawState() {
  const current = currentState();
  byId('state').className = `is-${current.kind}`;
  setText(byId('state-text'), current.text);
  const progress = byId('progress');
  progress.hidden = current.part === null || current.part === undefined;
  if (!progress.hidden) progress.value = Math.min(current.part, 1);
  document.title = `${counted(model.counts.all, 'camera')} · ${current.text}`;
  setText(
      byId('about'),
      isReport() && model.firstTime ?
          `Report of ${dateOf(model.firstTime)}, ${clock(model.firstTime)} to ${clock(model.lastTime)}` :
          '');
  setText(
      byId('totals'),
      `${counted(model.pictures, 'picture')} · ${counted(model.valueLists, 'value list')} · ${listText()}`);
  drawAlert();
  drawRemarks();
}

function listText() {
  const state = model.summary?.list ?? model.state?.list ?? 'under way';
  return {arrived: 'server\'s list arrived', failed: 'server\'s list failed'}[state] ??
      (model.ended ? 'server\'s list did not arrive' : 'server\'s list under way');
}

/// The alert: nothing more will come.
function drawAlert() {
  const alert = byId('alert');
  const {error} = model;
  const noChannel = `No channel: the way to the server ended at step “${error?.step}”`;
  const failed = error?.exitCode === 3 ? noChannel : 'The search failed';
  const title = error ? failed : page.broken && !model.ended ? 'tarnfind has gone' : '';
  if (alert.dataset.title === title) return;
  alert.dataset.title = title;
  if (!title) return alert.replaceChildren();
  const text = error ?
      error.error :
      `${page.broken} What is shown is as it was at ${clock(Date.now())}; start tarnfind page again for a new search.`;
  const next = error?.exitCode === 3 && !error.error.includes('tarnfind check') ?
      [make(
          'p', '', 'Next: ', make('code', '', 'tarnfind check'),
          ' goes from the library to the server\'s first answer and shows where the way ends.')] :
      [];
  alert.replaceChildren(icon('alert'), make('div', '', make('h2', '', title), make('p', '', isolated(text)), ...next));
}

function drawRemarks() {
  const remarks = [...model.problems];
  const list = model.summary ?? model.state;
  if (list?.list === 'failed')
    remarks.push(`The list of known cameras is missing, so known ones count as new: ${list.listError ?? ''}`);
  if (model.summary?.list === 'under way')
    remarks.push('The list of known cameras has not arrived, so known ones count as new');
  if (model.omitted > 0) {
    const lines = counted(model.omitted, 'earlier line');
    remarks.push(`${lines} of this search are not kept, so first pictures and events may be missing`);
  }
  if (model.strayOverflow > 0) {
    const lost = counted(model.strayOverflow, 'picture or value list');
    remarks.push(`${lost} of no known camera not shown, because there are too many`);
  }
  const key = remarks.join('\n');
  if (byId('remarks').dataset.key === key) return;
  byId('remarks').dataset.key = key;
  byId('remarks').replaceChildren(...remarks.map((text) => make('li', '', icon('alert'), isolated(text))));
}

function drawFilters() {
  for (const chip of document.querySelectorAll('#states button')) {
    const set = chip.dataset.state;
    const count = model.counts[set || 'all'];
    setText(chip.querySelector('.count'), grouped(count));
    setAttribute(chip, 'aria-pressed', String(page.query.state === set));
    if (set === 'shared' || set === 'stray') chip.hidden = count === 0 && page.query.state !== set;
  }
  if (performance.now() - page.choicesDrawn < kChoicesPause) return;
  page.choicesDrawn = performance.now();
  drawChoices(byId('vendor'), 'All vendors', model.vendors, page.query.vendor);
  drawChoices(byId('type'), 'All types', model.types, page.query.type);
}

/// The options of a filter, each with the number of its cameras. An open box is left alone.
function drawChoices(select, all, counts, chosen) {
  const choices = [...counts].sort((a, b) => (a[0] < b[0] ? -1 : 1)).slice(0, kMostChoices);
  if (chosen !== null && !choices.some(([text]) => text === chosen)) choices.push([chosen, counts.get(chosen) ?? 0]);
  const key = JSON.stringify([choices, chosen]);
  if (select.dataset.key === key || document.activeElement === select) return;
  select.dataset.key = key;
  const option = (value, text, selected) => {
    const element = make('option', '', text);
    element.value = value;
    element.selected = selected;
    return element;
  };
  // "=" before a value tells the empty text from all.
  select.replaceChildren(
      option('', all, chosen === null),
      ...choices.map(
          ([text, count]) => option(`=${text}`, `${visible(text) || '(empty)'} (${grouped(count)})`, text === chosen)));
}

function drawEmpty() {
  const empty = byId('empty');
  const filtered = model.counts.all + model.counts.stray > 0;
  const nothing = page.shown.length === 0 && !page.arranging;
  empty.hidden = !nothing;
  byId('clear').hidden = !filtered;
  if (!nothing) return;
  setText(
      empty.querySelector('p'),
      filtered ?
          'No camera matches the search and the filters.' :
          model.error || page.broken ?
          'No camera arrived.' :
          model.summary ?
          (model.summary.list === 'arrived' ?
               'Nothing arrived, and the server\'s list is empty; tarnfind check shows how far the way to it goes.' :
               'Nothing arrived.') :
          'Waiting for the first camera…');
}

/// Says at most every few seconds what has happened to how many cameras.
function announce() {
  const now = performance.now(), state = currentState();
  const parts = [];
  if (state.text !== page.said && !['searching', 'connecting', 'silent'].includes(state.kind))
    parts.push(state.text);
  else if (now - page.announced < kAnnouncePause)
    return;
  page.said = state.text;
  const counts = {new: model.counts.new, changed: model.counts.changed, gone: model.counts.gone};
  for (const [what, count] of Object.entries(counts))
    if (count > page.toAnnounce[what]) parts.push(`${count - page.toAnnounce[what]} ${what}`);
  if (parts.length === 0) return;
  page.announced = now;
  page.toAnnounce = counts;
  setText(byId('live'), `${parts.join(', ')}; ${counted(model.counts.all, 'camera')}`);
}
