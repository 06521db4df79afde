// Which cameras are shown, and in which order: at once for few changes, in pieces for a new question.
'use strict';

/// What people ask for, as the address says it.
class Query {
  constructor({text = '', state = '', vendor = null, type = null, sort = '', descending = false} = {}) {
    Object.assign(this, {text, state, vendor, type, sort, descending});
    this.wanted = text.toLowerCase().split(/\s+/).filter(Boolean);
    this.column = columnNamed(sort) ?? null;
  }

  matches(model, camera) {
    if (!model.isOf(camera, this.state)) return false;
    if (this.vendor !== null && (camera.stray || cellText(kVendorColumn, camera) !== this.vendor)) return false;
    if (this.type !== null && (camera.stray || typeName(camera.type) !== this.type)) return false;
    if (this.wanted.length === 0) return true;
    camera.words ??= searchText(camera);
    return this.wanted.every((word) => camera.words.includes(word));
  }

  /// What the camera is sorted by.
  keyOf(camera) {
    if (!this.column) return camera.arrival;
    return this.column.key ? this.column.key(camera) : cellText(this.column, camera);
  }

  /// Order of two cameras with their keys: strays come last, equal ones in order of arrival.
  compare(a, aKey, b, bKey) {
    if (a.stray !== b.stray) return a.stray ? 1 : -1;
    if (aKey !== bKey) return aKey < bKey !== this.descending ? -1 : 1;
    return a.arrival - b.arrival;
  }
}

/// All that can be searched for, in lower case: what the cells say, the rest of the record, and the hardware address
/// without its separators.
function searchText(camera) {
  const told = Object.values(camera.told).filter((value) => typeof value === 'string');
  return [...kColumns.map((column) => cellText(column, camera)), ...told, camera.told.mac.replace(/[:.-]/g, '')]
      .join('\n')
      .toLowerCase();
}

const kPieceOfWork = 10;  // milliseconds until a long arrangement lets a frame pass

/// The cameras that the query shows, in its order. Yields whenever a piece of work is done; its result is the array.
/// Cameras that change meanwhile have their old place in it: give them to rearranged().
function* arrange(model, query) {
  let deadline = performance.now() + kPieceOfWork;
  const pause = function*() {
    if (performance.now() < deadline) return;
    yield;
    deadline = performance.now() + kPieceOfWork;
  };
  const compare = (a, b) => query.compare(a.camera, a.key, b.camera, b.key);
  let runs = [], run = [];
  for (let i = 0, most = model.cameras.length; i < most; ++i) {
    const camera = model.cameras[i];
    if (query.matches(model, camera)) run.push({camera, key: query.keyOf(camera)});
    if (run.length === 1024 || i + 1 === most) {
      runs.push(run.sort(compare));
      run = [];
    }
    if (i % 256 === 255) yield* pause();
  }
  while (runs.length > 1) {  // each round merges neighbours
    const merged = [];
    for (let i = 0; i < runs.length; i += 2) {
      const left = runs[i], right = runs[i + 1] ?? [], both = [];
      for (let l = 0, r = 0; l < left.length || r < right.length;) {
        const takeLeft = r === right.length || (l < left.length && compare(left[l], right[r]) <= 0);
        both.push(takeLeft ? left[l++] : right[r++]);
        if (both.length % 1024 === 0) yield* pause();
      }
      merged.push(both);
    }
    runs = merged;
  }
  return (runs[0] ?? []).map((entry) => entry.camera);
}

const kMostSingly = 32;  // more cameras than this are put in place together

/// `shown` with the touched cameras put where they belong by now. Changes and returns `shown`, or returns another
/// array.
function rearranged(shown, touched, model, query) {
  const moved = [...touched]
                    .filter((camera) => query.matches(model, camera))
                    .map((camera) => ({camera, key: query.keyOf(camera)}))
                    .sort((a, b) => query.compare(a.camera, a.key, b.camera, b.key));
  if (touched.size > kMostSingly) return merged(shown.filter((camera) => !touched.has(camera)), moved, query);
  for (const camera of touched) {
    const at = shown.indexOf(camera);
    if (at >= 0) shown.splice(at, 1);
  }
  for (const entry of moved) shown.splice(placeOf(entry, shown, 0, query), 0, entry.camera);
  return shown;
}

/// Index of the first camera, from `low` on, that does not come before the entry.
function placeOf({camera, key}, cameras, low, query) {
  for (let high = cameras.length; low < high;) {
    const middle = (low + high) >> 1, other = cameras[middle];
    if (query.compare(other, query.keyOf(other), camera, key) < 0)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

function merged(cameras, entries, query) {
  const result = [];
  let next = 0;
  for (const entry of entries) {
    for (const end = placeOf(entry, cameras, next, query); next < end; ++next) result.push(cameras[next]);
    result.push(entry.camera);
  }
  while (next < cameras.length) result.push(cameras[next++]);
  return result;
}
