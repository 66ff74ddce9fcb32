'use strict';
// The views of an inspection under the cursor: units, read-outs and pictures.
const facts = JSON.parse(document.getElementById('facts').textContent);
const byId = id => document.getElementById(id);

// Values as the program packs them: differences modulo 2^16, all low bytes before all high bytes, as a zlib stream in base64.
async function unpack(index, signed) {
  const packed = Uint8Array.from(atob(byId('values' + index).textContent), character => character.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('deflate'));
  const planes = new Uint8Array(await new Response(stream).arrayBuffer());
  const quantity = planes.length / 2;
  const values = signed ? new Int16Array(quantity) : new Uint16Array(quantity);
  for (let at = 0, value = 0; at < quantity; ++at) values[at] = value = value + planes[at] + 256 * planes[quantity + at] & 0xFFFF;
  return values;
}

// Runs of cells as one number a cell; null without any.
function spread(runs, cells) {
  if (!runs) return null;
  const spread = new Uint8Array(cells);
  for (const [first, quantity] of runs) spread.fill(1, first, first + quantity);
  return spread;
}

async function unpackView(view) {
  for (const layer of view.layers) layer.data ??= await unpack(layer.values, layer.signed);
  const cells = view.columns.quantity * view.rows.quantity;
  for (const shown of [view, ...view.layers]) shown.isDamaged ??= spread(shown.damaged, cells);
  if (typeof view.ascans === 'number') view.data ??= await unpack(view.ascans, view.signed);
}

// `seen`: how strong the echo at the cursor is where a picture of the part says so, or null. `reference`: where the second cursor
// stands, in which view, and how strong it is there; or null. `shown`: which part of each axis the pictures show.
const state = {view: null, layer: null, row: 0, column: 0, sample: 0, isHeld: false, seen: null, reference: null, shown: {}};
const showAll = () => ['rows', 'columns', 'samples', 'across', 'along', 'depth'].forEach(axis => state.shown[axis] = Plots.whole);
showAll();
const choice = id => byId(id).value;
// With the digits that a tenth of a step has.
function number(value, step) {
  if (!Number.isFinite(value)) return '–';
  const decimals = step ? Math.min(9, Math.max(0, 1 - Math.floor(Math.log10(Math.abs(step)) + 1e-9))) : 3;
  return String(Number(value.toFixed(decimals)) + 0);
}

// ---- amplitudes and axes, in the chosen units

function percentOf(amplitude, value) {
  return value * (value < 0 ? amplitude.below : amplitude.above);
}
function decibelsOf(percent) {
  return facts.decibels.full + facts.decibels.perDecade * Math.log10(Math.abs(percent) / 100);
}
const percentOfLevel = level => 100 * 10 ** ((level - facts.decibels.full) / facts.decibels.perDecade);
const decibelMarks = () => [0, -3, -6, -9, -12, -18, -24, -30, -40].map(level => ({value: percentOfLevel(level), label: String(level)}));
function levelText(percent) {
  if (choice('levels') === 'percent') return percent.toFixed(1) + ' %';
  return percent === 0 ? '−∞ dB' : decibelsOf(percent).toFixed(1) + ' dB';
}
// The channel's distance-amplitude curve at a sample, in dB of full scale; null outside of it.
function dacAt(view, sample) {
  const points = view.dac?.points ?? [], after = points.findIndex(([place]) => place >= sample);
  if (after < 0 || points[0][0] > sample) return null;
  const [to, end] = points[after], [from, begin] = points[Math.max(0, after - 1)];
  return to === from ? end : begin + (end - begin) * (sample - from) / (to - from);
}
// How strong a sample is: above the channel's curve where that is chosen, else of full scale. A number in dB, or null.
const isRelative = view => choice('levels') === 'dac' && Boolean(view.dac);
function relativeLevel({view, sample}, percent) {
  if (!percent) return null;
  const level = isRelative(view) ? dacAt(view, sample) : 0;
  return level === null ? null : decibelsOf(percent) - level;
}
function sampleLevelText(cursor, percent) {
  if (!isRelative(cursor.view)) return levelText(percent);
  const level = relativeLevel(cursor, percent);
  return level === null ? 'no DAC here' : `${level > 0 ? '+' : ''}${level.toFixed(1)} dB to DAC`;
}
// An axis of the file in the chosen unit of length.
function inChosenLengths(axis) {
  const isInch = axis.unit === 'mm' && choice('lengths') === 'in';
  const scale = 1 / (isInch ? facts.millimetresPerInch : 1);
  return {...axis, unit: isInch ? 'in' : axis.unit, first: axis.first * scale, step: axis.step * scale};
}
const at = (axis, index) => axis.first + index * axis.step;
const withUnit = (text, axis) => text + (axis.unit === '°' ? '°' : ' ' + axis.unit);
const textAt = (axis, index) => withUnit(number(at(axis, index), axis.step), axis);
const placeText = (axis, index) => axis.plain ? String(index) : `${index} (${textAt(axis, index)})`;
// The part of an axis that is shown.
const edges = (axis, title, part) => ({from: at(axis, part.from * axis.quantity - 0.5), to: at(axis, part.to * axis.quantity - 0.5),
                                       title: axis.plain ? title : `${title} (${axis.unit})`});

// Of TOFD data the depth of a diffracting tip, which no evenly spaced axis has: one number a sample.
// An axis and an index on it, or null.
function depthAt(view, sample) {
  if (!view.tofdDepths) return view.depth ? [inChosenLengths(view.depth), sample] : null;
  const depth = view.tofdDepths[sample];
  if (depth === null) return null;
  const next = view.tofdDepths[sample + 1] ?? view.tofdDepths[sample - 1] ?? depth;
  const finest = 1;  // tenths of it are what the unit of these depths prints
  return [inChosenLengths({unit: 'mm', first: depth, step: Math.max(Math.abs(next - depth), finest)}), 0];
}
function soundAxes(view) {
  const axes = {time: {axis: view.samples, title: view.samples.unit === 'µs' ? 'Time of flight' : 'Sound path'}};
  if (view.path) axes.path = {axis: inChosenLengths(view.path), title: 'Half sound path'};
  if (view.depth && !view.tofdDepths) axes.depth = {axis: inChosenLengths(view.depth), title: 'Depth'};
  return axes;
}
function chosenSoundAxis(view) {
  const axes = soundAxes(view), chosen = axes[choice('axis')] ?? axes.time;
  return edges(chosen.axis, chosen.title, state.shown.samples);
}

// ---- samples of the view

const cellOf = (row, column) => row * state.view.columns.quantity + column;
const valueAt = (row, column, sample) => state.view.data[cellOf(row, column) * state.view.samples.quantity + sample];
const percentAt = (row, column, sample) => percentOf(state.view.amplitude, valueAt(row, column, sample));
const hasAScans = () => Boolean(state.view.data);

// The strongest echo of an A-scan; under a C-scan of a gate, the strongest in that gate.
function strongestSample(row, column) {
  const {quantity} = state.view.samples, gate = state.view.gates.find(gate => gate.id === state.layer.gate);
  const first = gate ? Math.min(quantity - 1, Math.max(0, Math.round(gate.from))) : 0;
  const end = gate ? Math.min(quantity, Math.max(first + 1, Math.round(gate.from) + Math.round(gate.to - gate.from))) : quantity;
  let strongest = first, largest = -1;
  for (let sample = first; sample < end; ++sample) {
    const size = Math.abs(percentAt(row, column, sample));
    if (size > largest) [strongest, largest] = [sample, size];
  }
  return strongest;
}

// ---- read-outs

// A position C-scan has 0 where no echo reached the gate's level.
const hasEcho = (layer, cell) => layer.amplitude || layer.data[cell] !== layer.noEcho;

function layerText(layer, cell) {
  if (layer.isDamaged?.[cell]) return 'damaged';
  const value = layer.data[cell];
  if (layer.amplitude) return levelText(percentOf(layer.amplitude, value));
  if (!hasEcho(layer, cell)) return 'no echo';
  return textAt(layer.position, value) + (layer.path ? `, ${textAt(inChosenLengths(layer.path), value)}` : '');
}

// From the reference to the cursor.
function differenceText(here, there) {
  return here && there ? withUnit(number(at(...here) - at(...there), here[0].step || there[0].step), here[0]) : '–';
}

function showDifferences() {
  const {view, row, column, sample, reference} = state;
  for (const element of document.querySelectorAll('.difference')) element.hidden = !reference;
  if (!reference) return;
  const show = (name, here, there) => byId('difference-' + name).textContent = differenceText(here, there);
  show('row', [inChosenLengths(view.rows), row], [inChosenLengths(reference.view.rows), reference.row]);
  show('column', [inChosenLengths(view.columns), column], [inChosenLengths(reference.view.columns), reference.column]);
  const percent = hasAScans() ? percentAt(row, column, sample) : state.seen;
  const level = relativeLevel(state, percent), other = relativeLevel(reference, reference.percent);
  byId('difference-amplitude').textContent = level === null || other === null ? '–' : (level - other).toFixed(1) + ' dB';
  if (!hasAScans()) return;
  const {path} = soundAxes(view), there = soundAxes(reference.view).path;
  show('time', [view.samples, sample], [reference.view.samples, reference.sample]);
  show('path', path && [path.axis, sample], there && [there.axis, reference.sample]);
  show('depth', depthAt(view, sample), depthAt(reference.view, reference.sample));
}

function showReadout() {
  const {view, layer, row, column, sample} = state;
  byId('read-row').textContent = placeText(inChosenLengths(view.rows), row);
  byId('read-column').textContent = placeText(inChosenLengths(view.columns), column);
  byId('read-layer-name').textContent = layer.label;
  byId('read-layer').textContent = layerText(layer, cellOf(row, column));
  showDifferences();
  showPlace();
  if (!hasAScans()) return;
  const axes = soundAxes(view);
  byId('read-sample').textContent = sample;
  byId('read-time').textContent = view.samples.plain ? '–' : textAt(view.samples, sample);
  byId('read-path').textContent = axes.path ? textAt(axes.path.axis, sample) : '–';
  const depth = depthAt(view, sample);
  byId('read-depth').textContent = depth ? textAt(...depth) : '–';
  const isDamaged = view.isDamaged?.[cellOf(row, column)];
  byId('read-amplitude').textContent = isDamaged ? 'damaged' : sampleLevelText(state, percentAt(row, column, sample));
  byId('read-value').textContent = isDamaged ? 'damaged' : valueAt(row, column, sample);
}

// ---- pictures

const rangeOf = () => Math.max(0.1, Number(choice('range')) || 100);
const frames = {};
const paletteOf = usual => Plots.palettes[choice('palette')] ?? usual;
// The levels of the colours: in percent, or at the same places in decibels.
const levelAxis = percents => choice('levels') === 'percent' ? [percents]
                                                              : [{...percents, title: 'Amplitude (dB)'}, decibelMarks()];
const shownOf = name => ({cells: state.view[name].quantity, part: state.shown[name]});
// Where a cell's middle lies in the part of its axis that is shown.
const placeOf = (name, cell) => ((cell + 0.5) / state.view[name].quantity - state.shown[name].from) /
                                (state.shown[name].to - state.shown[name].from);

function drawCursors(frame, across, down) {
  const cross = (place, color) => frame.cross(placeOf(across, place[across]), down && placeOf(down, place[down]), color);
  const placed = ({row, column, sample}) => ({rows: row, columns: column, samples: sample});
  if (state.reference?.view === state.view) cross(placed(state.reference), Plots.blue);
  cross(placed(state), Plots.red);
}

function cscanScale() {
  const {layer} = state;
  if (layer.amplitude)
    return {place: cell => Math.abs(percentOf(layer.amplitude, layer.data[cell])) / rangeOf(),
            axis: levelAxis({from: rangeOf(), to: 0, title: 'Amplitude (%)'})};
  const largest = Math.max(1, layer.data.reduce((a, b) => Math.max(a, b), 0)), axis = layer.position;
  return {place: cell => hasEcho(layer, cell) ? layer.data[cell] / largest : NaN,
          axis: [{from: at(axis, largest), to: at(axis, 0), title: `Position (${axis.unit})`}]};
}

// Along which axis the samples are shown: along the rows, as a D-scan, where there is one column only. The C-scan lies alike.
const alongOf = view => view.columns.quantity === 1 && view.rows.quantity > 1 ? 'rows' : 'columns';
const cscanAxes = view => alongOf(view) === 'rows' ? ['rows', 'columns'] : ['columns', 'rows'];
const scanTitles = {columns: 'Scan position', rows: 'Index position'};

function drawCScan() {
  const {view, layer} = state, canvas = byId('cscan'), [acrossName, downName] = cscanAxes(view), isTurned = acrossName === 'rows';
  canvas.style.height = isTurned ? '120px' : '';
  const frame = frames.cscan = new Plots.Frame(canvas, {right: 110});
  const scale = cscanScale(), colors = paletteOf(Plots.palettes.heat);
  const across = shownOf(acrossName), down = shownOf(downName);
  const cellAt = (x, y) => isTurned ? cellOf(x, y) : cellOf(y, x);
  const key = JSON.stringify([frame.width, frame.height, rangeOf(), choice('palette'), across, down]);
  if (layer.pictureKey !== key) {
    layer.picture = Plots.image(frame, across, down, (x, y) => scale.place(cellAt(x, y)), colors, false,
                                layer.isDamaged && ((x, y) => layer.isDamaged[cellAt(x, y)]));
    layer.pictureKey = key;
  }
  Plots.paint(frame, layer.picture);
  frame.axis('bottom', edges(inChosenLengths(view[acrossName]), scanTitles[acrossName], across.part));
  if (!isTurned) frame.axis('left', edges(inChosenLengths(view[downName]), scanTitles[downName], down.part));
  Plots.colorBar(frame, colors, ...scale.axis);
  drawCursors(frame, acrossName, downName);
}

function drawBScan() {
  const {view, row: shownRow, column: shownColumn} = state, along = alongOf(view), isD = along === 'rows';
  const cell = index => isD ? [index, shownColumn] : [shownRow, index], frame = frames.bscan = new Plots.Frame(byId('bscan'), {right: 84});
  const range = rangeOf(), across = shownOf(along), down = shownOf('samples');
  const place = view.wave ? (index, sample) => 0.5 + percentAt(...cell(index), sample) / range / 2
                          : (index, sample) => Math.abs(percentAt(...cell(index), sample)) / range;
  const colors = paletteOf(view.wave ? Plots.palettes.grey : Plots.palettes.heat);
  const key = JSON.stringify([frame.width, frame.height, range, cell(-1), choice('palette'), across, down]);
  if (view.pictureKey !== key) {
    view.picture = Plots.image(frame, across, down, place, colors, view.wave,
                               view.isDamaged && (index => view.isDamaged[cellOf(...cell(index))]));
    view.pictureKey = key;
  }
  Plots.paint(frame, view.picture);
  frame.axis('bottom', edges(inChosenLengths(view[along]), scanTitles[along], across.part));
  frame.axis('left', chosenSoundAxis(view));
  const levels = levelAxis({from: range, to: view.wave ? -range : 0, title: 'Amplitude (%)'});
  Plots.colorBar(frame, colors, ...view.wave ? levels.slice(0, 1) : levels);
  drawCursors(frame, along, 'samples');
  byId('bscan-caption').textContent = isD ? 'D-scan at column ' + placeText(inChosenLengths(view.columns), shownColumn)
                                          : 'B-scan at row ' + placeText(inChosenLengths(view.rows), shownRow);
}

// Echoes below zero are drawn so where the samples have a sign.
const hasSign = view => view.signed;

function drawGate(frame, gate, low, high) {
  const part = place => Math.min(1, Math.max(0, placeOf('samples', place)));
  if (part(gate.from) === part(gate.to)) return;
  const levels = hasSign(state.view) ? [gate.above, -gate.below] : [gate.above];
  for (const level of levels) {
    const y = frame.y(1 - (Math.min(high, Math.max(low, level)) - low) / (high - low));
    frame.context.lineWidth = 2.5;
    frame.line([frame.x(part(gate.from)), y], [frame.x(part(gate.to)), y]);
    frame.context.lineWidth = 1;
    frame.text(gate.name, frame.x(part(gate.from)) + 4, y - 5, 'left', Plots.red);
  }
}

// On both sides of zero where the samples are.
function drawDac(frame, samples, low, high) {
  const {view} = state;
  if (!view.dac) return;
  const percentOfDac = sample => {
    const level = dacAt(view, sample);
    return level === null ? null : percentOfLevel(level);
  };
  for (const sign of hasSign(view) ? [1, -1] : [1])
    Plots.curve(frame, samples, sample => percentOfDac(sample) && sign * percentOfDac(sample), low, high, Plots.violet);
  const [[place, level]] = view.dac.points, start = placeOf('samples', place), percent = percentOfDac(Math.ceil(place)) ?? 0;
  if (start < 0 || start > 1 || !Number.isFinite(level)) return;
  frame.text('DAC', frame.x(start) + 4, frame.y(1 - (Math.min(high, percent) - low) / (high - low)) - 6, 'left', Plots.violet);
}

function drawAScan() {
  const {view, row, column} = state, samples = shownOf('samples');
  const frame = frames.ascan = new Plots.Frame(byId('ascan'), {right: 56});
  const levels = view.gates.flatMap(gate => [gate.above, gate.below]);
  const highestDac = Math.max(0, ...(view.dac?.points ?? []).map(([, level]) => percentOfLevel(level)));
  const high = Math.min(100, Math.max(rangeOf(), highestDac, ...levels) * 1.05), low = hasSign(view) ? -high : 0;
  const values = {from: high, to: low, title: 'Amplitude (%)'};
  frame.axis('bottom', chosenSoundAxis(view), {lines: true});
  frame.axis('left', values, {lines: true});
  frame.axis('right', {...values, title: 'Level (dB)'}, {marks: decibelMarks()});
  drawDac(frame, samples, low, high);
  Plots.curve(frame, samples, sample => percentAt(row, column, sample), low, high);
  for (const gate of view.gates) drawGate(frame, gate, low, high);
  frame.outline();
  drawCursors(frame, 'samples', null);
  byId('ascan-caption').textContent =
      `A-scan at row ${row}, column ${column}` + (view.isDamaged?.[cellOf(row, column)] ? ': damaged, shown without samples' : '');
}

function draw() {
  showReadout();
  drawCScan();
  if (hasAScans()) {
    drawBScan();
    drawAScan();
  }
  drawSector();
  drawProjections();
}
