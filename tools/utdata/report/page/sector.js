'use strict';
// The sector scan of the channel's beams at the cursor's scan position. What falls on which pixel, and where a sample lies in the
// part, stands in tables of the page.

// The sector scan that the view is a beam of; undefined without one.
const sectorOf = view => facts.sectors.find(sector => sector.beams.some(beam => facts.views[beam.view] === view));
const beamOf = (sector, view) => sector.beams.findIndex(beam => facts.views[beam.view] === view);

async function unpackSector(sector) {
  if (sector.stretchesOf) return;
  const tables = await unpack(sector.stretches, false), {quantity} = sector;
  const [columns, rows, beams, first, last] = [0, 1, 2, 3, 4].map(table => tables.subarray(table * quantity, (table + 1) * quantity));
  sector.table = {columns, rows, beams, first, last};
  for (const beam of sector.beams) {
    const view = facts.views[beam.view];
    await unpackView(view);
    const places = await unpack(beam.places, true), samples = view.samples.quantity;
    [beam.across, beam.down, beam.distance, beam.depth, beam.leg] =
        [0, 1, 2, 3, 4].map(table => places.subarray(table * samples, (table + 1) * samples));
  }
  // Where the stretches of each pixel begin.
  const pixels = sector.across.quantity * sector.down.quantity;
  sector.stretchesOf = new Uint32Array(pixels + 1);
  for (let at = 0; at < quantity; ++at) ++sector.stretchesOf[rows[at] * sector.across.quantity + columns[at] + 1];
  for (let pixel = 0; pixel < pixels; ++pixel) sector.stretchesOf[pixel + 1] += sector.stretchesOf[pixel];
}

// The strongest sample on a pixel at a scan position; null where no beam is.
function strongestOn(sector, pixel, row, column) {
  const {beams, first, last} = sector.table;
  let strongest = null;
  for (let at = sector.stretchesOf[pixel]; at < sector.stretchesOf[pixel + 1]; ++at) {
    const view = facts.views[sector.beams[beams[at]].view];
    const start = (row * view.columns.quantity + column) * view.samples.quantity;
    for (let sample = first[at]; sample <= last[at]; ++sample) {
      const percent = percentOf(view.amplitude, view.data[start + sample]);
      if (!strongest || Math.abs(percent) > Math.abs(strongest.percent)) strongest = {beam: beams[at], sample, percent};
    }
  }
  return strongest;
}

// How far the picture has moved across since the first scan position.
function movedBy(sector) {
  if (!sector.moves) return 0;
  const axis = state.view[sector.moves];
  return (sector.moves === 'columns' ? state.column : state.row) * axis.step;
}

function paintSector(sector, colors) {
  const {across, down} = sector, picture = document.createElement('canvas');
  [picture.width, picture.height] = [across.quantity, down.quantity];
  const context = picture.getContext('2d'), pixels = context.createImageData(across.quantity, down.quantity);
  for (let pixel = 0; pixel < across.quantity * down.quantity; ++pixel) {
    const shown = strongestOn(sector, pixel, state.row, state.column);
    if (!shown) continue;
    const code = 3 * Math.round(255 * Math.min(1, Math.abs(shown.percent) / rangeOf()));
    pixels.data.set([colors[code], colors[code + 1], colors[code + 2], 255], 4 * pixel);
  }
  context.putImageData(pixels, 0, 0);
  return picture;
}

// A frame in which a millimetre is as long across as down.
function sectorFrame(sector) {
  const frame = new Plots.Frame(byId('sector'), {right: 110});
  const scale = Math.min(frame.width / sector.across.quantity, frame.height / sector.down.quantity);
  frame.left += (frame.width - scale * sector.across.quantity) / 2;
  frame.width = scale * sector.across.quantity;
  frame.height = scale * sector.down.quantity;
  return frame;
}

function drawSector() {
  const sector = sectorOf(state.view);
  for (const element of document.querySelectorAll('.beams')) element.hidden = !sector?.stretchesOf;
  if (!sector?.stretchesOf) return;
  const frame = frames.sector = sectorFrame(sector), colors = paletteOf(Plots.palettes.heat), moved = movedBy(sector);
  const key = JSON.stringify([rangeOf(), choice('palette'), state.row, state.column]);
  if (sector.pictureKey !== key) {
    sector.picture = paintSector(sector, colors);
    sector.pictureKey = key;
  }
  frame.context.imageSmoothingEnabled = false;
  Plots.paint(frame, sector.picture);
  const across = {...sector.across, first: sector.across.first + moved};
  frame.axis('bottom', edges(inChosenLengths(across), 'Position', Plots.whole));
  frame.axis('left', edges(inChosenLengths(sector.down), 'Depth, unfolded', Plots.whole));
  Plots.colorBar(frame, colors, ...levelAxis({from: rangeOf(), to: 0, title: 'Amplitude (%)'}));
  const place = (axis, value) => ((value - axis.first) / axis.step + 0.5) / axis.quantity;
  frame.clipped(() => {
    for (const {weld, dashed, points} of sector.lines) {
      const shown = points.map(([x, y]) => [frame.x(place(weld ? across : sector.across, x)), frame.y(place(sector.down, y))]);
      for (let at = 1; at < shown.length; ++at) frame.line(shown[at - 1], shown[at], weld ? Plots.green : Plots.cyan, dashed ? [5, 4] : []);
    }
  });
  const beam = sector.beams[beamOf(sector, state.view)], {sample, reference} = state;
  const cross = (beam, sample, color) =>
      frame.cross(place(sector.across, beam.across[sample] * sector.step), place(sector.down, beam.down[sample] * sector.step), color);
  const other = reference && sector.beams[beamOf(sector, reference.view)];
  if (other && reference.row === state.row && reference.column === state.column) cross(other, reference.sample, Plots.blue);
  cross(beam, sample, Plots.red);
  const length = steps => textAt(inChosenLengths({unit: 'mm', first: steps * sector.step, step: 0.1}), 0);
  const leg = beam.leg[sample];
  byId('read-leg').textContent = leg ? `Depth and distance in leg ${leg}` : 'Depth and distance';
  byId('read-place').textContent = leg ? `${length(beam.depth[sample])}, ${length(beam.distance[sample])}` : '–';
  byId('sector-caption').textContent = `Sector scan of ${sector.beams.length} beams at row ${state.row}, column ${state.column}; ` +
                                       `cursor on the beam at ${number(beam.angle, 1)}°`;
}
