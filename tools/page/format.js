// How values become texts, and how elements are made. Texts of cameras reach the page as text nodes only.
'use strict';

/// The plug-in type names of include/tarn/camera_finding.h. Other codes have no name.
const kTypeNames = new Map([
  [0, 'unknown'],
  [1, 'Sony IPC'],
  [2, 'Axis IPC'],
  [3, 'Summit IPC'],
  [4, 'R2 IPC'],
  [5, 'V1 IPC'],
  [6, 'ONVIF IPC'],
  [7, 'ArecontVision IPC'],
  [8, 'R3 IPC'],
  [9, 'Marten IPC'],
  [24, 'address only'],
  [25, 'R4 IPC'],
]);

/// Stands for what nobody has told, as in the terminal's table.
const kNotTold = '?';

function typeName(type) { return type === null ? kNotTold : kTypeNames.get(type) ?? `type ${type}`; }

/// Twelve hex digits in a usual form become "00:40:8C:12:34:56"; any other text stays as it is.
function standardMac(text) {
  const usual =
      /^(?:[0-9a-f]{12}|[0-9a-f]{2}(?::[0-9a-f]{2}){5}|[0-9a-f]{2}(?:-[0-9a-f]{2}){5}|[0-9a-f]{4}(?:\.[0-9a-f]{4}){2})$/i;
  if (!usual.test(text)) return text;
  return text.replace(/[:.-]/g, '').toUpperCase().match(/../g).join(':');
}

/// An IPv4 address as a number; 0 where the text is none, so that those sort first.
function ipNumber(text) {
  const parts = /^(\d{1,3})\.(\d{1,3})\.(\d{1,3})\.(\d{1,3})$/.exec(text);
  if (!parts) return 0;
  const numbers = parts.slice(1).map(Number);
  return numbers.some((n) => n > 255) ? 0 : numbers.reduce((sum, n) => sum * 256 + n, 0);
}

/// Characters that a browser obeys, does not draw, or takes for a change of direction, as visible escapes.
function visible(text) {
  return String(text).replace(
      /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u180e\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufe00-\ufe0f\ufeff\ufff9-\ufffc\ud800-\udfff\u{e0000}-\u{e0fff}]/gu,
      (c) => `<U+${c.codePointAt(0).toString(16).toUpperCase().padStart(4, '0')}>`);
}

const two = (number) => String(number).padStart(2, '0');

/// Local time of day of an ISO time in UTC; "" where there is none. Intl would take ten times as long.
function clock(time) {
  const date = new Date(time);
  return isNaN(date) ? '' : `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}`;
}
function preciseClock(time) {
  const date = new Date(time);
  return isNaN(date) ? '' : `${clock(time)}.${String(date.getMilliseconds()).padStart(3, '0')}`;
}

const dateFormat = new Intl.DateTimeFormat('en-GB', {day: 'numeric', month: 'long', year: 'numeric'});
function dateOf(time) {
  const date = new Date(time);
  return isNaN(date) ? '' : dateFormat.format(date);
}

const groupedFormat = new Intl.NumberFormat('en-GB');
function grouped(number) { return number < 1000 ? String(number) : groupedFormat.format(number); }
function counted(number, what) { return `${grouped(number)} ${what}${number === 1 ? '' : 's'}`; }
function seconds(value) { return `${value.toFixed(1)} s`; }

/// An element with a class and children; a string becomes a text node.
function make(tag, className, ...children) {
  const element = document.createElement(tag);
  if (className) element.className = className;
  element.append(...children);
  return element;
}

/// Text of a camera: isolated, so that its direction changes nothing around it.
function isolated(text, className) {
  const element = make('bdi', className);
  setText(element, visible(text));
  return element;
}

/// Writes only where something changes, so that selections and the screen reader's place stay.
function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}
function setAttribute(element, name, value) {
  if (value === null)
    element.removeAttribute(name);
  else if (element.getAttribute(name) !== value)
    element.setAttribute(name, value);
}

const kSvg = 'http://www.w3.org/2000/svg';

function makeSvg(tag, attributes, ...children) {
  const element = document.createElementNS(kSvg, tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);
  return element;
}

/// One of the symbols of page.html. It is an ornament: the word stands beside it.
function icon(name) {
  return makeSvg('svg', {class: 'icon', 'aria-hidden': 'true'}, makeSvg('use', {href: `#icon-${name}`}));
}

/// A line through the numbers, each between the least (bottom) and the greatest (top). One number is a dot.
function sparkline(numbers, width, height) {
  const least = Math.min(...numbers), range = Math.max(...numbers) - least;
  const x = (i) => (numbers.length < 2 ? width / 2 : 2 + (width - 4) * i / (numbers.length - 1)).toFixed(1);
  const y = (n) => (range > 0 ? height - 2 - (height - 4) * (n - least) / range : height / 2).toFixed(1);
  const last = numbers.length - 1;
  return makeSvg(
      'svg',
      {class: 'sparkline', viewBox: `0 0 ${width} ${height}`, preserveAspectRatio: 'xMinYMid', 'aria-hidden': 'true'},
      makeSvg('polyline', {points: numbers.map((n, i) => `${x(i)},${y(n)}`).join(' ')}),
      makeSvg('circle', {cx: x(last), cy: y(numbers[last]), r: 2}));
}
