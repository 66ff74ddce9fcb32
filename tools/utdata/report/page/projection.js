'use strict';
// Top, side and end views of a channel: all of its beams, looked at along an axis of the part. Which sample each pixel shows, and
// where a sample lies in the part, stands in tables of the page.

// What the pictures show across and down; those that share an axis show the same part of it.
const partAxes = {top: ['across', 'along'], side: ['along', 'depth'], end: ['across', 'depth']};
const partTitles = {across: 'Position along the columns', along: 'Position along the rows', depth: 'Depth'};
// Those that the page has: beams that run straight down show in a top view what the C-scan shows.
const partsOf = projection => Object.keys(partAxes).filter(name => projection?.[name]);

// The projections that show the view's beam; undefined without any.
const projectionOf = view => facts.projections.find(projection => projection.beams.some(beam => facts.views[beam.view] === view));
const projectedBeamOf = (projection, view) => projection.beams.find(beam => facts.views[beam.view] === view);

async function unpackProjection(projection) {
  if (projection.extent) return;
  for (const beam of projection.beams) {
    await unpackView(facts.views[beam.view]);
    const places = await unpack(beam.places, true), quantity = places.length / 4;
    [beam.across, beam.along, beam.depth, beam.leg] = [0, 1, 2, 3].map(table => places.subarray(table * quantity, (table + 1) * quantity));
  }
  for (const name of partsOf(projection)) {
    const picture = projection[name], quantity = picture.across.quantity * picture.down.quantity;
    const tables = await unpack(picture.pixels, false);
    [picture.beams, picture.samples, picture.cellsLow, picture.cellsHigh, picture.values] =
        [0, 1, 2, 3, 4].map(table => tables.subarray(table * quantity, (table + 1) * quantity));
    picture.percents = Float32Array.from(picture.beams, (_, pixel) => sourceOf(projection, picture, pixel)?.percent ?? NaN);
  }
  // What all pictures show of each axis, in millimetres.
  const ends = axis => [at(axis, -0.5), at(axis, axis.quantity - 0.5)];
  projection.extent = {};
  for (const name of partsOf(projection))
    for (const [axis, scale] of Object.entries(scalesOf(projection, name))) {
      const [from, to] = ends(scale), before = projection.extent[axis] ?? [from, to];
      projection.extent[axis] = [Math.max(from, before[0]), Math.min(to, before[1])];
    }
}

// What a pixel shows: the view of a beam, the cell, the sample, and how strong it is; null for nothing.
function sourceOf(projection, picture, pixel) {
  const beam = projection.beams[picture.beams[pixel] - 1];
  if (!beam) return null;
  const view = facts.views[beam.view], cell = picture.cellsLow[pixel] + 65536 * picture.cellsHigh[pixel];
  const value = view.signed ? picture.values[pixel] << 16 >> 16 : picture.values[pixel];
  return {view, row: Math.floor(cell / view.columns.quantity), column: cell % view.columns.quantity, sample: picture.samples[pixel],
          percent: percentOf(view.amplitude, value)};
}

// Where a sample lies in the part, in millimetres, and in which leg; null where it does not.
function placeInPart({view, row, column, sample}) {
  const projection = projectionOf(view), beam = projection && projectedBeamOf(projection, view);
  if (!beam?.leg?.[sample]) return null;
  const onAxis = (axis, index) => axis.unit === 'mm' ? at(axis, index) : 0;
  return {across: onAxis(view.columns, column) + beam.across[sample] * projection.step,
          along: onAxis(view.rows, row) + beam.along[sample] * projection.step,
          depth: beam.depth[sample] * projection.step, leg: beam.leg[sample]};
}

const strongestOfProjection = projection => partsOf(projection).reduce((strongest, name) => projection[name].percents.reduce(
    (most, percent) => Math.abs(percent) > most ? Math.abs(percent) : most, strongest), 0);

// ---- pictures

// A picture's own axes by their names in the part.
const scalesOf = (projection, name) => ({[partAxes[name][0]]: projection[name].across, [partAxes[name][1]]: projection[name].down});
const shownLength = (projection, axis) => (projection.extent[axis][1] - projection.extent[axis][0]) *
                                          (state.shown[axis].to - state.shown[axis].from);
// A place of an axis as part of what is shown of it, and back.
function partOfShown(projection, axis, value) {
  const [from, to] = projection.extent[axis], {from: begin, to: end} = state.shown[axis];
  return ((value - from) / (to - from) - begin) / (end - begin);
}
const valueOfShown = (projection, axis, part) => projection.extent[axis][0] + state.shown[axis].from *
    (projection.extent[axis][1] - projection.extent[axis][0]) + part * shownLength(projection, axis);

// Which pixels of an axis are shown, as parts of all of them.
function pixelsShown(projection, axis, scale) {
  const part = place => (valueOfShown(projection, axis, place) - at(scale, -0.5)) / (scale.step * scale.quantity);
  return {cells: scale.quantity, part: {from: part(0), to: part(1)}};
}

// A frame in which a millimetre is as long across as down, unless what is shown would be a strip too thin to be read.
function projectionFrame(projection, name) {
  const canvas = byId(name), [across, down] = partAxes[name], highest = name === 'top' ? 420 : 300, edges = 50, beside = 168;
  const length = axis => projection.extent[axis][1] - projection.extent[axis][0];
  const width = canvas.clientWidth - beside, wanted = width * length(down) / length(across);
  canvas.style.height = (wanted < 60 ? highest : Math.min(highest, Math.max(150, wanted + edges))) + 'px';
  const frame = new Plots.Frame(canvas, {right: 110}), [lengthAcross, lengthDown] = [across, down].map(axis => shownLength(projection, axis));
  const scale = Math.min(frame.width / lengthAcross, frame.height / lengthDown);
  frame.isTrue = scale * lengthAcross > frame.width / 3 && scale * lengthDown > frame.height / 2;
  if (!frame.isTrue) return frame;
  frame.left += (frame.width - scale * lengthAcross) / 2;
  frame.width = scale * lengthAcross;
  frame.height = scale * lengthDown;
  return frame;
}

function paintProjection(projection, name, frame, colors) {
  const picture = projection[name], range = rangeOf();
  const [across, down] = [picture.across, picture.down].map((scale, side) => pixelsShown(projection, partAxes[name][side], scale));
  const key = JSON.stringify([frame.width, frame.height, range, choice('palette'), across.part, down.part]);
  if (picture.pictureKey !== key) {
    const width = picture.across.quantity;
    picture.picture = Plots.image(frame, across, down, (x, y) => Math.abs(picture.percents[y * width + x]) / range, colors, false, null);
    picture.pictureKey = key;
  }
  Plots.paint(frame, picture.picture);
}

function drawProjection(projection, name) {
  const frame = frames[name] = projectionFrame(projection, name), colors = paletteOf(Plots.palettes.heat), [across, down] = partAxes[name];
  paintProjection(projection, name, frame, colors);
  const axis = key => {
    const scale = inChosenLengths({unit: 'mm', first: valueOfShown(projection, key, 0), step: shownLength(projection, key)});
    return {from: scale.first, to: scale.first + scale.step, title: `${partTitles[key]} (${scale.unit})`};
  };
  frame.axis('bottom', axis(across));
  frame.axis('left', axis(down));
  Plots.colorBar(frame, colors, ...levelAxis({from: rangeOf(), to: 0, title: 'Amplitude (%)'}));
  frame.clipped(() => {
    for (const points of projection[name].weld) {
      const shown = points.map(([x, y]) => [frame.x(partOfShown(projection, across, x)), frame.y(partOfShown(projection, down, y))]);
      for (let at = 1; at < shown.length; ++at) frame.line(shown[at - 1], shown[at], Plots.green);
    }
  });
  const cross = (cursor, color) => {
    const place = placeInPart(cursor);
    if (place) frame.cross(partOfShown(projection, across, place[across]), partOfShown(projection, down, place[down]), color);
  };
  if (state.reference && projectionOf(state.reference.view) === projection) cross(state.reference, Plots.blue);
  cross(state, Plots.red);
  const kind = {top: 'Top view', side: 'Side view, along the rows', end: 'End view, along the columns'}[name];
  const beams = projection.beams.length;
  byId(name + '-caption').textContent = [`${kind}: the largest amplitude of ${beams === 1 ? 'one beam' : `${beams} beams`}` +
      (frame.isTrue ? '' : '; not true to scale'), ...projection.remarks].join('. ');
}

// What stands in the read-outs of the part.
function showPlace() {
  const {view} = state, place = placeInPart(state), sector = sectorOf(view);
  const {unit, first: scale, step} = inChosenLengths({unit: 'mm', first: 1, step: 0.1});
  const lengths = ({across, along, depth}) => [across, along, depth].map(value => number(value * scale, step)).join(', ') + ' ' + unit;
  byId('read-part').textContent = place ? lengths(place) : '–';
  const angle = sector && `${number(sector.beams[beamOf(sector, view)].angle, 1)}°`;
  byId('read-beam').textContent = [angle ?? view.label, place && `leg ${place.leg}`].filter(Boolean).join(', ');
  const other = state.reference && placeInPart(state.reference);
  byId('difference-part').textContent = place && other ? lengths(Object.fromEntries(
      ['across', 'along', 'depth'].map(axis => [axis, place[axis] - other[axis]]))) : '–';
  if (!hasAScans()) byId('read-amplitude').textContent = state.seen === null ? '–' : sampleLevelText(state, state.seen);
}

function drawProjections() {
  const projection = projectionOf(state.view), isThere = Boolean(projection?.extent);
  for (const element of document.querySelectorAll('.part')) element.hidden = !isThere;
  if (!projection?.top) byId('top').parentElement.hidden = true;
  byId('amplitude').hidden = !isThere && !hasAScans();
  byId('top').parentElement.classList.toggle('alone', !sectorOf(state.view)?.stretchesOf);
  if (!isThere) return;
  for (const name of partsOf(projection)) drawProjection(projection, name);
}

// ---- the cursor: a pixel stands for the sample that it shows

// Which pixel of each picture the cursor was last put on, while it stays there.
const pixelsPointedAt = {};

function moveToPixel(name, pixel) {
  const projection = projectionOf(state.view), shown = sourceOf(projection, projection[name], pixel);
  if (!shown) return false;
  moveToSample(shown.view, shown.row, shown.column, shown.sample);
  state.seen = shown.percent;
  pixelsPointedAt[name] = {pixel, shown};
  showReadout();
  return true;
}

// The strongest pixel under the mouse.
function followProjection(name, event) {
  const projection = projectionOf(state.view), {across, down, percents} = projection[name], frame = frames[name];
  const cells = (axis, scale, place, length) => {
    const {cells, part} = pixelsShown(projection, axis, scale);
    return place < 0 || place >= 1 ? [0, 0] : Plots.cellsOfPixel(Math.floor(place * length), Math.round(length), cells, part);
  };
  const [x, y] = placeOn(name, event);
  const [left, right] = cells(partAxes[name][0], across, x, frame.width), [top, bottom] = cells(partAxes[name][1], down, y, frame.height);
  let strongest = -1;
  for (let line = top; line < bottom; ++line)
    for (let pixel = line * across.quantity + left; pixel < line * across.quantity + right; ++pixel)
      if (Math.abs(percents[pixel]) > (strongest < 0 ? -1 : Math.abs(percents[strongest]))) strongest = pixel;
  if (strongest >= 0) moveToPixel(name, strongest);
}

// The pixel of the cursor: the one that it was put on, or else the one at its place.
function pixelOfCursor(projection, name) {
  const last = pixelsPointedAt[name];
  if (last && ['view', 'row', 'column', 'sample'].every(key => last.shown[key] === state[key])) return last.pixel;
  const place = placeInPart(state), scales = scalesOf(projection, name);
  if (!place) return 0;
  const [x, y] = partAxes[name].map(axis => inside(Math.round((place[axis] - scales[axis].first) / scales[axis].step), scales[axis].quantity));
  return y * projection[name].across.quantity + x;
}

// The next pixel in a direction that shows something.
function stepOnProjection(name, right, down) {
  const projection = projectionOf(state.view), {across, down: lines} = projection[name], start = pixelOfCursor(projection, name);
  let x = start % across.quantity + right, y = Math.floor(start / across.quantity) + down;
  const turn = value => Math.sign(value);
  x = inside(x, across.quantity);
  y = inside(y, lines.quantity);
  while (x >= 0 && y >= 0 && x < across.quantity && y < lines.quantity && !moveToPixel(name, y * across.quantity + x)) {
    x += turn(right);
    y += turn(down);
  }
}
