"use strict";
// Diagrams. Each is drawn in the theme's colours and drawn anew when the theme changes; its figures stand in words in
// its label.
qx.charts = [];

qx.colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

qx.chart = (label, configure, height) => {
  const canvas = qx.make("canvas", { role: "img", "aria-label": label });
  const box = qx.make("div", { class: "chart", style: height ? `height:${height}` : null }, canvas);
  const entry = { canvas, configure, chart: null };
  qx.charts.push(entry);
  entry.draw = () => {
    if (entry.chart) entry.chart.destroy();
    entry.chart = new Chart(canvas, configure());
  };
  box.redraw = entry.draw;
  return box;
};

qx.drawCharts = () => {
  Chart.defaults.animation = false;
  Chart.defaults.color = qx.colour("--text");
  Chart.defaults.borderColor = qx.colour("--grid");
  Chart.defaults.maintainAspectRatio = false;
  Chart.defaults.elements.point.radius = 0;
  Chart.defaults.elements.line.borderWidth = 1.5;
  Chart.defaults.font.size = 12;
  for (const entry of qx.charts) entry.draw();
};

qx.axis = (title, more = {}) => ({ title: { display: true, text: title }, ...more });

qx.lines = (series, xTitle, yTitle, xMore = {}) => ({
  type: "line",
  data: {
    datasets: series.map(({ label, points }, at) => ({
      label, data: points, parsing: false, borderColor: qx.colour(at ? "--series2" : "--series1"),
      backgroundColor: qx.colour(at ? "--series2" : "--series1"),
    })),
  },
  options: {
    scales: { x: { type: "linear", ...qx.axis(xTitle, xMore) }, y: qx.axis(yTitle) },
    plugins: { legend: { display: series.length > 1, labels: { boxHeight: 2 } } },
    interaction: { mode: "nearest", axis: "x", intersect: false },
  },
});

qx.histogramChart = (histogram, logarithmic) => {
  const points = histogram.counts.map((count, at) => ({ x: histogram.from + (at + 0.5) * histogram.step, y: count }))
    .filter((point) => !logarithmic || point.y > 0);
  return {
    type: "bar",
    data: {
      datasets: [{
        label: "pixels", data: points, parsing: false, backgroundColor: qx.colour("--series1"), barPercentage: 1,
        categoryPercentage: 1, minBarLength: 1,
      }],
    },
    options: {
      scales: {
        x: { type: "linear", offset: false, ...qx.axis("value, ADU") },
        y: { type: logarithmic ? "logarithmic" : "linear", ...(logarithmic ? { min: 0.7 } : { beginAtZero: true }), ...qx.axis("pixels") },
      },
      plugins: { legend: { display: false } },
    },
  };
};
