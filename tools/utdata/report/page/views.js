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

const state = {view: null, layer: null, row: 0, column: 0, sample: 0, isHeld: false};
const choice = id => byId(id).value;
const number = value => Number.isFinite(value) ? String(Number(value.toPrecision(6))) : '–';

// ---- amplitudes and axes, in the chosen units

function percentOf(amplitude, value) {
  return value * (value < 0 ? amplitude.below : amplitude.above);
}
function levelText(percent) {
  if (choice('levels') === 'percent') return percent.toFixed(1) + ' %';
  const {full, perDecade} = facts.decibels;
  const decibels = full + perDecade * Math.log10(Math.abs(percent) / 100);
  return percent === 0 ? '−∞ dB' : decibels.toFixed(1) + ' dB';
}
// An axis of the file in the chosen unit of length.
function inChosenLengths(axis) {
  const isInch = axis.unit === 'mm' && choice('lengths') === 'in';
  const scale = 1 / (isInch ? facts.millimetresPerInch : 1);
  return {...axis, unit: isInch ? 'in' : axis.unit, first: axis.first * scale, step: axis.step * scale};
}
const at = (axis, index) => axis.first + index * axis.step;
const textAt = (axis, index) => number(at(axis, index)) + (axis.unit === '°' ? '°' : ' ' + axis.unit);
const placeText = (axis, index) => axis.plain ? String(index) : `${index} (${textAt(axis, index)})`;
const edges = (axis, title) => ({
  from: at(axis, -0.5), to: at(axis, axis.quantity - 0.5), title: axis.plain ? title : `${title} (${axis.unit})`});

// Of TOFD data the depth of a diffracting tip, which no evenly spaced axis has: one number a sample.
function depthText(view, sample) {
  if (view.tofdDepths) {
    const depth = view.tofdDepths[sample];
    return depth === null ? '–' : textAt(inChosenLengths({unit: 'mm', first: depth, step: 0}), 0);
  }
  return view.depth ? textAt(inChosenLengths(view.depth), sample) : '–';
}
function soundAxes(view) {
  const axes = {time: {axis: view.samples, title: view.samples.unit === 'µs' ? 'Time of flight' : 'Sound path'}};
  if (view.path) axes.path = {axis: inChosenLengths(view.path), title: 'Half sound path'};
  if (view.depth && !view.tofdDepths) axes.depth = {axis: inChosenLengths(view.depth), title: 'Depth'};
  return axes;
}
function chosenSoundAxis(view) {
  const axes = soundAxes(view), chosen = axes[choice('axis')] ?? axes.time;
  return edges(chosen.axis, chosen.title);
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

function showReadout() {
  const {view, layer, row, column, sample} = state;
  byId('read-row').textContent = placeText(inChosenLengths(view.rows), row);
  byId('read-column').textContent = placeText(inChosenLengths(view.columns), column);
  byId('read-layer-name').textContent = layer.label;
  const value = layer.data[cellOf(row, column)];
  byId('read-layer').textContent = layer.isDamaged?.[cellOf(row, column)] ? 'damaged' : layer.amplitude
      ? levelText(percentOf(layer.amplitude, value))
      : textAt(layer.position, value) + (layer.path ? `, ${textAt(inChosenLengths(layer.path), value)}` : '');
  if (!hasAScans()) return;
  const axes = soundAxes(view);
  byId('read-sample').textContent = sample;
  byId('read-time').textContent = view.samples.plain ? '–' : textAt(view.samples, sample);
  byId('read-path').textContent = axes.path ? textAt(axes.path.axis, sample) : '–';
  byId('read-depth').textContent = depthText(view, sample);
  const isDamaged = view.isDamaged?.[cellOf(row, column)];
  byId('read-amplitude').textContent = isDamaged ? 'damaged' : levelText(percentAt(row, column, sample));
  byId('read-value').textContent = isDamaged ? 'damaged' : valueAt(row, column, sample);
}

// ---- pictures

const rangeOf = () => Math.max(0.1, Number(choice('range')) || 100);
const frames = {};

function cscanScale() {
  const {layer} = state;
  if (layer.amplitude)
    return {place: value => Math.abs(percentOf(layer.amplitude, value)) / rangeOf(),
            axis: {from: rangeOf(), to: 0, title: 'Amplitude (%)'}};
  const largest = Math.max(1, layer.data.reduce((a, b) => Math.max(a, b), 0)), axis = layer.position;
  return {place: value => value / largest,
          axis: {from: at(axis, largest), to: at(axis, 0), title: `Position (${axis.unit})`}};
}

function drawCScan() {
  const {view, layer} = state, frame = frames.cscan = new Plots.Frame(byId('cscan'), {right: 110});
  const scale = cscanScale(), key = [frame.width, frame.height, rangeOf()].join();
  if (layer.pictureKey !== key) {
    const {quantity: columns} = view.columns;
    layer.picture = Plots.image(frame, columns, view.rows.quantity,
                                (column, row) => scale.place(layer.data[row * columns + column]), Plots.heat, false,
                                layer.isDamaged && ((column, row) => layer.isDamaged[row * columns + column]));
    layer.pictureKey = key;
  }
  Plots.paint(frame, layer.picture);
  frame.axis('bottom', edges(inChosenLengths(view.columns), 'Scan position'));
  frame.axis('left', edges(inChosenLengths(view.rows), 'Index position'));
  Plots.colorBar(frame, Plots.heat, scale.axis, 24);
  frame.cross((state.column + 0.5) / view.columns.quantity, (state.row + 0.5) / view.rows.quantity);
}

function drawBScan() {
  const {view, row} = state, frame = frames.bscan = new Plots.Frame(byId('bscan'), {});
  const range = rangeOf(), columns = view.columns.quantity, samples = view.samples.quantity;
  const place = view.wave ? (column, sample) => 0.5 + percentAt(row, column, sample) / range / 2
                          : (column, sample) => Math.abs(percentAt(row, column, sample)) / range;
  const key = [frame.width, frame.height, range, row].join();
  if (view.pictureKey !== key) {
    view.picture = Plots.image(frame, columns, samples, place, view.wave ? Plots.grey : Plots.heat, view.wave,
                                view.isDamaged && (column => view.isDamaged[cellOf(row, column)]));
    view.pictureKey = key;
  }
  Plots.paint(frame, view.picture);
  frame.axis('bottom', edges(inChosenLengths(view.columns), 'Scan position'));
  frame.axis('left', chosenSoundAxis(view));
  frame.cross((state.column + 0.5) / columns, (state.sample + 0.5) / samples);
  byId('bscan-caption').textContent = 'B-scan at row ' + placeText(inChosenLengths(view.rows), row);
}

// Echoes below zero are drawn so where the samples have a sign.
const hasSign = view => view.signed;

function drawGate(frame, gate, low, high) {
  const samples = state.view.samples.quantity, part = place => Math.min(1, Math.max(0, (place + 0.5) / samples));
  const levels = hasSign(state.view) ? [gate.above, -gate.below] : [gate.above];
  for (const level of levels) {
    const y = frame.y(1 - (Math.min(high, Math.max(low, level)) - low) / (high - low));
    frame.context.lineWidth = 2.5;
    frame.line([frame.x(part(gate.from)), y], [frame.x(part(gate.to)), y]);
    frame.context.lineWidth = 1;
    frame.text(gate.name, frame.x(part(gate.from)) + 4, y - 5, 'left', Plots.red);
  }
}

function drawAScan() {
  const {view, row, column} = state, samples = view.samples.quantity;
  const frame = frames.ascan = new Plots.Frame(byId('ascan'), {right: 56});
  const levels = view.gates.flatMap(gate => [gate.above, gate.below]);
  const high = Math.min(100, Math.max(rangeOf(), ...levels) * 1.05), low = hasSign(view) ? -high : 0;
  const values = {from: high, to: low, title: 'Amplitude (%)'};
  frame.axis('bottom', chosenSoundAxis(view), {lines: true});
  frame.axis('left', values, {lines: true});
  const decibels = [0, -6, -12, -18, -24, -30].map(level => ({value: 100 * 10 ** (level / 20), label: String(level)}));
  frame.axis('right', {...values, title: 'Level (dB)'}, {marks: decibels});
  Plots.curve(frame, samples, sample => percentAt(row, column, sample), low, high);
  for (const gate of view.gates) drawGate(frame, gate, low, high);
  frame.outline();
  frame.cross((state.sample + 0.5) / samples, null);
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
}
