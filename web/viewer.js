// The viewer page: builds the map program's requests from the page's state, keeps that state in
// the address's hash so a view can be shared, and turns clicks on the picture into zoom digits or
// section points. The arithmetic on top is pure (node runs it in the tests); the page part at the
// bottom starts only in a browser.
'use strict';

const PRODUCTS = [
  ['RNEX', '실황 강수영역'],
  ['RNSN', '실황 눈비영역'],
  ['RNSN1', '실황 눈비영역(최적)'],
  ['RNSN2', '실황 눈비영역(레이더)'],
  ['AREA', '눈비가능영역'],
  ['TW', '실황 습구온도'],
  ['RN15X', 'AWS 강수(15분)*4'],
  ['HSR', '실황 레이더'],
];

const STATION_MODES = [
  [0, '없음 / none'],
  [1, '지점명 / names'],
  [2, '지점번호 / numbers'],
  [3, '15분 강수×4 / 15-min rain ×4'],
  [4, '요소 68 / element 68'],
  [5, '요소 69 / element 69'],
  [6, '바람+지점명 / wind + names'],
  [7, '바람+지점번호 / wind + numbers'],
  [8, '바람+15분 강수×4 / wind + rain'],
  [9, '바람+요소 68 / wind + element 68'],
  [10, '바람+요소 69 / wind + element 69'],
  [11, '바람 / wind only'],
];

const SIZES = [400, 500, 600, 700, 800, 1000];
const ZOOM_RULES = {
  2: { rate: 2, maxSteps: 7, divisor: 8 },
  3: { rate: 3, maxSteps: 2, divisor: 9 },
};
const ZOOM_DIGIT_FIELD = 7;
const TITLE_ROWS = 20;
const LEGEND_COLUMNS = 35;
const STEP_MINUTES = 5;

function zoomRule(rate) {
  return ZOOM_RULES[rate] || null;
}

// The program's canvas: the map's height follows its aspect ratio in single precision.
function canvasGeometry(size, nx, ny, legend) {
  const NI = size;
  const NJ = Math.trunc(Math.fround(Math.fround(ny / nx) * NI));
  return { NI, NJ, GI: NI + (legend ? LEGEND_COLUMNS : 0), GJ: NJ + TITLE_ROWS };
}

// The view after the zoom steps ([x digit, y digit] pairs): south-west corner in km, magnification.
function zoomView(nx, ny, rate, steps) {
  const rule = zoomRule(rate);
  const view = { ox: 0, oy: 0, zm: 1 };
  if (!rule) return view;
  for (const [dx, dy] of steps.slice(0, rule.maxSteps)) {
    view.ox += ((dx - 1) * (nx / rule.divisor)) / view.zm;
    view.oy += ((dy - 1) * (ny / rule.divisor)) / view.zm;
    view.zm *= rule.rate;
  }
  return view;
}

// The highest digit whose new view still lies inside the current one (5 for halves, 7 for thirds).
function lastDigit(rule) {
  return 1 + rule.divisor - rule.divisor / rule.rate;
}

// The digit whose new view is centred nearest to u, the position across the current view
// (0 its west or south edge, 1 its east or north edge). Ties go to the lower digit.
function bestDigit(u, rule) {
  let best = 1;
  let bestDistance = Infinity;
  for (let d = 1; d <= lastDigit(rule); d++) {
    const centre = (d - 1) / rule.divisor + 1 / (2 * rule.rate);
    const distance = Math.abs(centre - u);
    if (distance < bestDistance) {
      best = d;
      bestDistance = distance;
    }
  }
  return best;
}

// The map point (km from the map's south-west corner) that a pixel of the picture shows, or null
// outside the map area. Both axes use NX / NI km per pixel, as the program places them.
function pixelToKm(geom, nx, view, column, row) {
  if (column < 0 || column >= geom.NI || row < TITLE_ROWS || row >= geom.GJ) return null;
  const kmPerPixel = nx / geom.NI / view.zm;
  return { x: view.ox + column * kmPerPixel, y: view.oy + (geom.GJ - row) * kmPerPixel };
}

// One more zoom step centred as near the clicked pixel as the digits allow; the steps unchanged
// when the rate has no steps left or the click is outside the map.
function zoomIn(map, geom, rate, steps, column, row) {
  const rule = zoomRule(rate);
  if (!rule || steps.length >= rule.maxSteps) return steps;
  const view = zoomView(map.nx, map.ny, rate, steps);
  const point = pixelToKm(geom, map.nx, view, column, row);
  if (!point) return steps;
  const ux = ((point.x - view.ox) * view.zm) / map.nx;
  const uy = ((point.y - view.oy) * view.zm) / map.ny;
  return steps.concat([[bestDigit(ux, rule), bestDigit(uy, rule)]]);
}

// The query fields of the zoom: one digit per step, '0'-padded; null for the whole map.
function zoomFields(steps) {
  if (steps.length === 0) return null;
  const digits = (axis) => steps.map((step) => step[axis]).join('').padEnd(ZOOM_DIGIT_FIELD, '0');
  return { zoom_level: steps.length, zoom_x: digits(0), zoom_y: digits(1) };
}

const clamp = (v, lo, hi) => Math.min(hi, Math.max(lo, v));

// A section end point in whole km, held on the map.
function sectionPoint(map, geom, view, column, row) {
  const point = pixelToKm(geom, map.nx, view, column, row);
  if (!point) return null;
  return { x: clamp(Math.round(point.x), 0, map.nx), y: clamp(Math.round(point.y), 0, map.ny) };
}

// The program draws no line when x1 is 0, so a line that starts on the west edge starts 1 km in.
function sectionLine(a, b) {
  return { x1: Math.max(1, a.x), y1: a.y, x2: b.x, y2: b.y };
}

// The query string of the picture, keys in a fixed order. Values are plain letters and digits,
// which the program takes byte for byte.
function pictureQuery(state) {
  const fields = [
    ['obs', state.obs],
    ['map', state.map],
    ['tm', state.tm],
    ['size', state.size],
    ['legend', state.legend ? 1 : 0],
  ];
  if (state.terrain) fields.push(['gis', 'T']);
  if (state.aws > 0) fields.push(['aws', state.aws]);
  const zoom = zoomFields(state.steps);
  if (zoom) {
    fields.push(['zoom_level', zoom.zoom_level], ['zoom_rate', state.rate]);
    fields.push(['zoom_x', zoom.zoom_x], ['zoom_y', zoom.zoom_y]);
  }
  if (state.section) {
    for (const key of ['x1', 'y1', 'x2', 'y2']) fields.push([key, state.section[key]]);
  }
  return fields.map(([key, value]) => key + '=' + value).join('&');
}

// Times are the program's YYYYMMDDHHMI local-time texts; the arithmetic runs on a UTC calendar
// so that no daylight-saving rule of the browser can bend a 5-minute step.
function parseTime(tm) {
  const m = /^(\d{4})(\d{2})(\d{2})(\d{2})(\d{2})$/.exec(tm || '');
  if (!m) return null;
  const date = new Date(Date.UTC(+m[1], +m[2] - 1, +m[3], +m[4], +m[5]));
  return formatTime(date) === tm ? date : null;
}

function formatTime(date) {
  const two = (n) => String(n).padStart(2, '0');
  return String(date.getUTCFullYear()).padStart(4, '0') + two(date.getUTCMonth() + 1) +
    two(date.getUTCDate()) + two(date.getUTCHours()) + two(date.getUTCMinutes());
}

function addMinutes(tm, minutes) {
  return formatTime(new Date(parseTime(tm).getTime() + minutes * 60000));
}

// The clock's local time rounded down to a 5-minute step, as the program rounds its own.
function currentTime(clock) {
  const local = new Date(Date.UTC(clock.getFullYear(), clock.getMonth(), clock.getDate(),
    clock.getHours(), clock.getMinutes() - (clock.getMinutes() % STEP_MINUTES)));
  return formatTime(local);
}

function displayTime(tm) {
  return `${tm.slice(0, 4)}.${tm.slice(4, 6)}.${tm.slice(6, 8)} ${tm.slice(8, 10)}:${tm.slice(10, 12)}`;
}

// Without a list of times the slider covers the last 12 hours before `latest`.
function stepTimes(latest, count) {
  const times = [];
  for (let k = count - 1; k >= 0; k--) times.push(addMinutes(latest, -k * STEP_MINUTES));
  return times;
}

// The index of the latest time at or before tm (the program searches back), or 0.
function timeIndex(times, tm) {
  let found = 0;
  for (let k = 0; k < times.length; k++) if (times[k] <= tm) found = k;
  return found;
}

// The state as the hash of the page's address, and back. Anything in a hash that does not fit
// (an unknown product, a digit past the rule's range) is left at its default.
function stateToHash(state) {
  const params = new URLSearchParams();
  params.set('obs', state.obs);
  params.set('map', state.map);
  params.set('tm', state.tm);
  params.set('size', state.size);
  params.set('legend', state.legend ? 1 : 0);
  params.set('terrain', state.terrain ? 1 : 0);
  params.set('aws', state.aws);
  params.set('rate', state.rate);
  if (state.steps.length) {
    params.set('zx', state.steps.map((s) => s[0]).join(''));
    params.set('zy', state.steps.map((s) => s[1]).join(''));
  }
  if (state.section) {
    const s = state.section;
    params.set('section', [s.x1, s.y1, s.x2, s.y2].join(','));
  }
  return '#' + params.toString();
}

function stateFromHash(hash, defaults) {
  const params = new URLSearchParams(String(hash || '').replace(/^#/, ''));
  const state = { ...defaults, steps: defaults.steps.slice() };
  const get = (key) => params.get(key);
  const int = (key, lo, hi) => {
    const v = get(key);
    return v !== null && /^-?\d+$/.test(v) && +v >= lo && +v <= hi ? +v : null;
  };
  if (PRODUCTS.some(([code]) => code === get('obs'))) state.obs = get('obs');
  if (/^[A-Za-z0-9_]{1,7}$/.test(get('map') || '')) state.map = get('map');
  if (parseTime(get('tm'))) state.tm = get('tm');
  const size = int('size', 0, 8192);
  if (SIZES.includes(size)) state.size = size;
  if (int('legend', 0, 1) !== null) state.legend = int('legend', 0, 1) === 1;
  if (int('terrain', 0, 1) !== null) state.terrain = int('terrain', 0, 1) === 1;
  const aws = int('aws', 0, 11);
  if (aws !== null) state.aws = aws;
  const rate = int('rate', 2, 3);
  if (rate !== null) state.rate = rate;
  const steps = digitSteps(get('zx') || '', get('zy') || '', zoomRule(state.rate));
  if (steps) state.steps = steps;
  const section = (get('section') || '').split(',');
  if (section.length === 4 && section.every((v) => /^\d+$/.test(v))) {
    const [x1, y1, x2, y2] = section.map(Number);
    state.section = { x1, y1, x2, y2 };
  }
  return state;
}

function digitSteps(zx, zy, rule) {
  const valid = new RegExp(`^[1-${lastDigit(rule)}]{0,${rule.maxSteps}}$`);
  if (zx.length !== zy.length || !valid.test(zx) || !valid.test(zy)) return null;
  return Array.from(zx, (dx, k) => [+dx, +zy[k]]);
}

// ---------------------------------------------------------------------------------------------
// The page.

const DEFAULT_CGI = '/cgi-bin/rdr_sfc_pty_img';
const FALLBACK_HOURS = 12;
const ANIMATION_FRAMES = [12, 24, 36, 72];
const ANIMATION_SPEEDS = [['느림 / slow', 1000], ['보통 / normal', 500], ['빠름 / fast', 250]];

function startViewer() {
  const $ = (id) => document.getElementById(id);
  const el = {
    obs: $('obs'), map: $('map'), prev: $('prev'), next: $('next'), latest: $('latest'),
    slider: $('time-slider'), timeText: $('time-text'), play: $('play'), speed: $('speed'),
    frames: $('frames'), size: $('size'), legend: $('legend'), terrain: $('terrain'),
    aws: $('aws'), rate: $('zoom-rate'), zoomOut: $('zoom-out'), zoomReset: $('zoom-reset'),
    zoomInfo: $('zoom-info'), modeZoom: $('mode-zoom'), modeSection: $('mode-section'),
    sectionClear: $('section-clear'), sectionInfo: $('section-info'), picture: $('picture'),
    overlay: $('overlay'), status: $('status'), request: $('request'), copy: $('copy'),
    open: $('open'), stationHint: $('station-hint'),
  };
  const page = { config: null, times: [], state: null, pendingPoint: null, animation: null };

  const fillSelect = (select, entries) => {
    select.replaceChildren(...entries.map(([value, label]) => new Option(label, value)));
  };
  fillSelect(el.obs, PRODUCTS.map(([code, name]) => [code, `${name} (${code})`]));
  fillSelect(el.aws, STATION_MODES.map(([mode, name]) => [mode, `${mode} ${name}`]));
  fillSelect(el.size, SIZES.map((s) => [s, `${s} px`]));
  fillSelect(el.frames, ANIMATION_FRAMES.map((n) => [n, `${n}장 / frames`]));
  fillSelect(el.speed, ANIMATION_SPEEDS.map(([name, ms]) => [ms, name]));
  el.speed.value = '500';

  const mapOf = () => page.config.maps[page.state.map];

  // The geometry of the picture as it should arrive; null when what arrived is not a map
  // (the error picture is square and tells no map position).
  const shownGeometry = () => {
    const map = mapOf();
    if (!map) return null;
    const geom = canvasGeometry(page.state.size, map.nx, map.ny, page.state.legend);
    const img = el.picture;
    return img.naturalWidth === geom.GI && img.naturalHeight === geom.GJ ? geom : null;
  };

  function render() {
    const s = page.state;
    const url = page.config.cgi + '?' + pictureQuery(s);
    if (el.picture.getAttribute('src') !== url) {
      el.status.textContent = '불러오는 중… / loading';
      el.picture.src = url;
    }
    el.request.textContent = new URL(url, location.href).href;
    el.open.href = url;
    history.replaceState(null, '', stateToHash(s));

    el.obs.value = s.obs;
    el.map.value = s.map;
    el.size.value = String(s.size);
    el.legend.checked = s.legend;
    el.terrain.checked = s.terrain;
    el.aws.value = String(s.aws);
    el.rate.value = String(s.rate);
    el.timeText.textContent = displayTime(s.tm);
    el.slider.value = String(timeIndex(page.times, s.tm));
    const zoom = zoomFields(s.steps);
    el.zoomInfo.textContent = zoom
      ? `단계 / level ${zoom.zoom_level}: x ${zoom.zoom_x}, y ${zoom.zoom_y}`
      : '전체 / whole map';
    el.zoomOut.disabled = !zoom;
    el.sectionInfo.textContent = s.section
      ? `(${s.section.x1}, ${s.section.y1}) – (${s.section.x2}, ${s.section.y2}) km`
      : page.pendingPoint ? '두 번째 점을 누르세요 / click the second point' : '';
    el.stationHint.hidden = !(s.aws > 0 && !zoom);
    drawOverlay();
  }

  function drawOverlay() {
    const svg = el.overlay;
    svg.replaceChildren();
    const img = el.picture;
    if (!img.naturalWidth) return;
    svg.setAttribute('viewBox', `0 0 ${img.naturalWidth} ${img.naturalHeight}`);
    if (!page.pendingPoint) return;
    const dot = document.createElementNS('http://www.w3.org/2000/svg', 'circle');
    dot.setAttribute('cx', page.pendingPoint.column);
    dot.setAttribute('cy', page.pendingPoint.row);
    dot.setAttribute('r', 4);
    dot.setAttribute('class', 'pending-point');
    svg.appendChild(dot);
  }

  const change = (update) => {
    update(page.state);
    render();
  };

  function stepTime(minutes) {
    const latest = page.times[page.times.length - 1];
    const tm = addMinutes(page.state.tm, minutes);
    change((s) => { s.tm = tm > latest ? latest : tm; });
  }

  function pictureClick(event) {
    const img = el.picture;
    const geom = shownGeometry();
    if (!geom) {
      el.status.textContent = '지도 그림이 아닙니다 / this picture has no map';
      return;
    }
    const box = img.getBoundingClientRect();
    const column = Math.floor(((event.clientX - box.left) * img.naturalWidth) / box.width);
    const row = Math.floor(((event.clientY - box.top) * img.naturalHeight) / box.height);
    const s = page.state;
    const map = mapOf();
    if (el.modeSection.checked) {
      const view = zoomView(map.nx, map.ny, s.rate, s.steps);
      const point = sectionPoint(map, geom, view, column, row);
      if (!point) return;
      if (!page.pendingPoint) {
        page.pendingPoint = { ...point, column, row };
        change((st) => { st.section = null; });
      } else {
        const first = page.pendingPoint;
        page.pendingPoint = null;
        change((st) => { st.section = sectionLine(first, point); });
      }
      return;
    }
    const steps = zoomIn(map, geom, s.rate, s.steps, column, row);
    if (steps === s.steps) {
      el.status.textContent = '더 확대할 수 없습니다 / no further zoom';
      return;
    }
    change((st) => { st.steps = steps; });
  }

  function toggleAnimation() {
    if (page.animation) {
      clearInterval(page.animation.timer);
      page.animation = null;
      el.play.textContent = '▶ 재생 / play';
      return;
    }
    const end = timeIndex(page.times, page.state.tm);
    const count = Number(el.frames.value);
    const frames = page.times.slice(Math.max(0, end - count + 1), end + 1);
    let k = 0;
    // A frame advances only once the previous picture has arrived, so slow answers never pile up.
    const timer = setInterval(() => {
      if (!el.picture.complete) return;
      k = (k + 1) % frames.length;
      change((s) => { s.tm = frames[k]; });
    }, Number(el.speed.value));
    page.animation = { timer };
    el.play.textContent = '❚❚ 정지 / pause';
    change((s) => { s.tm = frames[0]; });
  }

  function bind() {
    const onChange = (input, update) => input.addEventListener('change', () => change(update));
    onChange(el.obs, (s) => { s.obs = el.obs.value; });
    onChange(el.map, (s) => { s.map = el.map.value; s.steps = []; s.section = null; });
    onChange(el.size, (s) => { s.size = Number(el.size.value); });
    onChange(el.legend, (s) => { s.legend = el.legend.checked; });
    onChange(el.terrain, (s) => { s.terrain = el.terrain.checked; });
    onChange(el.aws, (s) => { s.aws = Number(el.aws.value); });
    // Digits of one rate mean another place under the other, so a new rate starts from the whole map.
    onChange(el.rate, (s) => { s.rate = Number(el.rate.value); s.steps = []; });
    el.slider.addEventListener('input', () => change((s) => { s.tm = page.times[Number(el.slider.value)]; }));
    el.prev.addEventListener('click', () => stepTime(-STEP_MINUTES));
    el.next.addEventListener('click', () => stepTime(STEP_MINUTES));
    el.latest.addEventListener('click', () => change((s) => { s.tm = page.times[page.times.length - 1]; }));
    el.play.addEventListener('click', toggleAnimation);
    el.zoomOut.addEventListener('click', () => change((s) => { s.steps = s.steps.slice(0, -1); }));
    el.zoomReset.addEventListener('click', () => change((s) => { s.steps = []; }));
    el.sectionClear.addEventListener('click', () => {
      page.pendingPoint = null;
      change((s) => { s.section = null; });
    });
    el.modeZoom.addEventListener('change', () => { page.pendingPoint = null; render(); });
    el.picture.addEventListener('click', pictureClick);
    el.picture.addEventListener('load', () => {
      el.picture.dataset.shown = el.picture.getAttribute('src');
      el.status.textContent = `${displayTime(page.state.tm)} · ${el.picture.naturalWidth}×${el.picture.naturalHeight}`;
      drawOverlay();
    });
    el.picture.addEventListener('error', () => { el.status.textContent = '그림을 받지 못했습니다 / no picture'; });
    el.copy.addEventListener('click', async () => {
      try {
        await navigator.clipboard.writeText(el.request.textContent);
      } catch (err) {
        // Without a secure origin there is no clipboard access: select it for Ctrl-C instead.
        window.getSelection().selectAllChildren(el.request);
        document.execCommand('copy');
      }
    });
    window.addEventListener('hashchange', () => {
      page.state = stateFromHash(location.hash, page.state);
      render();
    });
  }

  async function loadConfig() {
    try {
      const answer = await fetch('viewer-config.json', { cache: 'no-store' });
      if (answer.ok) return await answer.json();
    } catch (err) {
      // fall through to the defaults
    }
    return {};
  }

  // The listed times, or without a list the last hours before the clock's time.
  const timesOf = (config) => {
    const listed = (config.times || []).filter((tm) => parseTime(tm)).sort();
    return listed.length ? listed
      : stepTimes(currentTime(new Date()), (FALLBACK_HOURS * 60) / STEP_MINUTES);
  };

  // New grid files arrive every 5 minutes: a page that shows the latest time follows them.
  async function refreshTimes() {
    const times = timesOf(await loadConfig());
    const following = page.state.tm === page.times[page.times.length - 1] && !page.animation;
    page.times = times;
    el.slider.max = String(times.length - 1);
    if (following) page.state.tm = times[times.length - 1];
    render();
  }

  loadConfig().then((config) => {
    page.config = { cgi: config.cgi || DEFAULT_CGI, maps: config.maps || {} };
    page.times = timesOf(config);
    const codes = Object.keys(page.config.maps);
    fillSelect(el.map, (codes.length ? codes : ['HR']).map((code) => [code, code]));
    el.slider.max = String(page.times.length - 1);
    const defaults = {
      obs: 'RNSN', map: codes.includes('HR') || !codes.length ? 'HR' : codes[0],
      tm: page.times[page.times.length - 1], size: 600, legend: true, terrain: false, aws: 0,
      rate: 2, steps: [], section: null,
    };
    page.state = stateFromHash(location.hash, defaults);
    if (!codes.length) el.status.textContent = 'viewer-config.json 없음: 클릭 확대 불가 / no map extents: clicks disabled';
    bind();
    render();
    setInterval(refreshTimes, (Number(config.refresh) > 0 ? Number(config.refresh) : 60) * 1000);
  });
}

if (typeof module !== 'undefined' && module.exports) {
  module.exports = {
    canvasGeometry, zoomView, pixelToKm, zoomIn, zoomFields,
    sectionPoint, sectionLine, pictureQuery, parseTime, addMinutes, currentTime, stepTimes,
    timeIndex, stateToHash, stateFromHash,
  };
} else if (typeof window !== 'undefined') {
  window.addEventListener('DOMContentLoaded', startViewer);
}
