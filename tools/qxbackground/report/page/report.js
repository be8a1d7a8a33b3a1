"use strict";
// Puts the page together.
qx.report = JSON.parse(document.getElementById("data").textContent);

qx.csv = (report) => {
  const field = (value) => /[",\r\n]/.test(value) ? `"${String(value).replaceAll('"', '""')}"` : String(value);
  const head = ["key", "mark", "width", "height", "exposure_s", "intensity_percent", "minimum", "average", "maximum", "mean", "median",
    "standard_deviation", "row_pattern", "column_pattern", "hot", "dead", "reasons"];
  const rows = report.corrections.map((one) => [one.key, one.mark, one.width, one.height, one.exposureSeconds, one.lightIntensityPercent,
    one.statistics.minimum, one.statistics.average, one.statistics.maximum, one.statistics.mean, one.statistics.median,
    one.statistics.standardDeviation, one.statistics.rowPattern, one.statistics.columnPattern, one.unusual.hot, one.unusual.dead,
    qx.reasons(one).join("; ")]);
  return [head, ...rows].map((row) => row.map(field).join(",") + "\n").join("");
};

qx.figures = (report) => ({ ...report,
  corrections: report.corrections.map(({ picture, detail, ...rest }) => rest),
  against: report.against.map(({ picture, stored, ...rest }) => rest) });

qx.setTheme = (choice) => {
  const dark = choice === "dark" || (choice === "system" && matchMedia("(prefers-color-scheme: dark)").matches);
  document.documentElement.dataset.theme = dark ? "dark" : "light";
  qx.drawCharts();
};

qx.start = async () => {
  const report = qx.report;
  const main = document.getElementById("main");
  document.title = `Calibration report: ${report.source.path}`;
  document.getElementById("provenance").append(report.source.kind === "store" ? "Offline store " : "Calibration file ",
    qx.make("code", {}, report.source.path), `, ${report.made.replace("T", " ").replace("Z", " UTC")}, by ${report.tool}`);
  document.getElementById("about").textContent = "It needs nothing but itself: no network, no other file. Its figures come from "
    + `${report.tool} and the library it uses; their shape is ${report.format}, version ${report.version}.`;
  const ready = [];
  const contents = [];
  const add = (section, title) => {
    main.append(section);
    contents.push(qx.make("li", {}, qx.make("a", { href: `#${section.id}` }, title)));
    if (section.ready) ready.push(section.ready);
  };
  add(qx.summarySection(report), "Summary");
  add(qx.scalingSection(report), "Across corrections");
  if (report.darks) add(qx.darksSection(report.darks), "The dark frames");
  if (report.against.length) {
    const group = qx.make("section", { id: "against", "aria-labelledby": "against-title" }, qx.make("h2", { id: "against-title" }, "Images before and after"));
    qx.againstSections = report.against.map((one, at) => qx.againstSection(one, at, report));
    group.append(...qx.againstSections);
    group.ready = Promise.all(qx.againstSections.map((section) => section.ready));
    add(group, "Images before and after");
  }
  const all = qx.make("section", { id: "corrections", "aria-labelledby": "corrections-title" }, qx.make("h2", { id: "corrections-title" }, "The corrections"));
  qx.correctionSections = report.corrections.map((one, at) => qx.correctionSection(one, at));
  all.append(...qx.correctionSections);
  all.ready = Promise.all(qx.correctionSections.map((section) => section.ready));
  add(all, "The corrections");
  document.getElementById("contents").append(...contents);

  const theme = document.getElementById("theme");
  theme.addEventListener("change", () => qx.setTheme(theme.value));
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => qx.setTheme(theme.value));
  const file = report.source.path.split(/[/\\]/).pop() || "report";
  document.getElementById("save-json").addEventListener("click", () => qx.save(`${file}.json`, "application/json", JSON.stringify(qx.figures(report), null, 2)));
  document.getElementById("save-csv").addEventListener("click", () => qx.save(`${file}.csv`, "text/csv", qx.csv(report)));
  // Printed on white, whatever the screen shows, and as wide as paper is: diagrams are drawn anew for it.
  const root = document.documentElement;
  const marks = document.querySelector("#summary details");
  let shown = null;
  window.addEventListener("beforeprint", () => {
    shown = { theme: theme.value, marks: marks.open, dots: Chart.defaults.devicePixelRatio };
    root.classList.add("printing");
    marks.open = true;
    Chart.defaults.devicePixelRatio = 3;
    qx.fit();
    qx.setTheme("light");
  });
  window.addEventListener("afterprint", () => {
    root.classList.remove("printing");
    marks.open = shown.marks;
    Chart.defaults.devicePixelRatio = shown.dots;
    qx.fit();
    qx.setTheme(shown.theme);
  });
  window.addEventListener("resize", qx.fit);
  for (const details of document.querySelectorAll("main details")) details.addEventListener("toggle", qx.fit);
  qx.fit();
  qx.setTheme("system");
  await Promise.all(ready);
};

qx.ready = qx.start();
