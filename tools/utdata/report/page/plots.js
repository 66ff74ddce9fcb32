'use strict';
// Pictures on a canvas: an area between its axes, with an image or a curve in it. Knows pixels and numbers, nothing of inspections.
const Plots = (() => {
  const ink = '#202024', pale = '#60626a', grid = '#e4e5e9', blue = '#184ea0', red = '#d62828', green = '#28af5a', cyan = '#0096c8', violet = '#8a3fb0';
  const font = '12px "DejaVu Sans", "Segoe UI", system-ui, sans-serif';

  // 256 colours whose lightness rises evenly between the anchors.
  function colorTable(anchors) {
    const table = new Uint8ClampedArray(3 * 256);
    for (let code = 0; code < 256; ++code) {
      const along = code / 255 * (anchors.length - 1);
      const before = Math.min(Math.floor(along), anchors.length - 2);
      for (let part = 0; part < 3; ++part) {
        const low = anchors[before][part], high = anchors[before + 1][part];
        table[3 * code + part] = low + (high - low) * (along - before);
      }
    }
    return table;
  }
  // Perceptual: its lightness rises all the way. Rainbow: as amplitudes have long been shown. Grey: dark to light.
  const heat = colorTable([[0, 0, 4], [31, 12, 72], [85, 15, 109], [136, 34, 106], [186, 54, 85], [227, 89, 51],
                           [249, 140, 10], [249, 201, 50], [252, 255, 164]]);
  const grey = colorTable([[0, 0, 0], [255, 255, 255]]);
  const rainbow = colorTable([[255, 255, 255], [120, 180, 255], [0, 60, 255], [0, 200, 200], [0, 190, 0], [255, 240, 0],
                              [255, 140, 0], [255, 0, 0], [150, 0, 0]]);
  const palettes = {heat, rainbow, grey};
  const whole = {from: 0, to: 1};

  // Round values between two ends: at 1, 2 or 5 times a power of ten.
  function ticks(from, to, most) {
    const low = Math.min(from, to), length = Math.abs(to - from);
    if (!(length > Math.max(Math.abs(from), Math.abs(to)) * 1e-12)) return [];
    const least = length / Math.max(most - 1, 1), power = 10 ** Math.floor(Math.log10(least));
    const step = power * ([1, 2, 5].find(factor => factor * power >= least * (1 - 1e-9)) ?? 10);
    const decimals = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
    const found = [];
    for (let number = Math.ceil(low / step - 1e-6); number * step <= low + length * (1 + 1e-9); ++number)
      found.push({value: number * step, label: (number * step).toFixed(Math.min(decimals, 9)).replace(/^-(0(\.0*)?)$/, '$1')});
    return found;
  }

  // A canvas made as sharp as the screen, and the area in it that the axes leave.
  class Frame {
    constructor(canvas, edges) {
      const sharpness = window.devicePixelRatio || 1;
      const width = canvas.clientWidth || 600, height = canvas.clientHeight || 300;
      if (canvas.width !== Math.round(width * sharpness)) canvas.width = Math.round(width * sharpness);
      if (canvas.height !== Math.round(height * sharpness)) canvas.height = Math.round(height * sharpness);
      this.context = canvas.getContext('2d');
      this.context.setTransform(sharpness, 0, 0, sharpness, 0, 0);
      this.context.clearRect(0, 0, width, height);
      this.context.font = font;
      this.sharpness = sharpness;
      this.left = edges.left ?? 58;
      this.top = edges.top ?? 10;
      this.width = Math.max(10, width - this.left - (edges.right ?? 16));
      this.height = Math.max(10, height - this.top - (edges.bottom ?? 40));
    }
    get right() { return this.left + this.width; }
    get bottom() { return this.top + this.height; }
    x(part) { return this.left + part * this.width; }
    y(part) { return this.top + part * this.height; }

    outline() {
      this.context.strokeStyle = ink;
      this.context.strokeRect(this.left - 0.5, this.top - 0.5, this.width + 1, this.height + 1);
    }

    text(text, x, y, align, color = ink) {
      this.context.fillStyle = color;
      this.context.textAlign = align;
      this.context.fillText(text, x, y);
    }

    upwards(text, x) {
      this.context.save();
      this.context.translate(x, this.top + this.height / 2);
      this.context.rotate(-Math.PI / 2);
      this.text(text, 0, 0, 'center');
      this.context.restore();
    }

    // An axis at one side; `lines` also draws its marks through the area. Marks of its own replace round ones.
    axis(side, axis, {marks, lines = false} = {}) {
      const level = side === 'bottom';
      const part = value => (value - axis.from) / (axis.to - axis.from);
      let before = -Infinity;
      const shown = marks ?? ticks(axis.from, axis.to, Math.min(12, level ? Math.max(5, this.width / 60) : Math.max(3, this.height / 40)));
      for (const {value, label} of shown) {
        const at = part(value);
        if (!(at >= -1e-9 && at <= 1 + 1e-9)) continue;
        const x = Math.round(this.x(at)), y = Math.round(this.y(at));
        if (Math.abs((level ? x : y) - before) < 13) continue;
        before = level ? x : y;
        this.context.fillStyle = grid;
        if (lines) level ? this.context.fillRect(x, this.top, 1, this.height) : this.context.fillRect(this.left, y, this.width, 1);
        this.context.fillStyle = ink;
        if (level) this.context.fillRect(x, this.bottom, 1, 5);
        else this.context.fillRect(side === 'left' ? this.left - 5 : this.right, y, 5, 1);
        if (level) this.text(label, x, this.bottom + 17, 'center');
        else this.text(label, side === 'left' ? this.left - 8 : this.right + 8, y + 4, side === 'left' ? 'right' : 'left');
      }
      if (level) this.text(axis.title, this.x(0.5), this.bottom + 34, 'center', pale);
      else this.upwards(axis.title, side === 'left' ? this.left - 46 : this.right + 44);
    }

    // Draws within the area only.
    clipped(drawing) {
      this.context.save();
      this.context.beginPath();
      this.context.rect(this.left, this.top, this.width, this.height);
      this.context.clip();
      drawing();
      this.context.restore();
    }

    line(from, to, color = red, dash = []) {
      this.context.strokeStyle = color;
      this.context.setLineDash(dash);
      this.context.beginPath();
      this.context.moveTo(from[0], from[1]);
      this.context.lineTo(to[0], to[1]);
      this.context.stroke();
      this.context.setLineDash([]);
    }

    // Lines through a place of the area, in parts of its sides, which leave the place itself free; `down` may be missing, and what
    // lies outside of the area is not drawn.
    cross(across, down, color = red) {
      const isIn = part => part >= 0 && part <= 1;
      const x = Math.floor(this.x(across)) + 0.5, y = Math.floor(this.y(down ?? 0)) + 0.5, free = down === null ? 0 : 9;
      for (const [shade, width] of [['rgba(255, 255, 255, 0.5)', 3], [color, 1]]) {
        this.context.lineWidth = width;
        if (isIn(across)) {
          this.line([x, this.top], [x, Math.min(this.bottom, Math.max(this.top, y - free))], shade);
          this.line([x, Math.max(this.top, Math.min(this.bottom, y + free))], [x, this.bottom], shade);
        }
        if (down === null || !isIn(down)) continue;
        this.line([this.left, y], [Math.min(this.right, Math.max(this.left, x - free)), y], shade);
        this.line([Math.max(this.left, Math.min(this.right, x + free)), y], [this.right, y], shade);
      }
      this.context.lineWidth = 1;
    }
  }

  // The cells that one pixel shows of a part of an axis, as [begin, end).
  function cellsOfPixel(pixel, pixels, cells, part) {
    const first = part.from * cells, shown = (part.to - part.from) * cells;
    if (pixels >= shown) {
      const nearest = Math.min(cells - 1, Math.floor(first + (2 * pixel + 1) * shown / (2 * pixels)));
      return [nearest, nearest + 1];
    }
    return [Math.floor(first + pixel * shown / pixels), Math.min(cells, Math.ceil(first + (pixel + 1) * shown / pixels))];
  }

  // An image of cells whose places on the colour scale are 0 to 1; NaN is left free. Where several fall on one pixel, the strongest
  // is shown: an echo never vanishes. `across` and `down`: how many cells there are, and which part of them is shown.
  // `signed`: the strongest is the one farthest from the middle. `damaged`: whether a cell is; null where none is. Such cells are
  // striped.
  function image(frame, {cells: columns, part: across}, {cells: rows, part: down}, place, colors, signed, damaged) {
    const width = Math.round(frame.width * frame.sharpness), height = Math.round(frame.height * frame.sharpness);
    const picture = document.createElement('canvas');
    picture.width = width;
    picture.height = height;
    const context = picture.getContext('2d'), pixels = context.createImageData(width, height);
    const isStronger = signed ? (a, b) => Math.abs(a - 0.5) < Math.abs(b - 0.5) : (a, b) => a < b;
    const stronger = (a, b) => isStronger(a, b) || Number.isNaN(a) ? b : a;
    const spans = Array.from({length: width}, (_, x) => cellsOfPixel(x, width, columns, across));
    const line = new Float32Array(columns), striped = new Uint8Array(columns);
    let lineBegin = -1, lineEnd = -1;
    for (let y = 0, at = 0; y < height; ++y) {
      const [begin, end] = cellsOfPixel(y, height, rows, down);
      if (begin !== lineBegin || end !== lineEnd) {
        for (let column = 0; column < columns; ++column) {
          let strongest = place(column, begin);
          for (let row = begin + 1; row < end; ++row) strongest = stronger(strongest, place(column, row));
          line[column] = strongest;
          if (!damaged) continue;
          striped[column] = 0;
          for (let row = begin; row < end; ++row) if (damaged(column, row)) striped[column] = 1;
        }
        [lineBegin, lineEnd] = [begin, end];
      }
      for (let x = 0; x < width; ++x, at += 4) {
        let strongest = line[spans[x][0]];
        for (let column = spans[x][0] + 1; column < spans[x][1]; ++column) strongest = stronger(strongest, line[column]);
        if (damaged && (x + y) % 8 < 4) {
          let isStriped = 0;
          for (let column = spans[x][0]; column < spans[x][1]; ++column) isStriped |= striped[column];
          if (isStriped) {
            pixels.data.set([0, 150, 255, 255], at);
            continue;
          }
        }
        if (Number.isNaN(strongest)) continue;
        const code = 3 * Math.round(255 * Math.min(1, Math.max(0, strongest)));
        pixels.data[at] = colors[code];
        pixels.data[at + 1] = colors[code + 1];
        pixels.data[at + 2] = colors[code + 2];
        pixels.data[at + 3] = 255;
      }
    }
    context.putImageData(pixels, 0, 0);
    return picture;
  }

  function paint(frame, picture) {
    frame.context.drawImage(picture, frame.left, frame.top, frame.width, frame.height);
    frame.outline();
  }

  // A bar of the colours at the right of the area, with its scale.
  function colorBar(frame, colors, axis, marks) {
    const left = frame.right + 24, width = 14;
    for (let y = 0; y < frame.height; ++y) {
      const code = 3 * Math.round(255 * (1 - y / Math.max(1, frame.height - 1)));
      frame.context.fillStyle = `rgb(${colors[code]}, ${colors[code + 1]}, ${colors[code + 2]})`;
      frame.context.fillRect(left, frame.top + y, width, 1.5);
    }
    const bar = Object.assign(Object.create(Frame.prototype), frame, {left, width});
    bar.outline();
    bar.axis('right', axis, {marks});
  }

  // A curve of the values of cells, each at the middle of its cell, between low and high; null interrupts it. Where several fall on
  // one pixel it spans all.
  function curve(frame, {cells, part}, valueAt, low, high, color = blue) {
    const context = frame.context;
    const y = value => frame.y(1 - (Math.min(high, Math.max(low, value)) - low) / (high - low));
    frame.clipped(() => {
      context.strokeStyle = color;
      context.lineWidth = 1.4;
      context.lineJoin = 'round';
      context.beginPath();
      const first = Math.max(0, Math.floor(part.from * cells) - 1), end = Math.min(cells, Math.ceil(part.to * cells) + 1);
      let isOpen = false;
      for (let cell = first; cell < end; ++cell) {
        const value = valueAt(cell), x = frame.x(((cell + 0.5) / cells - part.from) / (part.to - part.from));
        if (value !== null) isOpen ? context.lineTo(x, y(value)) : context.moveTo(x, y(value));
        isOpen = value !== null;
      }
      context.stroke();
    });
  }

  return {Frame, palettes, whole, cellsOfPixel, image, paint, colorBar, curve, red, blue, green, cyan, violet, pale};
})();
