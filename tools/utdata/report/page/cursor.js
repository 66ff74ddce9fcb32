'use strict';
// How the cursor is moved, what is chosen, and how the page comes up.

const inside = (value, quantity) => Math.min(quantity - 1, Math.max(0, value));

let isDrawing = false;
function moveTo(row, column, sample) {
  const {view} = state;
  state.row = inside(row, view.rows.quantity);
  state.column = inside(column, view.columns.quantity);
  state.sample = hasAScans() ? inside(sample ?? strongestSample(state.row, state.column), view.samples.quantity) : sample;
  state.seen = null;
  if (isDrawing) return;
  isDrawing = true;
  requestAnimationFrame(() => {
    isDrawing = false;
    draw();
  });
  showReadout();
}

function moveToStrongestOfChannel() {
  const end = projectionOf(state.view)?.end, sizeAt = pixel => Math.abs(end.percents[pixel]);
  if (!end || state.layer.gate !== undefined) return;
  moveToPixel('end', end.percents.reduce((best, _, pixel) => sizeAt(pixel) > (sizeAt(best) || 0) ? pixel : best, 0));
}

function moveToStrongest() {
  const {strongest} = state.layer, columns = state.view.columns.quantity;
  moveTo(Math.floor(strongest / columns), strongest % columns);
}

// Which cell a place on each picture means; the C-scan's cursor stands at the strongest echo of its A-scan.
const targets = {
  cscan: (across, down) => alongOf(state.view) === 'rows' ? [across(state.view.rows), down(state.view.columns), null]
                                                          : [down(state.view.rows), across(state.view.columns), null],
  bscan: (across, down) => alongOf(state.view) === 'rows' ? [across(state.view.rows), state.column, down(state.view.samples)]
                                                          : [state.row, across(state.view.columns), down(state.view.samples)],
  ascan: across => [state.row, state.column, across(state.view.samples)],
};
const steps = {
  cscan: {ArrowLeft: [0, -1], ArrowRight: [0, 1], ArrowUp: [-1, 0], ArrowDown: [1, 0]},
  bscan: {ArrowLeft: [0, -1, 0], ArrowRight: [0, 1, 0], ArrowUp: [0, 0, -1], ArrowDown: [0, 0, 1], PageUp: [-1, 0, 0], PageDown: [1, 0, 0]},
  ascan: {ArrowLeft: [0, 0, -1], ArrowRight: [0, 0, 1], ArrowUp: [0, -1, 0], ArrowDown: [0, 1, 0], PageUp: [-1, 0, 0], PageDown: [1, 0, 0]},
};

// The axes of each picture, and how many cells they have; amplitudes are none that can be zoomed.
const axesOf = name => ({cscan: cscanAxes(state.view), bscan: [alongOf(state.view), 'samples'], ascan: ['samples', null], ...partAxes})[name];
function cellsOf(axis) {
  if (state.view[axis]) return state.view[axis].quantity;
  const projection = projectionOf(state.view);
  return Math.max(...partsOf(projection).map(name => scalesOf(projection, name)[axis]?.quantity ?? 0));
}

// Where the mouse is on a picture, in parts of its sides.
function placeOn(name, event) {
  const frame = frames[name], bounds = byId(name).getBoundingClientRect();
  return [(event.clientX - bounds.left - frame.left) / frame.width, (event.clientY - bounds.top - frame.top) / frame.height];
}

function follow(name, event) {
  if (partAxes[name]) return followProjection(name, event);
  const [across, down] = placeOn(name, event);
  const cell = (place, axis, {from, to}) => inside(Math.floor((from + place * (to - from)) * axis.quantity), axis.quantity);
  const shownOf = axis => state.shown[Object.keys(state.shown).find(key => state.view[key] === axis)];
  moveTo(...targets[name](axis => cell(across, axis, shownOf(axis)), axis => cell(down, axis, shownOf(axis))));
}

// ---- zoom and drag: pictures that share an axis show the same part of it

const leastCells = 4;

function show(name, from, length) {
  const least = Math.min(1, leastCells / cellsOf(name)), size = Math.min(1, Math.max(least, length));
  const start = Math.min(1 - size, Math.max(0, from));
  state.shown[name] = {from: start, to: start + size};
}

// Around a place of a picture, which stays where it is.
function zoom(name, place, factor) {
  axesOf(name).forEach((axis, side) => {
    if (!axis) return;
    const {from, to} = state.shown[axis], at = from + place[side] * (to - from);
    const least = Math.min(1, leastCells / cellsOf(axis));
    const size = Math.min(1, Math.max(least, (to - from) * factor));
    show(axis, at - place[side] * size, size);
  });
  draw();
}

function drag(name, moved, shown) {
  axesOf(name).forEach((axis, side) => {
    if (axis) show(axis, shown[axis].from - moved[side] * (shown[axis].to - shown[axis].from), shown[axis].to - shown[axis].from);
  });
  draw();
}

function showWhole() {
  showAll();
  draw();
}

// A press that moves drags the picture; one that does not holds the cursor, or lets it go.
function listenToMouse(name, canvas) {
  const nearly = 4;  // pixels
  let press = null;
  canvas.addEventListener('pointerdown', event => {
    press = {x: event.clientX, y: event.clientY, place: placeOn(name, event), shown: {...state.shown}, isDrag: false};
    if (event.isTrusted) canvas.setPointerCapture(event.pointerId);
  });
  canvas.addEventListener('pointermove', event => {
    if (!press) return state.isHeld || follow(name, event);
    press.isDrag ||= Math.hypot(event.clientX - press.x, event.clientY - press.y) > nearly;
    const place = placeOn(name, event);
    if (press.isDrag) drag(name, place.map((part, side) => part - press.place[side]), press.shown);
  });
  canvas.addEventListener('pointerup', event => {
    if (press && !press.isDrag) {
      state.isHeld = !state.isHeld;
      follow(name, event);
    }
    press = null;
  });
  canvas.addEventListener('pointercancel', () => press = null);
  canvas.addEventListener('wheel', event => {
    event.preventDefault();
    zoom(name, placeOn(name, event), 1.2 ** Math.sign(event.deltaY));
  }, {passive: false});
  canvas.addEventListener('dblclick', showWhole);
}

// Of another beam of the channel, which is another view; it is shown as this one is.
function moveToSample(view, row, column, sample) {
  const {label} = state.layer;
  if (view !== state.view) {
    useView(view);
    const same = view.layers.findIndex(layer => layer.label === label);
    if (same >= 0) useLayer(same);
  }
  moveTo(row, column, sample);
}

// ---- the sector scan: another beam at the same cell

function moveToBeam(index, sample) {
  const {beams} = sectorOf(state.view);
  moveToSample(facts.views[beams[inside(index, beams.length)].view], state.row, state.column, sample);
}

function followSector(event) {
  const sector = sectorOf(state.view), place = placeOn('sector', event);
  const [x, y] = [sector.across, sector.down].map((axis, side) => Math.floor(place[side] * axis.quantity));
  if (x < 0 || y < 0 || x >= sector.across.quantity || y >= sector.down.quantity) return;
  const seen = strongestOn(sector, y * sector.across.quantity + x, state.row, state.column);
  if (seen) moveToBeam(seen.beam, seen.sample);
}

function pressOnSector(event) {
  const moves = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]}[event.key];
  if (!moves) return press('ascan', event);
  const [beams, samples] = moves.map(step => step * (event.shiftKey ? 10 : 1));
  moveToBeam(inside(beamOf(sectorOf(state.view), state.view) + beams, Infinity), state.sample + samples);
  event.preventDefault();
}

function setReference() {
  const {view, row, column, sample, reference} = state;
  const isThere = reference && reference.view === view && reference.row === row && reference.column === column &&
                  reference.sample === sample;
  state.reference = isThere ? null : {view, row, column, sample, percent: hasAScans() ? percentAt(row, column, sample) : state.seen};
  draw();
}

// ---- keys and choices

// Where the cursor is on a picture, in parts of its sides.
function placeOfCursor(name) {
  const {column: columns, row: rows, sample: samples} = state, cursor = {columns, rows, samples};
  if (!partAxes[name]) return axesOf(name).map(axis => axis && placeOf(axis, cursor[axis]));
  const place = placeInPart(state), projection = projectionOf(state.view);
  return partAxes[name].map(axis => place ? partOfShown(projection, axis, place[axis]) : 0.5);
}

function press(name, event) {
  const middle = placeOfCursor(name), arrow = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]}[event.key];
  if (event.key === 'Home') moveToStrongest();
  else if (event.key === 'r') setReference();
  else if (event.key === '+') zoom(name, middle, 1 / 1.5);
  else if (event.key === '-') zoom(name, middle, 1.5);
  else if (event.key === '0') showWhole();
  else if (event.key === 'Enter') moveTo(state.row, state.column);
  else if (partAxes[name]) {
    if (!arrow) return;
    stepOnProjection(name, ...arrow.map(step => step * (event.shiftKey ? 10 : 1)));
  } else if (steps[name][event.key]) {
    let [rows, columns, samples] = steps[name][event.key].map(step => step === undefined ? step : step * (event.shiftKey ? 10 : 1));
    if (name !== 'ascan' && alongOf(state.view) === 'rows') [rows, columns] = [columns, rows];
    moveTo(state.row + rows, state.column + columns, samples === undefined ? undefined : state.sample + samples);
  } else return;
  event.preventDefault();
}

function listen() {
  for (const name of [...Object.keys(targets), ...Object.keys(partAxes)]) {
    const canvas = byId(name);
    listenToMouse(name, canvas);
    canvas.addEventListener('keydown', event => press(name, event));
    canvas.setAttribute('aria-label', `${name}; the arrow keys move the cursor`);
  }
  const sector = byId('sector');
  sector.addEventListener('pointermove', event => state.isHeld || followSector(event));
  sector.addEventListener('pointerdown', event => {
    state.isHeld = !state.isHeld;
    followSector(event);
  });
  sector.addEventListener('keydown', pressOnSector);
  sector.setAttribute('aria-label', 'sector scan; the arrow keys go from beam to beam and along it');
  byId('view').addEventListener('change', event => showView(Number(event.target.value)));
  byId('layer').addEventListener('change', event => {
    useLayer(Number(event.target.value));
    fitColors();
    moveTo(state.row, state.column);
  });
  for (const id of ['lengths', 'axis', 'levels', 'palette', 'range']) byId(id).addEventListener('input', draw);
  byId('reference').addEventListener('click', setReference);
  byId('whole').addEventListener('click', showWhole);
  byId('choices').addEventListener('submit', event => event.preventDefault());
  window.addEventListener('resize', draw);
}

function setOptions(select, names) {
  select.replaceChildren(...names.map((name, index) => new Option(name, String(index))));
  select.disabled = names.length < 2;
}

// The views of each channel together, where there are several channels.
function setViews(select) {
  const angleOf = view => sectorOf(view)?.beams[beamOf(sectorOf(view), view)].angle;
  setOptions(select, facts.views.map(view => `${view.label} (${sectorOf(view) ? `beam at ${number(angleOf(view), 1)}°` : view.kind})`));
  const channels = [...new Set(facts.views.map(view => view.channel))];
  if (channels.length < 2) return;
  const options = [...select.options];
  select.replaceChildren(...channels.map(channel => {
    const group = element('optgroup', null, ...options.filter((_, index) => facts.views[index].channel === channel));
    group.label = `Channel ${channel}`;
    return group;
  }));
}

// Colours up to the strongest echo of the channel, or of the C-scan of a gate.
function fitColors() {
  const {amplitude, data, strongest, gate} = state.layer, projection = gate === undefined && projectionOf(state.view);
  if (!amplitude) return;
  const largest = projection?.extent ? strongestOfProjection(projection) : Math.abs(percentOf(amplitude, data[strongest]));
  byId('range').value = Math.max(0.1, Math.ceil(10 * largest) / 10);
}

function useLayer(index) {
  state.layer = state.view.layers[index];
  byId('layer').value = String(index);
}

// Takes a view that is unpacked, with its first C-scan of a gate.
function useView(view) {
  state.view = view;
  byId('view').value = String(facts.views.indexOf(view));
  setOptions(byId('layer'), view.layers.map(layer => layer.label));
  useLayer(Math.max(0, view.layers.findIndex(layer => layer.gate !== undefined && layer.amplitude)));
  for (const element of document.querySelectorAll('.sound')) element.hidden = !view.data;
  if (view.samples) {
    const axes = soundAxes(view), chosen = choice('axis');
    byId('axis').replaceChildren(...Object.entries(axes).map(([key, axis]) => new Option(axis.title, key)));
    if (axes[chosen]) byId('axis').value = chosen;
  }
  byId('axis').parentElement.hidden = !view.data;
  for (const option of byId('levels').options) if (option.value === 'dac') option.hidden = option.disabled = !view.dac;
  if (choice('levels') === 'dac' && !view.dac) byId('levels').value = 'decibel';
}

async function showView(index) {
  const view = facts.views[index], sector = sectorOf(view), projection = projectionOf(view);
  await unpackView(view);
  if (sector) await unpackSector(sector);
  if (projection) await unpackProjection(projection);
  state.reference = null;
  showAll();
  useView(view);
  fitColors();
  moveToStrongest();
  draw();
}

// ---- tables

function element(name, text, ...children) {
  const made = document.createElement(name);
  if (text !== undefined && text !== null) made.textContent = text;
  made.append(...children);
  return made;
}
const row = (name, cells) => element('tr', null, ...cells.map(cell => cell instanceof Node ? cell : element(name, cell)));

function table(columns, rows) {
  const made = element('table');
  made.append(element('thead', null, row('th', columns)), element('tbody', null, ...rows.map(cells => row('td', cells))));
  return made;
}

function showTables() {
  for (const {title, rows} of facts.tables) {
    const body = element('tbody', null, ...rows.map(([name, value]) => element('tr', null, element('th', name), element('td', value))));
    byId('tables').append(element('article', null, element('h3', title), element('table', null, body)));
  }
  if (facts.tables.length === 0) byId('tables').append(element('p', 'The inspection says nothing of its specimen and set-up.'));
  const {columns, rows} = facts.defects;
  byId('defects').append(rows.length ? table(columns, rows) : element('p', 'No defect is recorded.'));
  for (const event of facts.history) {
    const origin = event.file + (event.write > 1 ? `, write ${event.write}` : '');
    const by = [event.when ?? 'at an unknown time', `${event.program} ${event.version}`.trim(), event.author && `by ${event.author}`];
    const lines = event.changes.flatMap(({group, added, fields}) => fields.length === 0
      ? [[group, added ? 'added' : 'written anew', '', '']]
      : fields.map(({field, before, after}) => [group, field, element('td', null, element('del', before)), after]));
    byId('history').append(element('h3', origin), element('p', by.filter(Boolean).join(', ') + (event.reason && `: ${event.reason}`)),
                           ...(lines.length ? [table(['Group', 'Field', 'Before', 'After'], lines)] : []));
  }
}

// #view=0&row=3&column=133&sample=165 opens the page at that place.
async function openAtPlace() {
  const place = new URLSearchParams(location.hash.slice(1));
  const asked = name => place.has(name) && Number.isInteger(Number(place.get(name))) ? Number(place.get(name)) : undefined;
  const view = inside(asked('view') ?? 0, facts.views.length);
  byId('view').value = String(view);
  await showView(view);
  if (asked('view') === undefined) moveToStrongestOfChannel();
  if (asked('row') === undefined && asked('column') === undefined && asked('sample') === undefined) return;
  moveTo(asked('row') ?? state.row, asked('column') ?? state.column, asked('sample'));
  draw();
}

async function start() {
  document.title = facts.title;
  byId('title').textContent = facts.title;
  byId('files').textContent = facts.files.join(' with ');
  byId('footer').textContent = `Made by ${facts.maker}. Nothing in this page is loaded from elsewhere.`;
  byId('missing').append(...facts.missing.map(line => element('li', line)));
  showTables();
  if (facts.views.length > 0) {
    byId('viewer').hidden = false;
    setViews(byId('view'));
    listen();
    await openAtPlace();
  }
  document.body.dataset.ready = 'yes';
}
start().catch(error => {
  byId('missing').append(element('li', 'This browser cannot show the views: ' + error.message));
});
