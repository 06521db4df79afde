// The own view of one camera: a dialog with all that was told of it.
"use strict";

/// Members of the camera's object, with what people call them, in the order of the view.
const kFields = [
  ["mac", "MAC"], ["ip", "IP"], ["subnetMask", "Mask"], ["gateway", "Gateway"], ["dhcp", "DHCP"], ["vendor", "Vendor"],
  ["model", "Model"], ["firmware", "Firmware"], ["plugin", "Plug-in"], ["user", "User"], ["password", "Password"],
  ["deviceFlags", "Device flags"], ["flag17", "Flag 17"], ["vendorTypeMask", "Vendor mask"], ["icb", "ICB"],
  ["gcb", "GCB"], ["ctt", "CTT"],
];
const kFieldTitles = new Map([...kFields, ["type", "Type"]]);

const kEventWords = {
  listed: "In the server's list", new: "New", changed: "Changed", same: "Told again", gone: "Gone", known: "Known",
  picture: "Picture", values: "Values",
};

class Details {
  /// close: what to do when the dialog is closed. neighbour: given -1 or 1, opens another camera.
  constructor(dialog, model, {close, neighbour}) {
    Object.assign(this, {dialog, model, camera: null, picture: null});
    this.body = dialog.querySelector(".body");
    this.title = dialog.querySelector("h2");
    dialog.addEventListener("close", () => {
      this.camera = null;
      close();
    });
    dialog.addEventListener("click", (event) => {
      if (event.target === dialog) dialog.close();  // beside the view
    });
    dialog.querySelector(".close").addEventListener("click", () => dialog.close());
    dialog.querySelector(".previous").addEventListener("click", () => neighbour(-1));
    dialog.querySelector(".next").addEventListener("click", () => neighbour(1));
    dialog.addEventListener("keydown", (event) => {
      const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
      if (step && !event.target.closest(".thumbs, .scrolls")) neighbour(step);
    });
  }

  /// camera: null for an address that the search does not know.
  open(camera, key) {
    this.camera = camera;
    this.picture = null;
    this.version = -1;
    if (!this.dialog.open) this.dialog.showModal();
    this.body.scrollTop = 0;
    if (camera) return this.draw();
    setText(this.title, "No such camera");
    this.dialog.querySelector(".badges").replaceChildren();
    this.body.replaceChildren(make("p", "empty", "This search has not told of ", isolated(key), "."));
  }

  /// Writes what has changed since the last time.
  draw() {
    const {camera} = this;
    if (!camera || camera.version === this.version) return;
    this.version = camera.version;
    setText(this.title, visible(nameOf(camera)));
    this.dialog.querySelector(".badges").replaceChildren(
        stateBadge(camera.state), ...(this.model.sharesIp(camera) ? [sharedBadge()] : []));
    const scrolled = this.body.scrollTop;
    const thumb = [...this.body.querySelectorAll(".thumbs button")].indexOf(document.activeElement);
    const open = this.body.querySelector("details")?.open ?? false;
    this.body.replaceChildren(
        make("div", "left", this.pictures(), ...this.values()),
        make("div", "right", ...this.remarks(), this.fields(), this.events(), ...this.raw(open)));
    this.body.scrollTop = scrolled;
    if (thumb >= 0) this.body.querySelectorAll(".thumbs button")[thumb]?.focus();
  }

  pictures() {
    const {camera} = this;
    const shown = camera.pictures.includes(this.picture) ? this.picture : camera.pictures.at(-1) ?? null;
    const frame = make("div", "frame large");
    fillPicture(frame, shown, nameOf(camera));
    const caption = make("p", "caption", shown ? `${preciseClock(shown.time)} · ${counted(shown.bytes, "byte")}` : "");
    const section = make("section", "pictures", make("h3", "", headingOf("Pictures", camera.pictureCount)), frame, caption);
    if (camera.pictures.length > 1) section.append(this.thumbs(shown, frame, caption));
    if (camera.pictureCount > camera.pictures.length)
      section.append(make("p", "note", `The newest ${kMostPictures} of ${grouped(camera.pictureCount)} are kept.`));
    return section;
  }

  thumbs(shown) {
    const list = make("div", "thumbs");
    for (const picture of [...this.camera.pictures].reverse()) {
      const frame = make("span", "frame");
      fillPicture(frame, picture, nameOf(this.camera));
      const button = make("button", "", frame, make("span", "", clock(picture.time)));
      setAttribute(button, "aria-pressed", String(picture === shown));
      button.addEventListener("click", () => {
        this.picture = picture;
        this.version = -1;
        this.draw();
      });
      list.append(button);
    }
    return list;
  }

  values() {
    const {camera} = this, newest = camera.values.at(-1);
    if (!newest) return [];
    const rows = newest.shown.map((exact, position) => {
      const series = camera.values.map((list) => list.numbers[position]).filter((n) => n !== undefined);
      return make("div", "series", make("span", "position", `${position + 1}`), sparkline(series, 220, 36), make("span", "number", String(exact)));
    });
    const notes = [];
    if (newest.count > kMostPositions) notes.push(`The first ${kMostPositions} of ${grouped(newest.count)} numbers are kept.`);
    if (camera.valueLists > camera.values.length) notes.push(`The newest ${kMostValueLists} of ${grouped(camera.valueLists)} lists are kept.`);
    return [make("section", "value-lists", make("h3", "", headingOf("Values", camera.valueLists)), ...rows,
        ...notes.map((note) => make("p", "note", note)))];
  }

  /// What an engineer must know of this camera before all else.
  remarks() {
    const {camera, model} = this, remarks = [];
    if (model.sharesIp(camera)) {
      const others = [...model.byIp.get(camera.told.ip)].filter((other) => other !== camera);
      const links = others.slice(0, 10).flatMap((other, i) => {
        const link = linkTo(other);
        link.append(isolated(other.told.mac));
        return i > 0 ? [", ", link] : [link];
      });
      remarks.push(make("p", "remark", icon("shared"), make("span", "", "Also at ", isolated(camera.told.ip), ": ", ...links,
          others.length > 10 ? ` and ${grouped(others.length - 10)} more` : "")));
    }
    if (camera.twiceAt)
      remarks.push(make("p", "remark", icon("shared"), make("span", "", "The server's list has it twice, also at ", isolated(camera.twiceAt), ".")));
    if (camera.stray)
      remarks.push(make("p", "remark", icon("stray"), make("span", "", "Pictures and values came with this text. It names no camera that is known.")));
    if (!camera.stray && camera.level < 2)
      remarks.push(make("p", "remark", icon("stray"), make("span", "", "Only a part of this camera has been told; ? is what nobody has told.")));
    return remarks;
  }

  fields() {
    const {camera} = this, list = make("dl", "");
    const add = (title, text, extra) => list.append(make("div", "", make("dt", "", title), make("dd", "", isolated(text), ...(extra ? [extra] : []))));
    if (camera.stray) {
      add("Text", camera.told.mac);
    } else {
      for (const [name, title] of kFields) add(title, fieldText(camera.told, name));
      add("Type", camera.type === null || kTypeNames.has(camera.type) === false ? typeName(camera.type) : `${typeName(camera.type)} (${camera.type})`);
      add("Listed before", camera.listed ? "yes" : "no");
    }
    add("First seen", preciseClock(camera.first));
    add("Last seen", preciseClock(camera.last));
    return make("section", "all-fields", make("h3", "", "Fields"), list);
  }

  events() {
    const {camera} = this;
    const rows = [...camera.events].reverse().map((event) => {
      const item = make("li", `is-${event.what}`, make("time", "", preciseClock(event.time)), make("strong", "", kEventWords[event.what] ?? event.what));
      if (event.text) item.append(isolated(event.text, "event-text"));
      for (const {name, before, after} of event.differences)
        item.append(make("div", "difference", make("span", "", kFieldTitles.get(name) ?? name), " ", make("del", "", isolated(before)),
            make("span", "arrow", " → "), make("ins", "", isolated(after))));
      return item;
    });
    const section = make("section", "events", make("h3", "", headingOf("Events", camera.events.length + camera.eventsLost)), make("ol", "", ...rows));
    if (camera.eventsLost > 0)
      section.append(make("p", "note", `The newest ${kMostEvents} are kept; ${grouped(camera.eventsLost)} earlier ones are not.`));
    return section;
  }

  raw(open) {
    if (this.camera.stray) return [];
    const text = make("pre", "scrolls", JSON.stringify(this.camera.told, null, 2).split("\n").map(visible).join("\n"));
    text.tabIndex = 0;
    const details = make("details", "", make("summary", "", "As JSON"), text);
    details.open = open;
    return [details];
  }
}

function headingOf(title, count) {
  return count > 1 ? `${title} (${grouped(count)})` : title;
}

function fieldText(told, name) {
  if (!(name in told)) return kNotTold;
  const value = told[name];
  if (value === null) return "(unset)";
  if (typeof value === "boolean") return value ? "yes" : "no";
  return name === "deviceFlags" ? `0x${value.toString(16)}` : String(value);
}
