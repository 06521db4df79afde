// What the lines of a search tell, kept in bounded space. Knows nothing of the page's elements.
'use strict';

const kMostEvents = 100;      // kept of a camera
const kMostPictures = 20;     // kept of a camera
const kMostValueLists = 100;  // kept of a camera
const kMostPositions = 32;    // kept of a value list
const kMostStrays = 1000;     // texts of no known camera that are kept
const kMostProblems = 5;

const kStates = {
  known: 'Known',
  new: 'New',
  changed: 'Changed',
  gone: 'Gone',
  stray: 'No camera'
};

/// How much of a camera its object tells. A member above that level is not there.
function toldBy(camera) { return 'model' in camera ? 2 : 'ip' in camera ? 1 : 0; }

/// A column of the table and of the sort box. needs: the level that tells it. text: what the cell says. key: what it is
/// sorted by where that is not the text.
const kColumns = [
  {
    name: 'state',
    title: 'State',
    needs: 0,
    text: (c) => kStates[c.state],
    key: (c) => Object.keys(kStates).indexOf(c.state)
  },
  {name: 'mac', title: 'MAC', needs: 0, text: (c) => c.told.mac},
  {name: 'ip', title: 'IP', needs: 1, text: (c) => c.told.ip, key: (c) => ipNumber(c.told.ip)},
  {name: 'dhcp', title: 'DHCP', needs: 2, text: (c) => (c.told.dhcp ? 'yes' : 'no')},
  {name: 'vendor', title: 'Vendor', needs: 1, text: (c) => c.told.vendor},
  {name: 'model', title: 'Model', needs: 2, text: (c) => c.told.model},
  {name: 'firmware', title: 'Firmware', needs: 2, text: (c) => c.told.firmware},
  {name: 'plugin', title: 'Plug-in', needs: 1, text: (c) => c.told.plugin},
  {name: 'type', title: 'Type', needs: 0, text: (c) => (c.stray ? '' : typeName(c.type)), key: (c) => c.type ?? -1},
  {name: 'mask', title: 'Mask', needs: 2, text: (c) => c.told.subnetMask, key: (c) => ipNumber(c.told.subnetMask)},
  {name: 'gateway', title: 'Gateway', needs: 2, text: (c) => c.told.gateway, key: (c) => ipNumber(c.told.gateway)},
  {
    name: 'values',
    title: 'Values',
    needs: 0,
    text: (c) => c.values.at(-1)?.shown.join(' ') ?? '',
    key: (c) => c.valueLists
  },
  {name: 'pictures', title: 'Pictures', needs: 0, text: (c) => grouped(c.pictureCount), key: (c) => c.pictureCount},
  {name: 'first', title: 'First seen', needs: 0, text: (c) => clock(c.first), key: (c) => c.first},
  {name: 'last', title: 'Last seen', needs: 0, text: (c) => clock(c.last), key: (c) => c.last},
  {name: 'events', title: 'Events', needs: 0, text: (c) => grouped(c.eventCount), key: (c) => c.eventCount},
];

function columnNamed(name) { return kColumns.find((column) => column.name === name); }
const kVendorColumn = columnNamed('vendor');

function cellText(column, camera) { return camera.level < column.needs ? kNotTold : column.text(camera); }

function keepLast(list, most) {
  if (list.length > most) list.splice(0, list.length - most);
}

/// The cameras of one search. take() is given each line once, in order.
class Model {
  constructor() {
    this.cameras = [];         // in order of arrival; those without a known camera ("strays") among them
    this.touched = new Set();  // cameras that have changed since takeTouched()
    this.counts = {all: 0, known: 0, new: 0, changed: 0, gone: 0, shared: 0, stray: 0};
    this.vendors = new Map();  // text -> number of cameras
    this.types = new Map();
    this.pictures = this.valueLists = this.omitted = this.strayOverflow = 0;
    this.state = null;  // the newest line of that kind
    this.summary = this.error = null;
    this.problems = [];
    this.firstTime = this.lastTime = '';
    this.byKey = new Map();
    this.byIp = new Map();  // IP address -> present cameras that have it
    this.byModel = new Map();
  }

  /// Whether the last line of the search has come.
  get ended() { return this.summary !== null || this.error !== null; }

  /// text: one line. Throws SyntaxError where it is no JSON.
  take(text) {
    const line = JSON.parse(text);
    if (line.time) {
      this.firstTime ||= line.time;
      this.lastTime = line.time;
    }
    switch (line.event) {
      case 'camera':
        this.takeCamera(line);
        break;
      case 'picture':
        this.takePicture(line);
        break;
      case 'values':
        this.takeValues(line, text);
        break;
      case 'state':
        this.state = line;
        break;
      case 'summary':
        this.summary = line;
        break;
      case 'error':
        this.error = line;
        break;
      case 'omitted':
        this.omitted += line.lines;
        break;
      case 'problem':
        this.problems.push(line.text);
        keepLast(this.problems, kMostProblems);
        break;
    }
  }

  takeTouched() {
    const touched = this.touched;
    this.touched = new Set();
    return touched;
  }

  /// A camera is known by its MAC address; those without one by their IP address too.
  static keyOf(told) { return told.mac === 'UNKNOWN' ? `UNKNOWN ${told.ip ?? ''}` : standardMac(told.mac); }

  takeCamera(line) {
    const key = Model.keyOf(line.camera);
    const camera = this.byKey.get(key) ?? this.add(key);
    const first = !camera.counted;
    const change = line.change ?? 'known';  // lines of info have none
    this.count(camera, -1);
    const before = camera.told, beforeType = camera.type;
    camera.told = line.camera;
    camera.level = toldBy(line.camera);
    camera.type = line.type;
    camera.twiceAt = line.listedTwiceAt ?? '';
    // A line without a kind is of the server's list; a first line that is no news is of a camera that was listed.
    const ofList = !('kind' in line);
    camera.listed ||= ofList || (first && (change === 'same' || change === 'changed'));
    camera.everChanged ||= change === 'changed';
    camera.isGone = change === 'gone';
    if (change !== 'same')
      camera.state = change;
    else if (first)
      camera.state = 'known';
    camera.first ||= line.time ?? '';
    camera.last = line.time ?? camera.last;
    if (!ofList) ++camera.eventCount;
    this.addEvent(camera, {
      time: line.time,
      what: ofList ? 'listed' : change,
      kind: line.kind,
      differences: first ? [] : differences(before, beforeType, line.camera, line.type),
    });
    this.count(camera, 1);
    this.touch(camera);
  }

  takePicture(line) {
    ++this.pictures;
    const camera = this.find(line);
    if (!camera) return;
    ++camera.pictureCount;
    camera.pictures.push({time: line.time, file: line.file, data: line.data, bytes: line.bytes, error: line.error});
    keepLast(camera.pictures, kMostPictures);
    this.addEvent(camera, {time: line.time, what: 'picture', text: counted(line.bytes, 'byte'), differences: []});
    this.touch(camera);
  }

  takeValues(line, text) {
    ++this.valueLists;
    const camera = this.find(line);
    if (!camera) return;
    ++camera.valueLists;
    const kept = {time: line.time, count: line.values.length, numbers: line.values.slice(0, kMostPositions)};
    kept.shown = exactNumbers(kept.numbers, text);
    camera.values.push(kept);
    keepLast(camera.values, kMostValueLists);
    this.addEvent(camera, {time: line.time, what: 'values', text: kept.shown.join(' '), differences: []});
    this.touch(camera);
  }

  /// The camera of a picture or value list. One of no known camera has its text as key; null where there are too many.
  find(line) {
    if (line.mac !== null) {
      const camera = this.byKey.get(standardMac(line.mac)) ?? this.byKey.get(line.camera);
      if (camera) return camera;
      const named = this.byModel.get(line.camera);
      if (named?.size === 1) return [...named][0];
      return this.addOmitted(line.mac);
    }
    const key = `no camera ${line.camera}`;
    let camera = this.byKey.get(key);
    if (!camera) {
      if (this.counts.stray >= kMostStrays) {
        ++this.strayOverflow;
        return null;
      }
      camera = this.add(key);
      camera.stray = true;
      camera.state = 'stray';
      camera.told = {mac: line.camera};
      ++this.counts.stray;
    }
    camera.first ||= line.time ?? '';
    camera.last = line.time ?? camera.last;
    return camera;
  }

  /// A camera that tarnfind knows, but whose own lines are among those omitted.
  addOmitted(mac) {
    const camera = this.add(standardMac(mac));
    camera.told = {mac};
    camera.state = 'known';
    this.count(camera, 1);
    return camera;
  }

  add(key) {
    const camera = {
      key,
      arrival: this.cameras.length,
      told: {mac: ''},
      level: 0,
      type: null,
      state: 'new',
      stray: false,
      listed: false,
      everChanged: false,
      isGone: false,
      twiceAt: '',
      first: '',
      last: '',
      eventCount: 0,
      events: [],
      eventsLost: 0,
      pictures: [],
      pictureCount: 0,
      values: [],
      valueLists: 0,
      version: 0,
      words: null,
      counted: false,
    };
    this.byKey.set(key, camera);
    this.cameras.push(camera);
    return camera;
  }

  addEvent(camera, event) {
    camera.events.push(event);
    if (camera.events.length > kMostEvents) {
      camera.events.shift();
      ++camera.eventsLost;
    }
  }

  touch(camera) {
    ++camera.version;
    camera.words = null;
    this.touched.add(camera);
  }

  /// Takes the camera out of all counts (by -1) before it changes, and in again (by 1) afterwards.
  count(camera, by) {
    if (by < 0 && !camera.counted) return;
    camera.counted = by > 0;
    this.counts.all += by;
    if (camera.listed)
      this.counts.known += by;
    else if (camera.level > 0)
      this.counts.new += by;
    if (camera.everChanged) this.counts.changed += by;
    if (camera.isGone) this.counts.gone += by;
    countIn(this.vendors, cellText(kVendorColumn, camera), by);
    countIn(this.types, typeName(camera.type), by);
    if (camera.told.model) this.index(this.byModel, camera.told.model, camera, by);
    const ip = camera.told.ip;
    if (!camera.isGone && ip && ip !== '0.0.0.0') this.shareIp(ip, camera, by);
  }

  shareIp(ip, camera, by) {
    const sharers = (size) => (size > 1 ? size : 0);
    const before = this.byIp.get(ip)?.size ?? 0;
    const users = this.index(this.byIp, ip, camera, by);
    this.counts.shared += sharers(users.size) - sharers(before);
    // Another camera begins or ceases to share its address.
    if ((by > 0 && users.size === 2) || (by < 0 && users.size === 1))
      for (const user of users) this.touch(user);
  }

  index(map, text, camera, by) {
    const users = map.get(text) ?? new Set();
    if (by > 0)
      users.add(camera);
    else
      users.delete(camera);
    if (users.size > 0)
      map.set(text, users);
    else
      map.delete(text);
    return users;
  }

  /// Whether another camera that is present has the same IP address.
  sharesIp(camera) {
    return (this.byIp.get(camera.told.ip)?.size ?? 0) > 1 && this.byIp.get(camera.told.ip).has(camera);
  }

  /// Whether the camera is in a set of the filter by state. The sets overlap, because a known camera may have changed
  /// and gone.
  isOf(camera, set) {
    switch (set) {
      case 'known':
        return camera.listed;
      case 'new':
        return !camera.stray && !camera.listed && camera.level > 0;
      case 'changed':
        return camera.everChanged;
      case 'gone':
        return camera.isGone;
      case 'shared':
        return this.sharesIp(camera);
      case 'stray':
        return camera.stray;
      default:
        return true;
    }
  }
}

function countIn(map, text, by) {
  const count = (map.get(text) ?? 0) + by;
  if (count > 0)
    map.set(text, count);
  else
    map.delete(text);
}

/// Numbers beyond 2^53 have lost digits in JSON.parse; those are read from the line's text.
function exactNumbers(numbers, text) {
  if (numbers.every(Number.isSafeInteger)) return numbers;
  const digits = /"values":\[([0-9,]*)\]\}\s*$/.exec(text)?.[1].split(',') ?? [];
  return numbers.map((number, i) => (Number.isSafeInteger(number) || !digits[i] ? number : BigInt(digits[i])));
}

/// What differs between two states of a camera, as texts. A password says only that it is set.
function differences(before, beforeType, after, afterType) {
  const say = (object, name) => {
    if (!(name in object)) return kNotTold;
    const value = object[name];
    return value === null ? '(unset)' : value === true ? 'yes' : value === false ? 'no' : String(value);
  };
  const found = [];
  for (const name of Object.keys(after)) {
    const old = say(before, name), now = say(after, name);
    if (name !== 'type' && old !== now) found.push({name, before: old, after: now});
  }
  if (beforeType !== afterType) found.push({name: 'type', before: typeName(beforeType), after: typeName(afterType)});
  return found;
}
