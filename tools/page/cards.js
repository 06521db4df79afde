// What a card of the wall and a row of the table say of a camera.
'use strict';

/// What a camera is called: its model, else its addresses.
function nameOf(camera) {
  if (camera.stray) return camera.told.mac || '(no text)';
  return camera.told.model || camera.told.ip || camera.told.mac;
}

/// State as shape, colour and word.
function stateBadge(state) { return make('span', `badge is-${state}`, icon(state), make('span', '', kStates[state])); }

/// Shows a picture, or a placeholder that says why there is none.
function fillPicture(frame, picture, name) {
  if (frame.picture === picture) return;
  frame.picture = picture;
  const say = (title, detail) => {
    frame.replaceChildren(
        make('span', 'no-picture', icon('picture'), make('span', '', title), make('small', '', detail)));
  };
  if (!picture) return say('No picture yet', '');
  const format = /\.(\w+)$/.exec(picture.file ?? '')?.[1].toUpperCase() ?? '';
  const what = [format, counted(picture.bytes, 'byte')].filter(Boolean).join(', ');
  const address = picture.data ?? (picture.file && !isReport() ? `pictures/${encodeURIComponent(picture.file)}` : null);
  if (!address)
    return say('Picture cannot be shown', picture.error ? visible(picture.error) : `cannot be read: ${what}`);
  const image = make('img');
  image.decoding = 'async';
  image.alt = `Picture of ${visible(name)}, ${clock(picture.time)}`;
  image.addEventListener('error', () => {
    if (frame.picture === picture) say('Picture cannot be shown', what);
  });
  image.src = address;
  frame.replaceChildren(image);
}

/// Each position of the value lists as a small line. most: how many positions are drawn.
function fillValues(place, camera, most) {
  const newest = camera.values.at(-1);
  if (place.newest === newest) return;
  place.newest = newest;
  if (!newest) return place.replaceChildren();
  const lines = newest.numbers.slice(0, most).map((_, position) => {
    const series = camera.values.map((list) => list.numbers[position]).filter((n) => n !== undefined);
    return make('span', 'value', sparkline(series, 48, 16), make('span', 'number', short(newest.numbers[position])));
  });
  place.replaceChildren(...lines);
}

const shortFormat = new Intl.NumberFormat('en-GB', {notation: 'compact', maximumFractionDigits: 1});
function short(number) {
  return number < 10000 ? String(number) : number < 1e15 ? shortFormat.format(number) : number.toExponential(1);
}

function addressOf(camera) { return `#camera=${encodeURIComponent(camera.key)}`; }

/// Whether the element shows this state of the camera already; else it counts as shown from here on.
function isDrawn(element, camera) {
  if (element.camera === camera && element.version === camera.version) return true;
  element.camera = camera;
  element.version = camera.version;
  element.parts.link.href = addressOf(camera);
  return false;
}

/// A card of the wall. `parts` of the element are what update() writes.
const cardTemplate = (model) => ({
  create() {
    const rows = {}, fields = make('dl', 'fields');
    for (const [name, title] of kCardRows) {
      rows[name] = make('bdi');
      fields.append(make('div', `field-${name}`, make('dt', '', title), make('dd', '', rows[name])));
    }
    const parts = {
      rows,
      badge: make('span', 'badges'),
      frame: make('span', 'frame'),
      count: make('span', 'picture-count'),
      name: make('bdi', 'name'),
      vendor: make('bdi', 'vendor'),
      values: make('span', 'values'),
      seen: make('span', 'seen'),
      link: make('a', 'link'),
    };
    parts.link.append(parts.name);
    const element = make(
        'li', 'card', make('div', 'shot', parts.frame, parts.badge, parts.count),
        make(
            'div', 'text', make('h3', '', parts.link), make('p', 'maker', parts.vendor), fields, parts.values,
            parts.seen));
    element.parts = parts;
    return element;
  },
  update(element, camera, index, size) {
    setAttribute(element, 'aria-posinset', String(index + 1));
    setAttribute(element, 'aria-setsize', String(size));
    if (isDrawn(element, camera)) return;
    const {parts} = element;
    const shared = model.sharesIp(camera);
    element.className = `card is-${camera.state}`;
    parts.badge.replaceChildren(stateBadge(camera.state), ...(shared ? [sharedBadge()] : []));
    fillPicture(parts.frame, camera.pictures.at(-1) ?? null, nameOf(camera));
    setText(parts.count, camera.pictureCount > 1 ? counted(camera.pictureCount, 'picture') : '');
    parts.frame.classList.toggle('stacked', camera.pictureCount > 1);
    setText(parts.name, visible(nameOf(camera)));
    const maker = camera.stray ? 'no known camera' : cellText(kVendorColumn, camera);
    const firmware = camera.level === 2 && camera.told.firmware ? ` · ${camera.told.firmware}` : '';
    setText(parts.vendor, visible(maker + firmware));
    for (const [name, , text] of kCardRows) setText(parts.rows[name], camera.stray ? '' : visible(text(camera)));
    fillValues(parts.values, camera, 4);
    setText(parts.seen, seenText(camera));
  },
});

const cell = (name) => (camera) => cellText(columnNamed(name), camera);
const kCardRows = [
  ['ip', 'IP',
   (c) => cell('ip')(c) +
       (c.level < 2     ? '' :
            c.told.dhcp ? ' · DHCP' :
                          ' · static')],
  ['mac', 'MAC', cell('mac')],
  ['mask', 'Mask', cell('mask')],
  ['gateway', 'Gateway', cell('gateway')],
  ['plugin', 'Plug-in', cell('plugin')],
  ['type', 'Type', cell('type')],
];

function seenText(camera) {
  const first = clock(camera.first), last = clock(camera.last);
  const events = camera.eventCount > 0 ? ` · ${counted(camera.eventCount, 'event')}` : '';
  if (!last) return events.slice(3);  // lines without times
  return (first === last ? `seen ${last}` : `seen ${first} – ${last}`) + events;
}

function sharedBadge() { return make('span', 'badge is-shared', icon('shared'), make('span', '', 'Same IP')); }

/// A row of the table.
const rowTemplate = (model) => ({
  create() {
    const parts = {frame: make('span', 'frame small'), link: make('a', 'link'), cells: {}};
    const element = make('tr');
    for (const column of kColumns) {
      const place = make(column.name === 'mac' ? 'th' : 'td', `column-${column.name}`);
      const text = parts.cells[column.name] = make('bdi', column.name === 'values' ? 'values' : '');
      if (column.name === 'mac') {
        place.scope = 'row';
        parts.link.append(text);
        place.append(parts.frame, parts.link);
      } else {
        place.append(text);
      }
      element.append(place);
    }
    element.parts = parts;
    return element;
  },
  update(element, camera, index) {
    setAttribute(element, 'aria-rowindex', String(index + 2));  // the head is the first
    if (isDrawn(element, camera)) return;
    const {parts} = element;
    element.className = `row is-${camera.state}`;
    fillPicture(parts.frame, camera.pictures.at(-1) ?? null, nameOf(camera));
    for (const column of kColumns) {
      const place = parts.cells[column.name];
      if (column.name === 'state')
        place.replaceChildren(stateBadge(camera.state), ...(model.sharesIp(camera) ? [sharedBadge()] : []));
      else if (column.name === 'values')
        fillValues(place, camera, 3);
      else
        setText(place, camera.stray && column.needs > 0 ? '' : visible(cellText(column, camera)));
    }
  },
});
