"use strict";
// An image before and after the correction, one slider between the two, and the level, at which the page corrects anew.

qx.againstSection = (one, number, report) => {
  const correction = report.corrections[one.correction];
  const id = `against-${number}`;
  const name = one.file;
  const canvas = qx.make("canvas", { class: "picture", role: "img", id: `${id}-picture`,
    "aria-label": `${name}, left of the dividing line before, right of it after the correction with '${correction.key}'` });
  const split = qx.make("input", { type: "range", id: `${id}-split`, min: 0, max: 100, value: 50 });
  const level = qx.make("input", { type: "range", id: `${id}-level`, min: 0, max: 100, value: 100 });
  const splitText = qx.make("output", { for: `${id}-split` }), levelText = qx.make("output", { for: `${id}-level`, "aria-live": "polite" });
  const low = qx.make("span"), high = qx.make("span");
  const state = { before: null, stored: null, after: null };

  const draw = () => {
    if (!state.after) return;
    const picture = one.picture, at = Math.round(picture.width * split.value / 100);
    canvas.width = picture.width;
    canvas.height = picture.height;
    canvas.style.aspectRatio = `${picture.width} / ${picture.height}`;
    const context = canvas.getContext("2d");
    context.drawImage(state.right, 0, 0);
    if (at > 0) context.drawImage(state.left, 0, 0, at, picture.height, 0, 0, at, picture.height);
    context.fillStyle = "#ff9d2e";
    const line = Math.max(1, Math.round(picture.width / 250));
    if (at > 0 && at < picture.width) context.fillRect(at - line / 2, 0, line, picture.height);
    splitText.textContent = `${split.value} % of the width before, the rest after the correction`;
  };
  const compute = () => {
    const factor = qx.factor(one, Number(level.value));
    state.after = qx.correct(state.before, state.stored, factor);
    const before = state.beforeStretch, after = qx.stretch(state.after);
    // The same number of ADU from black to white, so that structure looks as strong in both.
    const range = Math.max(before.white - before.black, 1);
    state.left ??= qx.paint(one.picture, state.before, before.black, before.black + range);
    state.right = qx.paint(one.picture, state.after, after.black, after.black + range);
    low.textContent = `before ${before.black}, after ${after.black} ADU`;
    high.textContent = `${range} ADU more`;
    levelText.textContent = `Level ${level.value} %: factor ${qx.number(factor)}, median after ${after.median} ADU, `
      + `${qx.number(100 * after.zeros / state.after.length)} % of the pixels shown at zero`;
    draw();
  };
  split.addEventListener("input", draw);
  level.addEventListener("input", compute);
  const move = (event) => {
    const box = canvas.getBoundingClientRect();
    split.value = Math.round(100 * (event.clientX - box.left) / box.width);
    draw();
  };
  canvas.addEventListener("pointerdown", move);
  canvas.addEventListener("pointermove", (event) => { if (event.buttons & 1) move(event); });

  const section = qx.make("section", { id, "aria-labelledby": `${id}-title` });
  section.append(qx.make("h3", { id: `${id}-title` }, name));
  const from = { option: "as given", image: "as the image says", correction: `as the correction's; ${one.exposureNote ? `the image's ${one.exposureNote}` : "the image does not say"}` };
  section.append(qx.make("p", {}, `Corrected with '${correction.key}' (taken at ${qx.conditions(correction)}) for `
    + `${qx.conditions(one)} (${from[one.exposureFrom]}): the factor is ${qx.number(one.factor)}. `
    + `Clipped at zero: ${one.clipped} of ${one.width * one.height} pixels (${qx.number(one.clippedPercent)} %).`
    + (one.clippedPercent > 5 ? " What lies below zero is lost, which hides noise and pattern: a lower level keeps it." : "")));
  section.append(qx.make("div", { class: "grid" },
    qx.make("figure", {}, canvas,
      qx.make("div", { class: "scale" }, low, qx.make("span", { class: "bar" }), high),
      qx.make("div", { class: "controls" },
        qx.make("label", { for: `${id}-split` }, "Before and after"), split, splitText,
        qx.make("label", { for: `${id}-level` }, "Level in percent"), level, levelText),
      qx.make("figcaption", {}, (one.picture.step > 1 ? `Every ${one.picture.step}th pixel in both directions. ` : "Every pixel. ")
        + "Corrected in this page, with the library's own rounding.")),
    qx.make("div", {}, qx.scroll(`Figures of ${name}`, qx.table("All pixels, level 100 %", ["figure", "before", "after"], [
      ["median, ADU", one.before.median, one.after.median], ["mean, ADU", one.before.mean, one.after.mean],
      ["spread, ADU", one.before.spread, one.after.spread], ["minimum, ADU", one.before.minimum, one.after.minimum],
      ["maximum, ADU", one.before.maximum, one.after.maximum],
      ["row pattern, ADU", one.before.rowPattern, one.after.rowPattern],
      ["column pattern, ADU", one.before.columnPattern, one.after.columnPattern],
      ["pixels at zero", one.before.pixelsAtZero, one.after.pixelsAtZero]])),
      qx.make("p", { class: "faint" }, "Spread: standard deviation without hot pixels and stars. Row and column pattern: standard "
        + "deviation of the medians of all rows, of all columns, which shows as stripes."))));
  section.ready = (async () => {
    state.before = await qx.unpack(one.picture);
    state.stored = await qx.unpack(one.stored);
    state.beforeStretch = qx.stretch(state.before);
    compute();
  })();
  // For tests: what the page makes of the pixels it carries.
  section.correctedAt = (percent) => qx.correct(state.before, state.stored, qx.factor(one, percent));
  section.state = state;
  return section;
};
