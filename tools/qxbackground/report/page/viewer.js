"use strict";
// A picture that is looked into: zoom down to single pixels, the value under the pointer, contrast; all by keys as well.

qx.viewer = (title, views) => {
  // views: [{name, picture}]; pixels are unpacked when they are first shown.
  const canvas = qx.make("canvas", { class: "picture", role: "img", tabindex: "0", "aria-label": title });
  const readout = qx.make("output", { "aria-live": "polite" }, "Point at a pixel, or press the arrow keys.");
  const low = qx.make("span"), high = qx.make("span");
  const state = { view: views[0], zoom: 1, x: 0, y: 0, cursor: null, source: null };
  const limit = () => Math.max(1, Math.max(state.view.picture.width, state.view.picture.height) / 8);

  const shown = () => ({ width: state.view.picture.width / state.zoom, height: state.view.picture.height / state.zoom });
  const clampView = () => {
    const { width, height } = shown();
    state.x = Math.min(Math.max(0, state.x), state.view.picture.width - width);
    state.y = Math.min(Math.max(0, state.y), state.view.picture.height - height);
  };
  const draw = () => {
    if (!state.source) return;
    const picture = state.view.picture;
    const { width, height } = shown();
    const pixels = Math.min(1024, Math.max(256, Math.round((canvas.clientWidth || 512) * (window.devicePixelRatio || 1))));
    canvas.width = pixels;
    canvas.height = Math.max(1, Math.round(pixels * picture.height / picture.width));
    const context = canvas.getContext("2d");
    context.imageSmoothingEnabled = false;
    context.drawImage(state.source, state.x, state.y, width, height, 0, 0, canvas.width, canvas.height);
    if (state.cursor) {
      const side = Math.max(6, canvas.width / width);
      const at = (value, from, span, length) => (value + 0.5 - from) / span * length;
      const x = at(state.cursor.x, state.x, width, canvas.width), y = at(state.cursor.y, state.y, height, canvas.height);
      context.lineWidth = 2;
      context.strokeStyle = "#ff9d2e";
      context.strokeRect(x - side / 2, y - side / 2, side, side);
    }
  };
  const paint = () => {
    const picture = state.view.picture;
    canvas.style.aspectRatio = `${picture.width} / ${picture.height}`;
    state.source = qx.paint(picture, state.view.pixels, state.view.black, state.view.white);
    low.textContent = `${state.view.black} ADU`;
    high.textContent = `${state.view.white} ADU`;
    draw();
  };
  const show = async (view) => {
    state.view = view;
    view.pixels ??= await qx.unpack(view.picture);
    if (view.black === undefined) Object.assign(view, qx.stretch(view.pixels));
    state.zoom = 1;
    state.cursor = null;
    clampView();
    paint();
  };
  const read = () => {
    const picture = state.view.picture, { x, y } = state.cursor;
    readout.textContent = `x ${picture.left + x * picture.step}, y ${picture.top + y * picture.step}: `
      + `${state.view.pixels[y * picture.width + x]} ADU`;
  };
  const point = (x, y) => {
    const picture = state.view.picture;
    state.cursor = {
      x: Math.min(Math.max(0, Math.floor(x)), picture.width - 1), y: Math.min(Math.max(0, Math.floor(y)), picture.height - 1),
    };
    read();
    draw();
  };
  const zoom = (by, x, y) => {
    const { width, height } = shown();
    const centre = { x: x ?? (state.cursor ? state.cursor.x + 0.5 : state.x + width / 2),
                     y: y ?? (state.cursor ? state.cursor.y + 0.5 : state.y + height / 2) };
    const across = { x: (centre.x - state.x) / width, y: (centre.y - state.y) / height };
    state.zoom = Math.min(limit(), Math.max(1, state.zoom * by));
    state.x = centre.x - across.x * shown().width;
    state.y = centre.y - across.y * shown().height;
    clampView();
    draw();
  };
  const place = (event) => {
    const box = canvas.getBoundingClientRect(), { width, height } = shown();
    return { x: state.x + (event.clientX - box.left) / box.width * width,
             y: state.y + (event.clientY - box.top) / box.height * height };
  };

  let dragged = null;
  canvas.addEventListener("pointermove", (event) => {
    if (!state.source) return;
    if (dragged) {
      const box = canvas.getBoundingClientRect(), { width, height } = shown();
      state.x = dragged.x - (event.clientX - dragged.fromX) / box.width * width;
      state.y = dragged.y - (event.clientY - dragged.fromY) / box.height * height;
      clampView();
      draw();
    }
    const at = place(event);
    point(at.x, at.y);
  });
  canvas.addEventListener("pointerdown", (event) => {
    if (state.zoom > 1) dragged = { x: state.x, y: state.y, fromX: event.clientX, fromY: event.clientY };
  });
  for (const end of ["pointerup", "pointerleave", "pointercancel"]) canvas.addEventListener(end, () => { dragged = null; });
  canvas.addEventListener("wheel", (event) => {
    if (!event.ctrlKey && document.activeElement !== canvas) return; // the page scrolls as it should
    event.preventDefault();
    const at = place(event);
    zoom(event.deltaY < 0 ? 1.25 : 0.8, at.x, at.y);
  }, { passive: false });
  canvas.addEventListener("dblclick", (event) => { const at = place(event); zoom(2, at.x, at.y); });
  canvas.addEventListener("keydown", (event) => {
    if (!state.source || event.altKey || event.ctrlKey || event.metaKey) return;
    const moves = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
    if (moves[event.key]) {
      const { width, height } = shown();
      const by = event.shiftKey ? 10 : 1;
      const from = state.cursor ?? { x: Math.floor(state.x + width / 2), y: Math.floor(state.y + height / 2) };
      const moved = { x: from.x + moves[event.key][0] * by, y: from.y + moves[event.key][1] * by };
      point(moved.x, moved.y);
      if (state.cursor.x < state.x || state.cursor.x >= state.x + width) state.x = state.cursor.x - width / 2;
      if (state.cursor.y < state.y || state.cursor.y >= state.y + height) state.y = state.cursor.y - height / 2;
      clampView();
      draw();
    } else if (event.key === "+" || event.key === "=") zoom(2);
    else if (event.key === "-") zoom(0.5);
    else if (event.key === "0") zoom(1e-9);
    else return;
    event.preventDefault();
  });
  window.addEventListener("resize", draw);

  const button = (text, label, act) => qx.make("button", { type: "button", "aria-label": label, onclick: act }, text);
  const controls = qx.make("div", { class: "row controls" },
    button("+", `${title}: larger`, () => zoom(2)), button("−", `${title}: smaller`, () => zoom(0.5)),
    button("all", `${title}: all of it`, () => zoom(1e-9)));
  if (views.length > 1) {
    controls.append(qx.make("select", { "aria-label": `${title}: which part`,
      onchange: (event) => show(views[event.target.value]) },
      ...views.map((view, at) => qx.make("option", { value: at }, view.name))));
  }
  const step = views[0].picture.step;
  const caption = step > 1 ? `Every ${step}th pixel in both directions; the values are those of single pixels. `
    : "Every pixel. ";
  const figure = qx.make("figure", {}, canvas,
    qx.make("div", { class: "scale" }, low, qx.make("span", { class: "bar" }), high), readout, controls,
    qx.make("figcaption", {}, caption, qx.onScreen("Keys: arrows move, + and − zoom, 0 shows all.")));
  figure.ready = show(views[0]);
  figure.state = state;
  return figure;
};
