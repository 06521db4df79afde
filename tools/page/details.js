// The view of one camera: a dialog with all that was told of it.
'use strict';

/// Members of the camera's object, with what people call them, in the order of the view.
const kFields = [
  ['mac', 'MAC'],
  ['ip', 'IP'],
  ['subnetMask', 'Mask'],
  ['gateway', 'Gateway'],
  ['dhcp', 'DHCP'],
  ['vendor', 'Vendor'],
  ['model', 'Model'],
  ['firmware', 'Firmware'],
  ['plugin', 'Plug-in'],
  ['user', 'User'],
  ['password', 'Password'],
  ['deviceFlags', 'Device flags'],
  ['flag17', 'Flag 17'],
  ['vendorTypeMask', 'Vendor mask'],
  ['icb', 'ICB'],
  ['gcb', 'GCB'],
  ['ctt', 'CTT'],
];
const kFieldTitles = new Map([...kFields, ['type', 'Type']]);

const kEventWords = {
  listed: 'In the server\'s list',
  new: 'New',
  changed: 'Changed',
  same: 'Told again',
  gone: 'Gone',
  known: 'Known',
  picture: 'Picture',
  values: 'Values',
};

const kMostOthers = 10;  // links to cameras with the same address

class Details {
  /// close: what to do when the dialog is closed. neighbour: given -1 or 1, opens another camera.
  constructor(dialog, model, {close, neighbour}) {
    Object.assign(this, {dialog, model, camera: null, picture: null, version: -1});
    this.body = dialog.querySelector('.body');
    this.places = {};
    const place = (name) => (this.places[name] = make(name === 'remarks' ? 'div' : 'section', name));
    this.columns = [
      make('div', 'left', ...['pictures', 'value-lists'].map(place)),
      make('div', 'right', ...['remarks', 'all-fields', 'events', 'json'].map(place))
    ];
    this.thumbs = new WeakMap();  // picture -> its button, so that no picture is asked for twice
    this.frame = make('div', 'frame large');
    this.title = dialog.querySelector('h2');
    dialog.addEventListener('close', () => {
      this.camera = null;
      close();
    });
    dialog.addEventListener('click', (event) => {
      if (event.target === dialog) dialog.close();  // beside the view
    });
    dialog.querySelector('.close').addEventListener('click', () => dialog.close());
    dialog.querySelector('.previous').addEventListener('click', () => neighbour(-1));
    dialog.querySelector('.next').addEventListener('click', () => neighbour(1));
    dialog.addEventListener('keydown', (event) => {
      const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
      if (step && !event.target.closest('.thumbs, .scrolls')) neighbour(step);
    });
  }

  /// camera: null for an address that the search does not know.
  open(camera, key) {
    this.camera = camera;
    this.picture = null;
    this.version = -1;
    if (!this.dialog.open) this.dialog.showModal();
    this.body.scrollTop = 0;
    if (camera) {
      this.body.replaceChildren(...this.columns);
      return this.draw();
    }
    setText(this.title, 'No such camera');
    this.dialog.querySelector('.badges').replaceChildren();
    this.body.replaceChildren(make('p', 'empty', 'This search has not told of ', isolated(key), '.'));
  }

  /// Writes what has changed since the last time.
  draw() {
    const {camera} = this;
    if (!camera || camera.version === this.version) return;
    this.version = camera.version;
    setText(this.title, visible(nameOf(camera)));
    this.dialog.querySelector('.badges').replaceChildren(
        stateBadge(camera.state), ...(this.model.sharesIp(camera) ? [sharedBadge()] : []));
    const told = JSON.stringify([camera.told, camera.type, camera.listed]);
    this.write('pictures', camera.pictureCount, () => this.makePictures());
    this.write('value-lists', camera.valueLists, () => this.makeValues());
    this.write(
        'remarks', `${told} ${this.others().map((other) => other.key)} ${camera.twiceAt}`, () => this.makeRemarks());
    this.write('all-fields', `${told} ${camera.last}`, () => this.makeFields());
    this.write('events', camera.events.length + camera.eventsLost, () => this.makeEvents());
    this.write('json', told, () => this.makeJson());
  }

  /// Builds a section anew where its key has changed, so that focus and selection stay in the others.
  write(name, key, build) {
    const place = this.places[name];
    const whole = `${this.camera.key} ${key}`;
    if (place.key === whole) return;
    place.key = whole;
    place.replaceChildren(...build());
  }

  /// Other cameras that are present with the same IP address.
  others() {
    const {camera, model} = this;
    return model.sharesIp(camera) ? [...model.byIp.get(camera.told.ip)].filter((other) => other !== camera) : [];
  }

  makePictures() {
    const {camera} = this, caption = make('p', 'caption'), thumbs = make('div', 'thumbs');
    const choose = (picture) => {
      this.picture = picture;
      const shown = camera.pictures.includes(picture) ? picture : camera.pictures.at(-1) ?? null;
      fillPicture(this.frame, shown, nameOf(camera));
      setText(caption, shown ? `${preciseClock(shown.time)} · ${counted(shown.bytes, 'byte')}` : '');
      for (const button of thumbs.children) setAttribute(button, 'aria-pressed', String(button.picture === shown));
    };
    if (camera.pictures.length > 1) {
      for (const picture of [...camera.pictures].reverse()) {
        const button = this.thumbs.get(picture) ?? makeThumb(picture, nameOf(camera));
        this.thumbs.set(picture, button);
        button.onclick = () => choose(picture);
        thumbs.append(button);
      }
    }
    choose(this.picture);
    const parts = [make('h3', '', headingOf('Pictures', camera.pictureCount)), this.frame, caption, thumbs];
    if (camera.pictureCount > camera.pictures.length)
      parts.push(make('p', 'note', `The newest ${kMostPictures} of ${grouped(camera.pictureCount)} are kept.`));
    return parts;
  }

  makeValues() {
    const {camera} = this, newest = camera.values.at(-1);
    if (!newest) return [];
    const rows = newest.shown.map((exact, position) => {
      const series = camera.values.map((list) => list.numbers[position]).filter((n) => n !== undefined);
      return make(
          'div', 'series', make('span', 'position', `${position + 1}`), sparkline(series, 220, 36),
          make('span', 'number', String(exact)));
    });
    const notes = [];
    if (newest.count > kMostPositions)
      notes.push(`The first ${kMostPositions} of ${grouped(newest.count)} numbers are kept.`);
    if (camera.valueLists > camera.values.length)
      notes.push(`The newest ${kMostValueLists} of ${grouped(camera.valueLists)} lists are kept.`);
    return [
      make('h3', '', headingOf('Values', camera.valueLists)), ...rows, ...notes.map((note) => make('p', 'note', note))
    ];
  }

  /// What an engineer must know of this camera before all else.
  makeRemarks() {
    const {camera} = this, others = this.others(), remarks = [];
    const say = (symbol, ...parts) => remarks.push(make('p', 'remark', icon(symbol), make('span', '', ...parts)));
    if (others.length > 0) {
      const links = others.slice(0, kMostOthers).flatMap((other, i) => {
        const link = make('a', 'link');
        link.href = addressOf(other);
        link.append(isolated(other.told.mac));
        return i > 0 ? [', ', link] : [link];
      });
      say('shared', 'Also at ', isolated(camera.told.ip), ': ', ...links,
          others.length > kMostOthers ? ` and ${grouped(others.length - kMostOthers)} more` : '');
    }
    if (camera.twiceAt) say('shared', 'The server\'s list has it twice, also at ', isolated(camera.twiceAt), '.');
    if (camera.stray)
      say('stray', 'Pictures and values came with this text. It names no camera that is known.');
    else if (camera.level < 2)
      say('stray', 'Only a part of this camera has been told; ? is what nobody has told.');
    return remarks;
  }

  makeFields() {
    const {camera} = this, list = make('dl');
    const add = (title, text) => list.append(make('div', '', make('dt', '', title), make('dd', '', isolated(text))));
    if (camera.stray) {
      add('Text', camera.told.mac);
    } else {
      for (const [name, title] of kFields) add(title, fieldText(camera.told, name));
      add('Type', kTypeNames.has(camera.type) ? `${typeName(camera.type)} (${camera.type})` : typeName(camera.type));
      add('Listed before', camera.listed ? 'yes' : 'no');
    }
    add('First seen', preciseClock(camera.first));
    add('Last seen', preciseClock(camera.last));
    return [make('h3', '', 'Fields'), list];
  }

  makeEvents() {
    const {camera} = this;
    const rows = [...camera.events].reverse().map((event) => {
      const item = make(
          'li', `is-${event.what}`, make('time', '', preciseClock(event.time)),
          make('strong', '', kEventWords[event.what] ?? event.what));
      if (event.text) item.append(isolated(event.text, 'event-text'));
      for (const {name, before, after} of event.differences)
        item.append(make(
            'div', 'difference', make('span', '', kFieldTitles.get(name) ?? name), ' ',
            make('del', '', isolated(before)), make('span', '', ' → '), make('ins', '', isolated(after))));
      return item;
    });
    const parts =
        [make('h3', '', headingOf('Events', camera.events.length + camera.eventsLost)), make('ol', '', ...rows)];
    if (camera.eventsLost > 0)
      parts.push(
          make('p', 'note', `The newest ${kMostEvents} are kept; ${grouped(camera.eventsLost)} earlier ones are not.`));
    return parts;
  }

  makeJson() {
    if (this.camera.stray) return [];
    const text = make('pre', 'scrolls', JSON.stringify(this.camera.told, null, 2).split('\n').map(visible).join('\n'));
    text.tabIndex = 0;
    const details = make('details', '', make('summary', '', 'As JSON'), text);
    details.open = this.places.json.querySelector('details')?.open ?? false;
    return [details];
  }
}

function makeThumb(picture, name) {
  const frame = make('span', 'frame');
  fillPicture(frame, picture, name);
  const button = make('button', '', frame, make('span', '', clock(picture.time)));
  button.type = 'button';
  button.picture = picture;
  return button;
}

function headingOf(title, count) { return count > 1 ? `${title} (${grouped(count)})` : title; }

function fieldText(told, name) {
  if (!(name in told)) return kNotTold;
  const value = told[name];
  if (value === null) return '(unset)';
  if (typeof value === 'boolean') return value ? 'yes' : 'no';
  return name === 'deviceFlags' ? `0x${value.toString(16)}` : String(value);
}
