"use strict";
// The parts of the report, made of its data.

qx.reasons = (one) => one.checks.filter((check) => check.reason).map((check) => check.reason);

qx.summarySection = (report) => {
  const section = qx.make("section", { id: "summary", "aria-labelledby": "summary-title" });
  const marks = { good: 0, look: 0, bad: 0 };
  for (const one of report.corrections) ++marks[one.mark];
  const words = { good: "Nothing speaks against this calibration.", look: "This calibration needs a look.",
                  bad: "Something is wrong with this calibration." };
  section.append(qx.make("h2", { id: "summary-title" }, "Summary"),
    qx.make("p", {}, qx.mark(report.mark), " ", words[report.mark],
      ` Corrections: ${marks.good} good, ${marks.look} to be looked at, ${marks.bad} bad.`));
  const remarks = (report.darks ? report.darks.stacks : []).reduce((sum, stack) => sum + stack.remarks.length, 0);
  if (remarks > 0) section.append(qx.make("p", {}, qx.mark("look"), " ", qx.make("a", { href: "#darks" }, `The dark frames: ${remarks} to be looked at.`)));
  const columns = [
    ["Correction", (one) => one.key], ["Mark", (one) => ["good", "look", "bad"].indexOf(one.mark)],
    ["Exposure, s", (one) => qx.single(one.exposureSeconds)], ["Intensity, %", (one) => qx.single(one.lightIntensityPercent)],
    ["Minimum", (one) => one.statistics.minimum], ["Average", (one) => one.statistics.average],
    ["Maximum", (one) => one.statistics.maximum], ["Spread", (one) => one.statistics.spread],
    ["Hot pixels", (one) => one.unusual.hot], ["Dead pixels", (one) => one.unusual.dead]];
  const body = qx.make("tbody");
  const rows = report.corrections.map((one, at) => ({ one, at, element: qx.make("tr", {},
    qx.make("th", { scope: "row" }, qx.make("a", { href: `#correction-${at}` }, one.key)),
    qx.make("td", { "data-label": "Mark" }, qx.mark(one.mark)),
    qx.make("td", { class: "text", "data-label": "Why" }, qx.reasons(one).join(" ") || "–"),
    ...columns.slice(2).map(([title, value]) => qx.make("td", { "data-label": title }, qx.number(value(one))))) }));
  const heads = columns.map(([title, value]) => {
    const head = qx.make("th", { scope: "col", "aria-sort": "none" });
    head.append(qx.make("button", { type: "button", onclick: () => {
      const up = head.getAttribute("aria-sort") !== "ascending";
      for (const other of heads) other.setAttribute("aria-sort", "none");
      head.setAttribute("aria-sort", up ? "ascending" : "descending");
      const order = (one, other) => typeof value(one.one) === "string"
        ? value(one.one).localeCompare(value(other.one), "en", { numeric: true }) : value(one.one) - value(other.one);
      body.append(...[...rows].sort((one, other) => (up ? 1 : -1) * order(one, other) || one.at - other.at)
        .map((row) => row.element));
    } }, title));
    return head;
  });
  const why = qx.make("th", { scope: "col", class: "text" }, "Why");
  body.append(...rows.map((row) => row.element));
  section.append(qx.scroll("Summary of all corrections", qx.make("table", { id: "summary-table" },
    qx.make("caption", {}, "Values in ADU; the library's own minimum, average (truncated) and maximum.", qx.onScreen(" Press a title to sort.")),
    qx.make("thead", {}, qx.make("tr", {}, ...heads.slice(0, 2), why, ...heads.slice(2))), body)));
  const limit = (value, unit) => value === null ? "–" : `${qx.number(value)} ${unit}`;
  section.append(qx.make("details", {}, qx.make("summary", {}, "What the marks mean, and from which value on"),
    qx.scroll("Thresholds", qx.table("A correction's mark is the worst of these", ["Question", "look above", "bad above", "Why"],
      report.thresholds.map((one) => [one.label, one.look === 0.5 && !one.unit ? "if so" : limit(one.look, one.unit),
        one.bad === 0.5 && !one.unit ? "if so" : limit(one.bad, one.unit), one.why])))));
  return section;
};

qx.scalingSection = (report) => {
  const section = qx.make("section", { id: "scaling", "aria-labelledby": "scaling-title" });
  section.append(qx.make("h2", { id: "scaling-title" }, "Across corrections"));
  const { fits, cross, sentences, limits } = report.scaling;
  const keys = report.corrections.map((one) => one.key);
  section.append(...sentences.map((text, at) => qx.make("p", { class: "sentence" }, at === 0 ? qx.make("strong", {}, text) : text)));
  // A larger table nobody overlooks, and browsers take long for it.
  if (keys.length > 64) section.append(qx.make("p", {}, "The errors of all pairs stand in the figures (JSON)."));
  else if (keys.length > 1) {
    const cell = (from, to) => {
      const found = cross[from][to];
      const label = `to ${keys[to]}`;
      if (!found) return qx.make("td", { class: "cell faint", "data-label": label }, from === to ? "itself" : "other size");
      return qx.make("td", { class: `cell ${found.mark}`, "data-from": from, "data-to": to, "data-label": label },
        `${found.mean >= 0 ? "+" : "−"}${qx.number(Math.abs(found.mean))}`, qx.make("small", {}, `± ${qx.number(found.spread)}, ${found.mark}`));
    };
    section.append(qx.make("h3", {}, "What is left when one is scaled to another's conditions"),
      qx.scroll("Cross-check", qx.make("table", { id: "cross" },
        qx.make("caption", {}, `Mean and spread of (column's correction − row's correction, scaled by the library), in ADU. `
          + `Look: a mean above ${limits.lookAdu} ADU and ${limits.lookPercent} % of the column's mean; bad: above ${limits.badAdu} ADU and ${limits.badPercent} %.`),
        qx.make("thead", {}, qx.make("tr", {}, qx.make("th", { scope: "col" }, "scaled from \\ to"),
          ...keys.map((key) => qx.make("th", { scope: "col" }, key)))),
        qx.make("tbody", {}, ...keys.map((key, from) => qx.make("tr", {}, qx.make("th", { scope: "row", "data-label": "scaled from" }, key),
          ...keys.map((_, to) => cell(from, to))))))));
  }
  const grid = qx.make("div", { class: "grid" });
  for (const fit of keys.length > 1 ? fits : []) {
    const points = fit.corrections.map((index) => {
      const one = report.corrections[index];
      return { x: qx.single(one.exposureSeconds * one.lightIntensityPercent), y: one.statistics.mean, key: one.key };
    });
    const line = fit.line;
    const error = (value) => value === null ? "" : ` ± ${qx.number(Number(value.toPrecision(2)))}`;
    const text = line ? `Offset ${qx.number(line.offset)}${error(line.offsetError)} ADU, slope ${qx.number(line.slope)}${error(line.slopeError)} ADU per second and percent.`
      + (line.offsetError === null ? " With two corrections there is nothing to tell errors from." : "")
      : "One exposure and intensity only: no line can be told.";
    const most = Math.max(...points.map((point) => point.x));
    const chart = qx.chart(`Background against exposure times intensity, ${fit.width} by ${fit.height} pixels. ${text}`, () => {
      const made = qx.lines([{ label: "corrections", points },
        ...(line ? [{ label: "line", points: [0, most].map((x) => ({ x, y: line.offset + line.slope * x })) }] : [])],
        "exposure × intensity, s·%", "mean, ADU");
      made.data.datasets[0].showLine = false;
      made.data.datasets[0].pointRadius = 4;
      made.options.scales.x.min = 0;
      made.options.plugins.tooltip = { callbacks: { label: (item) => `${item.raw.key ?? "line"}: ${qx.number(item.raw.y)} ADU` } };
      return made;
    });
    grid.append(qx.make("figure", {}, chart, qx.make("figcaption", { class: "fit" }, `${fit.width} × ${fit.height}: ${text}`)));
  }
  if (keys.length > 1) section.append(qx.make("h3", {}, "Background against exposure × intensity"), grid);
  return section;
};

qx.positions = (title, pixels, count) => count === 0 ? qx.make("p", {}, `${title}: none.`)
  : qx.make("details", { class: "positions" }, qx.make("summary", {}, `${title}: ${count}` + (pixels.length < count ? `, the strongest ${pixels.length}` : "")),
    qx.scroll(title, qx.table(title, ["x", "y", "value, ADU", "beyond its surroundings, ADU"], pixels, false)));

qx.correctionSection = (one, number) => {
  const id = `correction-${number}`, s = one.statistics;
  const section = qx.make("section", { id, "aria-labelledby": `${id}-title` });
  section.append(qx.make("h3", { id: `${id}-title` }, qx.make("span", {}, one.key, " "), qx.mark(one.mark)));
  section.append(qx.make("p", {}, `${one.width} × ${one.height} pixels, taken at ${qx.conditions(one)}, out of `, qx.make("code", {}, one.file), "."));
  for (const reason of qx.reasons(one)) section.append(qx.make("p", {}, reason));
  const ready = [];
  const grid = qx.make("div", { class: "grid" });
  if (one.picture) {
    const views = [{ name: "whole", picture: one.picture, black: one.picture.black, white: one.picture.white }];
    if (one.detail) views.push({ name: "detail, every pixel", picture: one.detail });
    const viewer = qx.viewer(`Picture of '${one.key}', from ${s.minimum} to ${s.maximum} ADU`, views);
    section.viewer = viewer;
    ready.push(viewer.ready);
    grid.append(viewer);
  }
  const charts = qx.make("div", { class: "stack" });
  let logarithmic = false;
  const histogram = qx.chart(`Histogram of '${one.key}': median ${qx.number(s.median)} ADU, spread ${qx.number(s.spread)} ADU`,
    () => qx.histogramChart(one.histogram, logarithmic));
  const toggle = qx.make("button", { type: "button", "aria-pressed": "false", onclick: () => {
    logarithmic = !logarithmic;
    toggle.setAttribute("aria-pressed", String(logarithmic));
    histogram.redraw();
  } }, "logarithmic");
  charts.append(qx.make("figure", {}, histogram, qx.make("div", { class: "row controls" }, toggle),
    qx.make("figcaption", {}, `Histogram; below ${one.histogram.below}, above ${one.histogram.above} further pixels.`)));
  const points = (profile) => profile.values.map((y, at) => ({ x: (at + 0.5) * profile.step - 0.5, y }));
  const range = (profile) => `${qx.number(Math.min(...profile.values))} to ${qx.number(Math.max(...profile.values))} ADU`;
  charts.append(qx.make("figure", {}, qx.chart(`Profiles of '${one.key}': rows ${range(one.profiles.rows)}, columns ${range(one.profiles.columns)}`,
    () => qx.lines([{ label: "mean of each row", points: points(one.profiles.rows) },
      { label: "mean of each column", points: points(one.profiles.columns) }], "row or column", "ADU", { max: Math.max(one.width, one.height) - 1 })),
    qx.make("figcaption", {}, `Row and column profile. Pattern, the standard deviation of the medians of all rows and of all columns, shows as stripes: rows ${qx.number(s.rowPattern)}, columns ${qx.number(s.columnPattern)} ADU.`)));
  grid.append(charts);
  section.append(grid);
  section.append(qx.scroll(`Figures of ${one.key}`, qx.table("Figures, in ADU",
    ["minimum", "average", "maximum", "mean", "median", "standard deviation", "spread", "pixels at 0", "pixels at 65535"],
    [[s.minimum, s.average, s.maximum, s.mean, s.median, s.standardDeviation, s.spread, s.pixelsAtZero, s.pixelsAt65535]], false)));
  section.append(qx.positions("Hot pixels", one.unusual.hotPixels, one.unusual.hot), qx.positions("Dead pixels", one.unusual.deadPixels, one.unusual.dead));
  section.append(qx.make("p", { class: "faint" }, `Hot and dead: more than ${qx.number(one.unusual.threshold)} ADU beyond the median of the pixels around.`));
  section.ready = Promise.all(ready);
  return section;
};

qx.darksSection = (darks) => {
  const section = qx.make("section", { id: "darks", "aria-labelledby": "darks-title" });
  const camera = darks.camera;
  section.append(qx.make("h2", { id: "darks-title" }, "The dark frames"));
  if (camera.note) section.append(qx.make("p", {}, camera.note));
  if (camera.offset) section.append(qx.scroll("Camera", qx.table("The camera, from pairs of frames and from how level and noise grow with exposure", ["figure", "value"], [
    ["read noise", qx.withError(camera.readNoiseElectrons, "e⁻")], ["read noise", qx.withError(camera.readNoiseAdu, "ADU")],
    ["dark current", qx.withError(camera.darkCurrentElectronsPerSecond, "e⁻/s")], ["dark current", qx.withError(camera.darkCurrentAduPerSecond, "ADU/s")],
    ["electrons per ADU", qx.withError(camera.electronsPerAdu, "e⁻/ADU")], ["offset", qx.withError(camera.offset, "ADU")]])));
  const name = (stack) => stack.exposureSeconds === null ? "exposure not known" : `${qx.number(qx.single(stack.exposureSeconds))} s`;
  section.append(qx.scroll("Stacks", qx.table("Stacks of equal exposure", ["exposure", "frames", "level", "noise of a pixel", "drift, ADU per frame", "frames that are off"],
    darks.stacks.map((stack) => [name(stack), stack.frames, qx.withError(stack.level, "ADU"), qx.withError(stack.noise, "ADU"),
      stack.drift ? `${qx.number(stack.drift.aduPerFrame)}${stack.drift.error === null ? "" : ` ± ${qx.number(Number(stack.drift.error.toPrecision(2)))}`}` : "–",
      stack.off.length]))));
  for (const stack of darks.stacks)
    for (const remark of stack.remarks) section.append(qx.make("p", { class: "remark" }, qx.mark("look"), ` ${name(stack)}: ${remark}`));
  const grid = qx.make("div", { class: "grid" });
  for (const stack of darks.stacks) {
    const label = `Level of the ${stack.frames} dark frames of ${name(stack)}, from ${qx.number(Math.min(...stack.levels))} to ${qx.number(Math.max(...stack.levels))} ADU`;
    const figure = qx.make("figure", {}, qx.chart(label, () => {
      const made = qx.lines([{ label: "level", points: stack.levels.map((y, x) => ({ x: x + 1, y })) }], `frame (${name(stack)})`, "mean, ADU");
      made.data.datasets[0].pointRadius = stack.levels.map((_, at) => (stack.off.includes(at) ? 6 : 2));
      return made;
    }, "12rem"));
    const enough = stack.enough;
    figure.append(qx.make("figcaption", {}, `${name(stack)}: ` + (enough ? `${stack.frames} frames leave ${qx.number(enough.remainingAdu)} ADU of noise in the correction and add `
      + `${qx.number(enough.addedPercent)} % to an image's own; ${enough.framesForFivePercent} add less than 5 %. From ${enough.framesToRounding} on more change nothing, because pixels are whole ADU. ` : "") + (stack.off.length ? "" : "No frame is off.")));
    grid.append(figure);
  }
  section.append(grid);
  return section;
};
