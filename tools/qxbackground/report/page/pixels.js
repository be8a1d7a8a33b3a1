"use strict";
// Pixels that came with the page, and the library's arithmetic on them.

// Differences to the left neighbour, low bytes and then high bytes, deflated.
qx.unpack = async (picture) => {
  const bytes = Uint8Array.from(atob(picture.data), (character) => character.charCodeAt(0));
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("deflate"));
  const planes = new Uint8Array(await new Response(stream).arrayBuffer());
  const count = picture.width * picture.height;
  const pixels = new Uint16Array(count);
  for (let y = 0, at = 0; y < picture.height; ++y) {
    let left = 0;
    for (let x = 0; x < picture.width; ++x, ++at) {
      left = (left + planes[at] + (planes[count + at] << 8)) & 0xffff;
      pixels[at] = left;
    }
  }
  return pixels;
};

// What the library multiplies a stored pixel with: every step in single precision, in this order.
qx.factor = (one, levelPercent) => {
  const f = Math.fround;
  const level = f(levelPercent / 100);
  const now = f(f(f(one.lightIntensityPercent) * f(one.exposureSeconds)) * level);
  return f(now / f(f(one.referenceLightIntensityPercent) * f(one.referenceExposureSeconds)));
};

// The scaled background is rounded half up and cut to 16 bits; what is below it becomes 0.
qx.correct = (image, stored, factor) => {
  const output = new Uint16Array(image.length);
  for (let at = 0; at < image.length; ++at) {
    const rounded = Math.fround(stored[at] * factor) + 0.5;
    const background = !(rounded >= 0) ? 0 : rounded >= 65535 ? 65535 : Math.trunc(rounded);
    output[at] = image[at] > background ? image[at] - background : 0;
  }
  return output;
};

// The values that are shown black and white, and figures of the pixels.
qx.stretch = (pixels) => {
  const counts = new Uint32Array(65536);
  for (const pixel of pixels) ++counts[pixel];
  const at = (fraction) => {
    const wanted = fraction * (pixels.length - 1);
    for (let value = 0, seen = 0; value < 65536; ++value) {
      seen += counts[value];
      if (seen > wanted) return value;
    }
    return 65535;
  };
  // Noise and a glow fade out smoothly and are shown whole. Stars and hot pixels reach so far that the sky's own structure
  // would be lost: then 98 of 100 pixels have shades, and what is not much further above the middle than the darkest are below.
  const black = at(0.005), median = at(0.5), many = at(0.98), most = at(0.995);
  const white = most - median <= 1.5 * (many - median) ? most : Math.min(most, Math.max(many, median + 3 * (median - black)));
  return { black, white: Math.max(black + 1, white), median, zeros: counts[0] };
};

// A canvas of the picture's own size, gray between black and white.
qx.paint = (picture, pixels, black, white) => {
  const canvas = document.createElement("canvas");
  canvas.width = picture.width;
  canvas.height = picture.height;
  const context = canvas.getContext("2d");
  const image = context.createImageData(picture.width, picture.height);
  const scale = 255 / Math.max(1, white - black);
  for (let at = 0, to = 0; at < pixels.length; ++at, to += 4) {
    const gray = (pixels[at] - black) * scale;
    image.data[to] = image.data[to + 1] = image.data[to + 2] = gray;
    image.data[to + 3] = 255;
  }
  context.putImageData(image, 0, 0);
  return canvas;
};
