"use strict";
// Small helpers to make elements: texts are always set as texts, so that nothing in the data becomes markup.
const qx = {};

qx.make = (name, attributes = {}, ...children) => {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value === false || value === null || value === undefined) continue;
    if (key.startsWith("on")) element.addEventListener(key.slice(2), value);
    else element.setAttribute(key, value === true ? "" : value);
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
};

// Numbers as they are read: four digits are enough, large ones whole.
qx.number = (value) => {
  if (value === null || value === undefined || !Number.isFinite(value)) return "–";
  if (Number.isInteger(value)) return String(value);
  const size = Math.abs(value);
  return size >= 1000 ? value.toFixed(0) : String(Number(value.toPrecision(4)));
};

qx.withError = (figure, unit) => figure === null || figure === undefined ? "–"
  : `${qx.number(figure.value)} ± ${qx.number(Number(figure.error.toPrecision(2)))} ${unit}`;

qx.conditions = (one) => `${qx.number(one.exposureSeconds)} s, ${qx.number(one.lightIntensityPercent)} %`;

qx.mark = (mark) => qx.make("span", { class: `mark ${mark}` }, mark);

// A number that keeps what single precision made of it from looking odd (0.1 instead of 0.10000000149).
qx.single = (value) => value === null ? null : Number(Number(value).toPrecision(7));

qx.scroll = (label, table) => qx.make("div", { class: "scroll", tabindex: "0", role: "region", "aria-label": label }, table);

// What only makes sense where something can be pressed.
qx.onScreen = (text) => qx.make("span", { class: "screen" }, text);

// Tables that are wider than a narrow screen or a printed page become a list: a row is a block, a cell a line that says
// its column (data-label).
qx.fit = () => {
  const root = document.documentElement.classList;
  const mayStack = root.contains("printing") || matchMedia("(max-width: 34rem)").matches;
  for (const box of document.querySelectorAll(".scroll")) {
    const table = box.firstElementChild;
    table.classList.remove("stacked");
    if (mayStack && box.scrollWidth > box.clientWidth) table.classList.add("stacked");
  }
};

// A table of head texts and rows of cells; a cell is a text, a number or an element.
qx.table = (caption, head, rows, rowHeads = true) => {
  const cell = (value) => value instanceof Node ? value : typeof value === "number" ? qx.number(value) : String(value ?? "–");
  const isText = (value) => typeof value === "string" && value.length > 40;
  return qx.make("table", {}, qx.make("caption", {}, caption),
    qx.make("thead", {}, qx.make("tr", {}, ...head.map((text, at) =>
      qx.make("th", { scope: "col", class: rows.some((row) => isText(row[at])) ? "text" : null }, text)))),
    qx.make("tbody", {}, ...rows.map((row) => qx.make("tr", {}, ...row.map((value, at) =>
      qx.make(at === 0 && rowHeads ? "th" : "td", at === 0 && rowHeads ? { scope: "row" } :
        { "data-label": head[at], class: isText(value) ? "text" : null }, cell(value)))))));
};

qx.save = (name, type, text) => {
  const url = URL.createObjectURL(new Blob([text], { type }));
  const link = qx.make("a", { href: url, download: name });
  link.click();
  URL.revokeObjectURL(url);
};
