// The wall and the table. Only the cameras that can be seen, and some beside them, have elements.
'use strict';

const kBeside = 600;  // pixels above and below what is seen that are drawn, too
const kMostSpare = 100;
const kMostPrinted = 2000;

/// Draws a long list of cameras of equal height into `container`, whose properties --before and --after make room for
/// those without an element. scroller: what scrolls. template: makes an element (create) and writes a camera into it
/// (update); link: the element in it that takes the focus.
class VirtualList {
  constructor(scroller, container, template) {
    Object.assign(this, {scroller, container, template});
    this.cameras = [];
    this.drawn = new Map();  // camera -> its element
    this.spare = [];         // elements that show no camera for now
    this.active = null;      // the camera that Tab reaches
    this.itemHeight = 0;
    this.columns = 1;
    this.printing = false;
  }

  /// Reads from the style how high a camera is and how many stand side by side. Call when the size has changed.
  measure() {
    const probe = this.drawn.values().next().value;
    if (!probe) return;
    const style = getComputedStyle(this.container);
    this.itemHeight = probe.getBoundingClientRect().height + (parseFloat(style.rowGap) || 0);
    const tracks = style.display === 'grid' ? style.gridTemplateColumns.split(' ').length : 1;
    this.columns = Math.max(tracks, 1);
  }

  /// Draws what is seen of these cameras.
  draw(cameras) {
    this.cameras = cameras;
    if (this.itemHeight === 0 && cameras.length > 0) {
      this.place(0, 1);
      this.measure();
    }
    const [first, end] = this.seen();
    this.place(first, end);
  }

  /// First and end of the cameras that are drawn.
  seen() {
    if (this.printing) return [0, Math.min(this.cameras.length, kMostPrinted)];
    if (this.itemHeight === 0) return [0, 0];
    const top = this.scroller.getBoundingClientRect().top - this.container.getBoundingClientRect().top;
    const row = (y) => Math.floor(y / this.itemHeight);
    const rows = Math.ceil(this.cameras.length / this.columns);
    const first = Math.min(Math.max(row(top - kBeside), 0), rows);
    const end = Math.min(Math.max(row(top + this.scroller.clientHeight + kBeside) + 1, first), rows);
    return [first * this.columns, Math.min(end * this.columns, this.cameras.length)];
  }

  place(first, end) {
    const wanted = new Set(this.cameras.slice(first, end));
    for (const [camera, element] of this.drawn) {
      if (wanted.has(camera)) continue;
      if (element.contains(document.activeElement)) this.scroller.focus({preventScroll: true});
      element.remove();
      this.drawn.delete(camera);
      if (this.spare.length < kMostSpare) this.spare.push(element);
    }
    if (!wanted.has(this.active)) this.active = this.cameras[first] ?? null;
    let before = null;
    for (let i = first; i < end; ++i) {
      const camera = this.cameras[i];
      let element = this.drawn.get(camera);
      if (!element) {
        element = this.spare.pop() ?? this.template.create();
        this.drawn.set(camera, element);
      }
      const inPlace = before ? before.nextElementSibling === element : this.container.firstElementChild === element;
      if (!inPlace)
        this.container.insertBefore(element, before ? before.nextElementSibling : this.container.firstElementChild);
      this.template.update(element, camera, i, this.cameras.length);
      element.querySelector('.link').tabIndex = camera === this.active ? 0 : -1;
      before = element;
    }
    const rows = Math.ceil(this.cameras.length / this.columns);
    const room = this.printing ? 0 : this.itemHeight;
    this.container.style.setProperty('--before', `${Math.floor(first / this.columns) * room}px`);
    this.container.style.setProperty('--after', `${Math.max(rows - Math.ceil(end / this.columns), 0) * room}px`);
  }

  clear() {
    for (const element of this.drawn.values()) element.remove();
    this.drawn.clear();
    this.spare = [];
    this.itemHeight = 0;
  }

  /// The keys that move between cameras. Returns whether the key was one of them.
  moveBy(key) {
    const page = this.columns * Math.max(Math.floor(this.scroller.clientHeight / this.itemHeight), 1);
    const steps = {
      ArrowLeft: this.columns > 1 ? -1 : 0,
      ArrowRight: this.columns > 1 ? 1 : 0,
      ArrowUp: -this.columns,
      ArrowDown: this.columns,
      PageUp: -page,
      PageDown: page,
      Home: -Infinity,
      End: Infinity,
    };
    if (!steps[key] || this.cameras.length === 0) return false;
    const at = Math.max(this.cameras.indexOf(this.active), 0);
    const target = Math.min(Math.max(at + steps[key], 0), this.cameras.length - 1);
    this.show(target);
    return true;
  }

  /// Scrolls to a camera and gives it the focus.
  show(index) {
    const camera = this.cameras[index];
    this.active = camera;
    const top = this.container.getBoundingClientRect().top - this.scroller.getBoundingClientRect().top;
    const y = top + Math.floor(index / this.columns) * this.itemHeight;
    const head = this.scroller.querySelector('thead')?.getBoundingClientRect().height ?? 0;
    if (y < head)
      this.scroller.scrollTop += y - head - 8;
    else if (y + this.itemHeight > this.scroller.clientHeight)
      this.scroller.scrollTop += y + this.itemHeight - this.scroller.clientHeight + 8;
    this.draw(this.cameras);
    this.active = camera;
    this.draw(this.cameras);
    this.drawn.get(camera)?.querySelector('.link').focus({preventScroll: true});
  }
}
