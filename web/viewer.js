// The viewer page: builds the map program's requests from the page's state, keeps that state in
// the address's hash (one history entry per change of view), turns clicks and taps on the picture
// into zoom digits, section points or probed points, reads out the map position and colour class
// under the pointer, shows what the probe program answers for a point and along the section line,
// and plays preloaded loops. Every table it needs (products, colours, zoom rules, canvas
// constants, the time search, projection, maps, times) comes from viewer-config.json, which
// rdr_viewer_config prints from the program's own rooms. The arithmetic on top is pure (node runs
// it in the tests); the page part at the bottom starts only in a browser.
'use strict';

// ---------------------------------------------------------------------------------------------
// Canvas and zoom, as the program places the map: cfg is viewer-config.json.

// The program's canvas: the map's height follows its aspect ratio in single precision.
function canvasGeometry(cfg, map, size, legend) {
  const NI = size;
  const NJ = Math.trunc(Math.fround(Math.fround(map.ny / map.nx) * NI));
  return { NI, NJ, GI: NI + (legend ? cfg.legendWidth : 0), GJ: NJ + cfg.titleHeight };
}

// The largest map width whose whole picture fits width x height pixels (at least 100).
function fitSize(cfg, map, legend, width, height) {
  let size = Math.min(width - (legend ? cfg.legendWidth : 0), Number(cfg.canvasMax));
  size = Math.min(size, Math.floor(((height - cfg.titleHeight) * map.nx) / map.ny) + 1);
  while (size > 100 && canvasGeometry(cfg, map, size, legend).GJ > height) size--;
  return Math.max(100, size);
}

// The view after the zoom steps ([x digit, y digit] pairs): south-west corner in km, magnification.
function zoomView(rule, nx, ny, steps) {
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
    const distance = Math.abs((d - 1) / rule.divisor + 1 / (2 * rule.rate) - u);
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
  if (column < 0 || column >= geom.NI || row < geom.GJ - geom.NJ || row >= geom.GJ) return null;
  const kmPerPixel = nx / geom.NI / view.zm;
  return { x: view.ox + column * kmPerPixel, y: view.oy + (geom.GJ - row) * kmPerPixel };
}

// One more zoom step centred as near the clicked pixel as the digits allow; the steps unchanged
// when the rule has no steps left or the click is outside the map.
function zoomIn(rule, map, geom, steps, column, row) {
  if (!rule || steps.length >= rule.maxSteps) return steps;
  const view = zoomView(rule, map.nx, map.ny, steps);
  const point = pixelToKm(geom, map.nx, view, column, row);
  if (!point) return steps;
  const ux = ((point.x - view.ox) * view.zm) / map.nx;
  const uy = ((point.y - view.oy) * view.zm) / map.ny;
  return steps.concat([[bestDigit(ux, rule), bestDigit(uy, rule)]]);
}

// The view in words: the whole map, or the step, the size and the south-west corner in km.
function describeView(rule, map, steps) {
  if (!steps.length) return `전체 지도 / whole map ${map.nx} × ${map.ny} km`;
  const view = zoomView(rule, map.nx, map.ny, steps);
  const km = (v) => String(Math.round(v * 10) / 10);
  return `${steps.length}/${rule.maxSteps}단계 ×${view.zm} · ${km(map.nx / view.zm)} × ${km(map.ny / view.zm)} km · ` +
    `남서 모서리 / south-west corner (${km(view.ox)}, ${km(view.oy)}) km`;
}

// The query fields of the zoom: one digit per step, '0'-padded; null for the whole map.
const ZOOM_DIGIT_FIELD = 7;
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

// The query string of the picture, keys in a fixed order; `size` is a number of pixels here.
// Values are plain letters and digits, which the program takes byte for byte.
function pictureQuery(state) {
  const fields = [['obs', state.obs], ['map', state.map], ['tm', state.tm], ['size', state.size],
    ['legend', state.legend ? 1 : 0]];
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

// ---------------------------------------------------------------------------------------------
// Times: the program's YYYYMMDDHHMI local-time texts. The arithmetic runs on a UTC calendar so
// that no daylight-saving rule of the browser can bend a 5-minute step.

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

const minutesBetween = (from, to) => (parseTime(to) - parseTime(from)) / 60000;

// The clock's local time as a time text (to the minute).
function clockTime(clock) {
  return formatTime(new Date(Date.UTC(clock.getFullYear(), clock.getMonth(), clock.getDate(),
    clock.getHours(), clock.getMinutes())));
}

const displayTime = (tm) => `${tm.slice(0, 4)}.${tm.slice(4, 6)}.${tm.slice(6, 8)} ${tm.slice(8, 10)}:${tm.slice(10, 12)}`;
const clockOf = (tm) => `${tm.slice(8, 10)}:${tm.slice(10, 12)}`;

// The time of the grid file the program draws for tm, as it searches: tm rounded down to the
// step, then back one step at a time over the candidates; null when none has a file (the program
// then answers with its error picture).
function shownTime(search, present, tm) {
  if (!parseTime(tm)) return null;
  let candidate = addMinutes(tm, -(Number(tm.slice(10)) % search.stepMinutes));
  for (let k = 0; k < search.candidates; k++, candidate = addMinutes(candidate, -search.stepMinutes)) {
    if (present.has(candidate)) return candidate;
  }
  return null;
}

// Every step from the earliest listed time (at most a week back) to the latest, each with
// whether a grid file is there: the slider's positions.
const TIMELINE_DAYS = 7;
function timeline(times, stepMinutes) {
  if (!times.length) return [];
  const present = new Set(times);
  const latest = times[times.length - 1];
  const span = Math.min(minutesBetween(times[0], latest), TIMELINE_DAYS * 1440);
  const steps = [];
  for (let m = -Math.floor(span / stepMinutes) * stepMinutes; m <= 0; m += stepMinutes) {
    const tm = addMinutes(latest, m);
    steps.push({ tm, present: present.has(tm) });
  }
  return steps;
}

// The frames of a loop: every listed time, those of the last hour, or the last N.
const LOOP_MAX_FRAMES = 288;
function loopFrames(times, range) {
  if (!times.length) return [];
  const latest = times[times.length - 1];
  if (range === 'hour') return times.filter((tm) => minutesBetween(tm, latest) <= 60);
  const count = range === 'all' ? LOOP_MAX_FRAMES : Number(range);
  return times.slice(-Math.min(count, LOOP_MAX_FRAMES));
}

// How old data of `minutes` ago are, in Korean and in English.
function ageText(minutes) {
  const [n, ko, en] = minutes < 120 ? [Math.max(0, Math.round(minutes)), '분', 'min']
    : minutes < 2880 ? [Math.round(minutes / 60), '시간', 'h'] : [Math.round(minutes / 1440), '일', 'days'];
  return `${n}${ko} 전 / ${n} ${en} old`;
}

// ---------------------------------------------------------------------------------------------
// Map position and colour under the pointer.

// The inverse of the program's Lambert conformal conic projection (its lamcproj_ellp): map km to
// degrees, with the program's ellipsoid and its five fixed iterations for the latitude.
const ELLIPSOID = { a: 6378.138, f: 1 / 298.257223563 };
function lonLat(proj, map, x, y) {
  const rad = Math.PI / 180;
  const ep = Math.sqrt(2 * ELLIPSOID.f - ELLIPSOID.f * ELLIPSOID.f);
  const isometric = (phi) => {
    const e = ep * Math.sin(phi);
    return Math.tan(Math.PI / 4 - phi / 2) / Math.pow((1 - e) / (1 + e), ep / 2);
  };
  const m = (phi) => Math.cos(phi) / Math.sqrt(1 - (ep * Math.sin(phi)) ** 2);
  const [s1, s2] = [proj.slat1 * rad, proj.slat2 * rad];
  const sn = (Math.log(m(s1)) - Math.log(m(s2))) / (Math.log(isometric(s1)) - Math.log(isometric(s2)));
  const sf = m(s1) / (Math.pow(isometric(s1), sn) * sn);
  const re = ELLIPSOID.a / proj.grid;
  const ro = re * sf * Math.pow(isometric(proj.olat * rad), sn);

  const xn = Math.fround(Math.fround(x) - Math.fround(map.xo));
  const yn = map.yo + (ro - y);
  const t = Math.pow(Math.hypot(xn, yn) / (sf * re), 1 / sn);
  let phi = Math.PI / 2 - 2 * Math.atan(t);
  for (let k = 0; k < 5; k++) {
    const e = ep * Math.sin(phi);
    phi = Math.PI / 2 - 2 * Math.atan(t * Math.pow((1 - e) / (1 + e), ep / 2));
  }
  return { lon: Math.atan2(xn, yn) / sn / rad + proj.olon, lat: phi / rad };
}

const unitOf = (product) => (product.unit === 'C' ? '°C' : product.unit);
const CLASS_GLOSS = { 없음: 'none', 비: 'rain', 눈비: 'rain and snow', 눈: 'snow', AWS: 'stations', RDR: 'radar',
  'AWS RDR': 'stations and radar' };
const sameRgb = (a, b) => a[0] === b[0] && a[1] === b[1] && a[2] === b[2];

// What a colour of the picture means for the product: its class, or its value range by the
// colour file's bounds (those of `month` where they slide), or a named slot; null for anything
// else (antialiased text).
function describeColour(cfg, product, month, rgb) {
  const unit = unitOf(product);
  const klass = (k) => {
    if (product.classes) {
      const name = product.classes[k].name;
      return CLASS_GLOSS[name] ? `${name} / ${CLASS_GLOSS[name]}` : name;
    }
    const bounds = product.boundsByMonth ? product.boundsByMonth[month - 1] : product.bounds;
    let text = k === 0 ? `≤ ${bounds[0]} ${unit}`
      : k === bounds.length - 1 ? `> ${bounds[k - 1]} ${unit}` : `${bounds[k - 1]} – ${bounds[k]} ${unit}`;
    if (k === product.markingClass) text += ` (또는 약한 강수 / or light rain ≤ ${bounds[0]})`;
    return text;
  };
  const colours = product.classes ? product.classes.map((c) => c.rgb) : product.colors;
  const k = colours.findIndex((c) => sameRgb(c, rgb));
  if (k >= 0) return klass(k);
  // Terrain shows only through the first class.
  const [slots, bands] = [cfg.slots, cfg.slots.terrain];
  const band = bands.findIndex((t) => sameRgb(t.rgb, rgb));
  if (band >= 0) {
    const heights = band === 0 ? `< ${bands[0].below}` : band === bands.length - 1 ? `≥ ${bands[band - 1].below}`
      : `${bands[band - 1].below}–${bands[band].below}`;
    return `지형 / terrain ${heights} m · ${klass(0)}`;
  }
  const named = [['background', '자료 없음 / no data'], ['black', '해안선·글자 / coastline or text'],
    ['grey', '경계 / boundary'], ['frame', '테두리 / frame'], ['section', '단면선 / section line'],
    ['disc', '지점 / station'], ['rain', '지점: 강수 / station: raining'],
    ['dry', '지점: 무강수·모름 / station: not raining or unknown']];
  const slot = named.find(([name]) => sameRgb(slots[name], rgb));
  return slot ? slot[1] : null;
}

// ---------------------------------------------------------------------------------------------
// The probe: what the grid file holds at a clicked point and along the section line.

// The pixels of the section line's two ends as the program draws them: its own zoom by eighths
// and doubling whatever the view's rate, rows from NJ / NY, all in single precision, truncated.
function sectionEnds(rule, map, geom, steps, section) {
  const f = Math.fround;
  let [ox, oy, zm] = [0, 0, 1];
  for (const [dx, dy] of steps.slice(0, rule.maxSteps)) {
    ox = f(ox + ((dx - 1) * (map.nx / rule.divisor)) / zm);
    oy = f(oy + ((dy - 1) * (map.ny / rule.divisor)) / zm);
    zm = f(zm * rule.rate);
  }
  const at = (x, y) => ({
    column: Math.trunc(f(f(geom.NI * f(f(x - ox) * zm)) / map.nx)),
    row: Math.trunc(f(geom.GJ - f(f(geom.NJ * f(f(y - oy) * zm)) / map.ny))),
  });
  return [at(section.x1, section.y1), at(section.x2, section.y2)];
}

// The probe's query for the view's time and map: a point { x, y } or a line { x1, y1, x2, y2, n },
// km to the metre (the probe takes plain decimal numbers).
function probeQuery(state, where) {
  const fields = [['tm', state.tm], ['map', state.map]];
  for (const [key, value] of Object.entries(where)) fields.push([key, String(Number(value.toFixed(3)))]);
  return fields.map(([key, value]) => key + '=' + value).join('&');
}

const NO_VALUE = '—';
const valueText = (v, unit) => (v === null || v === undefined ? NO_VALUE : `${v} ${unit}`);
const glossed = (name) => (CLASS_GLOSS[name] ? `${name} / ${CLASS_GLOSS[name]}` : name);

// The read-out of a point's answer as [key, label, text] rows: the products in the order of the
// configuration, each class with its name, each value with its unit, then the nearest station.
function probeRows(cfg, answer) {
  if (answer.error) return [['error', '오류 / error', answer.error]];
  const p = answer.point;
  const asked = answer.tm === answer.tm_asked ? '' : ` (${clockOf(answer.tm_asked)} 요청 / asked)`;
  const rows = [['tm', '자료 시각 / data time', displayTime(answer.tm) + asked],
    ['place', '위치 / place', `${p.lon.toFixed(3)}°E ${p.lat.toFixed(3)}°N · x ${p.x.toFixed(1)} y ${p.y.toFixed(1)} km` +
      (p.cell ? '' : ' · 자료 밖 / outside the data')]];
  for (const product of cfg.products) {
    const key = product.code.toLowerCase();
    if (product.classes && product.code in p.classes) {
      const c = p.classes[product.code];
      const text = !c ? NO_VALUE : c.name ? `${glossed(c.name)} (${c.class})` : `분류 / class ${c.class}`;
      rows.push([product.code, product.title, text]);
    } else if (key in p) {
      rows.push([product.code, product.title, valueText(p[key], unitOf(product))]);
    }
  }
  const s = answer.station;
  if (!s) return rows.concat([['station', '가까운 지점 / nearest station', '20 km 안에 없음 / none within 20 km']]);
  const rain = { 1: '강수 / raining', 0: '무강수 / not raining' }[s.rain] || '모름 / no data';
  const wind = s.wd === null || s.ws === null ? '자료 없음 / no data' : `${s.wd}° ${s.ws} m/s`;
  return rows.concat([['station', '가까운 지점 / nearest station', `${s.stn_id} ${s.name} · ${s.distance_km.toFixed(1)} km`],
    ['station-rain', '지점 강수 / station rain', rain],
    ['station-rn15x', '15분 강수×4 / 15-min rain ×4', valueText(s.rn15x_x4, 'mm/h')],
    ['station-wind', '바람 / wind', wind]]);
}

// About `count` round steps (1, 2 or 5 times a power of ten) covering lo..hi.
function axisTicks(lo, hi, count) {
  const raw = (hi - lo) / count || 1;
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = [1, 2, 5, 10].map((m) => m * power).find((s) => s >= raw);
  const first = Math.floor(lo / step) * step;
  const last = Math.max(Math.ceil(hi / step) * step, first + step);
  const ticks = [];
  for (let v = first; v <= last + step / 2; v += step) ticks.push(Number(v.toFixed(10)));
  return ticks;
}

// The profile's margins in pixels: rain axis left, wet-bulb axis right, the class strip and the
// km axis below the plot.
const PROFILE = { left: 40, right: 40, top: 24, bottom: 40, strip: 12 };
const PROFILE_LINES = [['hsr', '#1d4ed8', ''], ['rn15x', '#15803d', '6 3'], ['tw', '#c2410c', '']];

// The profile along a line's samples as SVG text, width x height pixels: radar and station rain
// (mm/h, left axis) and wet-bulb temperature (°C, right axis) against km from A, the RNSN class
// colours in a strip under it (unpainted where the picture paints nothing), A and B at its ends.
function profileSvg(cfg, line, width, height) {
  const [left, right, top, bottom] = [PROFILE.left, width - PROFILE.right, PROFILE.top, height - PROFILE.bottom];
  const samples = line.samples;
  const values = (key) => samples.map((s) => s[key]).filter((v) => v !== null);
  const rainTicks = axisTicks(0, Math.max(1, ...values('hsr'), ...values('rn15x')), 4);
  const tw = values('tw');
  const twTicks = tw.length ? axisTicks(Math.min(...tw), Math.max(...tw), 4) : [0, 1];
  const scale = (ticks) => (v) => bottom - ((v - ticks[0]) / (ticks[ticks.length - 1] - ticks[0])) * (bottom - top);
  const [rainY, twY] = [scale(rainTicks), scale(twTicks)];
  const x = (d) => left + (line.length_km > 0 ? d / line.length_km : 0) * (right - left);
  const px = (v) => v.toFixed(1);
  const out = [`<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${width} ${height}" width="${width}" height="${height}">`];
  for (const v of rainTicks) {
    out.push(`<line class="grid" x1="${left}" x2="${right}" y1="${px(rainY(v))}" y2="${px(rainY(v))}"/>`,
      `<text class="rain" x="${left - 4}" y="${px(rainY(v) + 4)}" text-anchor="end">${v}</text>`);
  }
  for (const v of twTicks) out.push(`<text class="tw" x="${right + 4}" y="${px(twY(v) + 4)}">${v}</text>`);
  out.push(`<text class="rain" x="2" y="${top - 8}">mm/h</text>`,
    `<text class="tw" x="${width - 2}" y="${top - 8}" text-anchor="end">°C</text>`);
  // The strip in runs of one colour.
  const classes = (cfg.products.find((p) => p.code === 'RNSN') || { classes: [] }).classes;
  const colourOf = (s) => {
    const c = s.classes.RNSN && classes.find((k) => k.code === s.classes.RNSN.class);
    return `rgb(${(c ? c.rgb : cfg.slots.background).join(',')})`;
  };
  const half = samples.length > 1 ? (right - left) / (samples.length - 1) / 2 : right - left;
  for (let k = 0; k < samples.length;) {
    let end = k;
    while (end + 1 < samples.length && colourOf(samples[end + 1]) === colourOf(samples[k])) end++;
    const [a, b] = [Math.max(left, x(samples[k].d) - half), Math.min(right, x(samples[end].d) + half)];
    const colour = colourOf(samples[k]);
    out.push(`<rect x="${px(a)}" y="${bottom + 4}" width="${px(b - a)}" height="${PROFILE.strip}" fill="${colour}"/>`);
    k = end + 1;
  }
  // Each curve breaks where the probe has no value.
  for (const [key, colour, dash] of PROFILE_LINES) {
    let d = '';
    let pen = 'M';
    for (const s of samples) {
      if (s[key] === null) pen = 'M';
      else [d, pen] = [d + `${pen}${px(x(s.d))} ${px((key === 'tw' ? twY : rainY)(s[key]))}`, 'L'];
    }
    out.push(`<path class="${key}" d="${d}" stroke="${colour}" stroke-dasharray="${dash}" fill="none"/>`);
  }
  out.push(`<rect class="frame" x="${left}" y="${top}" width="${right - left}" height="${bottom - top}" fill="none"/>`,
    `<rect class="strip" x="${left}" y="${bottom + 4}" width="${right - left}" height="${PROFILE.strip}" fill="none"/>`);
  const kmTicks = axisTicks(0, line.length_km, Math.max(2, Math.floor((right - left) / 60)));
  const labelY = bottom + PROFILE.strip + 18;
  for (const v of kmTicks.filter((t) => x(t) < right - 48)) {
    out.push(`<text x="${px(x(v))}" y="${labelY}" text-anchor="middle">${v}</text>`);
  }
  out.push(`<text class="length" x="${right}" y="${labelY}" text-anchor="end">${line.length_km.toFixed(1)} km</text>`);
  for (const [name, at] of [['A', left], ['B', right]]) {
    out.push(`<g class="end"><line x1="${at}" x2="${at}" y1="${top - 2}" y2="${bottom + 4 + PROFILE.strip}"/>` +
      `<circle cx="${at}" cy="${top - 12}" r="8"/><text x="${at}" y="${top - 8}" text-anchor="middle">${name}</text></g>`);
  }
  out.push('</svg>');
  return out.join('');
}

// ---------------------------------------------------------------------------------------------
// The state as the hash of the page's address, and back. Anything in a hash that does not fit
// (an unknown product, a digit past the rule's range) is left at its default.

const SIZES = [400, 500, 600, 700, 800, 1000];
// The station modes by what the sample data's elements hold (68 temperature, 69 humidity).
const STATION_MODE_NAMES = [
  '없음 / none', '지점명 / names', '지점번호 / numbers', '15분 강수×4 / 15-min rain ×4 (mm/h)',
  '기온 (요소 68) / temperature (°C)', '습도 (요소 69) / humidity (%)', '바람 + 지점명 / wind + names',
  '바람 + 지점번호 / wind + numbers', '바람 + 강수 / wind + rain', '바람 + 기온 / wind + temperature',
  '바람 + 습도 / wind + humidity', '바람 / wind only',
];

function stateToHash(state) {
  const params = new URLSearchParams();
  for (const key of ['obs', 'map', 'tm', 'size', 'aws', 'rate']) params.set(key, state[key]);
  params.set('legend', state.legend ? 1 : 0);
  params.set('terrain', state.terrain ? 1 : 0);
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

function stateFromHash(cfg, hash, defaults) {
  const params = new URLSearchParams(String(hash || '').replace(/^#/, ''));
  const state = { ...defaults, steps: defaults.steps.slice() };
  const get = (key) => params.get(key);
  const int = (key, lo, hi) => {
    const v = get(key);
    return v !== null && /^-?\d+$/.test(v) && +v >= lo && +v <= hi ? +v : null;
  };
  if (cfg.products.some((p) => p.code === get('obs'))) state.obs = get('obs');
  if (/^[A-Za-z0-9_]{1,7}$/.test(get('map') || '')) state.map = get('map');
  if (parseTime(get('tm'))) state.tm = get('tm');
  if (get('size') === 'fit' || SIZES.includes(int('size', 0, 8192))) state.size = get('size') === 'fit' ? 'fit' : +get('size');
  if (int('legend', 0, 1) !== null) state.legend = int('legend', 0, 1) === 1;
  if (int('terrain', 0, 1) !== null) state.terrain = int('terrain', 0, 1) === 1;
  const aws = int('aws', 0, STATION_MODE_NAMES.length - 1);
  if (aws !== null) state.aws = aws;
  if (cfg.zoomRules[get('rate')]) state.rate = +get('rate');
  const steps = digitSteps(get('zx') || '', get('zy') || '', cfg.zoomRules[state.rate]);
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

const LOOP_SPEEDS = [['느림 / slow', 1000], ['보통 / normal', 500], ['빠름 / fast', 250], ['매우 빠름 / fastest', 100]];
const LOOP_RANGES = [['hour', '최근 1시간 / last hour'], ['all', '전체 / all times'], ['12', '최근 12장 / last 12'],
  ['24', '최근 24장 / last 24'], ['72', '최근 72장 / last 72']];
const LOOP_HOLD_MS = 1500;

// What a click or tap on the map can do; the page's clickActions holds what each does, so a new
// mode is one entry here and one there.
const CLICK_MODES = {
  zoom: '확대 / zoom in',
  section: '단면선 / section',
  probe: '값 보기 / probe',
  look: '읽기만 / read only',
};

// One probe request at a time: while one is out only the latest next one waits, so a loop's
// frames cannot pile requests on the server, and only the answer to the latest is shown.
function probeChannel(show) {
  const channel = { asked: null, busy: false, next: null };
  async function send(url) {
    channel.busy = true;
    let answer;
    try {
      answer = await (await fetch(url, { cache: 'no-store' })).json();
    } catch (err) {
      answer = { error: '탐침이 답하지 않았습니다 / no answer from the probe' };
    }
    channel.busy = false;
    const next = channel.next;
    channel.next = null;
    if (next) send(next);
    else if (url === channel.asked) show(answer);
  }
  return (url) => {
    if (url === channel.asked) return;
    channel.asked = url;
    channel.next = null;
    if (url && channel.busy) channel.next = url;
    else if (url) send(url);
  };
}

function startViewer() {
  const $ = (id) => document.getElementById(id);
  const el = {};
  for (const id of ['obs', 'map', 'prev', 'next', 'latest', 'time-slider', 'time-marks', 'time-text', 'age', 'play',
    'speed', 'range', 'loop-progress', 'loop-text', 'size', 'legend', 'terrain', 'aws', 'station-hint', 'station-key',
    'zoom-rate', 'zoom-in', 'zoom-out', 'zoom-reset', 'zoom-info', 'click-modes', 'section-clear', 'section-info',
    'stage', 'picture', 'overlay', 'status', 'readout', 'request', 'copy', 'download', 'open', 'probe', 'probe-table',
    'probe-close', 'profile', 'profile-title', 'profile-key', 'profile-plot']) {
    el[id.replace(/-(\w)/g, (_, c) => c.toUpperCase())] = $(id);
  }
  const page = { cfg: null, times: [], present: new Set(), steps: [], state: null, pendingPoint: null,
    loop: null, pixels: null, sliding: false, mode: 'zoom', probePoint: null, profileN: null };
  // The probe lies beside the picture program.
  const probeUrl = (where) => new URL('rdr_sfc_pty_probe', new URL(page.cfg.cgi, location.href)).pathname + '?' +
    probeQuery(page.state, where);

  const fillSelect = (select, entries) => {
    select.replaceChildren(...entries.map(([value, label]) => new Option(label, value)));
  };
  const mapOf = () => page.cfg.maps[page.state.map];
  const productOf = () => page.cfg.products.find((p) => p.code === page.state.obs);
  const ruleOf = () => page.cfg.zoomRules[page.state.rate];
  const say = (text) => { el.status.textContent = text; };

  function pictureSize() {
    const s = page.state;
    const map = mapOf();
    if (s.size !== 'fit' || !map) return s.size === 'fit' ? 600 : s.size;
    const top = el.stage.getBoundingClientRect().top + window.scrollY;
    return fitSize(page.cfg, map, s.legend, el.stage.parentElement.clientWidth, window.innerHeight - top - 8);
  }

  // The picture as it should arrive: its address, geometry and the data time the program takes.
  function expected(state = page.state, size = pictureSize()) {
    const map = page.cfg.maps[state.map];
    return {
      url: page.cfg.cgi + '?' + pictureQuery({ ...state, size }),
      geom: map ? canvasGeometry(page.cfg, map, size, state.legend) : null,
      shown: shownTime(page.cfg.search, page.present, state.tm),
    };
  }

  function render(how = 'push') {
    const s = page.state;
    const want = expected();
    page.want = want;
    if (el.picture.getAttribute('src') !== want.url) {
      say(`불러오는 중 / loading ${displayTime(s.tm)} …`);
      el.picture.src = want.url;
    }
    el.request.textContent = new URL(want.url, location.href).href;
    el.open.href = want.url;
    el.download.href = want.url;
    el.download.download = `${s.obs}_${want.shown || s.tm}.png`;
    const hash = stateToHash(s);
    if (location.hash !== hash) history[how === 'push' ? 'pushState' : 'replaceState'](null, '', hash);

    for (const key of ['obs', 'map', 'size', 'aws']) el[key].value = String(s[key]);
    el.legend.checked = s.legend;
    el.terrain.checked = s.terrain;
    el.zoomRate.value = String(s.rate);
    el.timeText.textContent = displayTime(s.tm);
    const position = page.steps.findIndex((step) => step.tm >= s.tm);
    el.timeSlider.value = String(position < 0 ? page.steps.length - 1 : position);
    el.prev.disabled = !page.times.length || s.tm <= page.times[0];
    el.next.disabled = !page.times.length || s.tm >= page.times[page.times.length - 1];
    const map = mapOf();
    el.zoomInfo.textContent = map ? describeView(ruleOf(), map, s.steps) : '';
    el.zoomOut.disabled = !s.steps.length;
    el.zoomIn.disabled = !map || s.steps.length >= ruleOf().maxSteps;
    el.sectionInfo.textContent = s.section
      ? `(${s.section.x1}, ${s.section.y1}) – (${s.section.x2}, ${s.section.y2}) km`
      : page.pendingPoint ? '두 번째 점 (Esc 취소) / second point (Esc cancels)' : '';
    el.sectionClear.disabled = !s.section && !page.pendingPoint;
    el.stationHint.hidden = !(s.aws > 0 && !s.steps.length);
    el.stationKey.hidden = !(s.aws > 0);
    askProbes();
    drawOverlay();
  }

  // The point's read-out and the section's profile follow the view's time and map; a point of
  // another map means nothing here. The profile keeps its number of samples, about one a pixel
  // of its width when its line was drawn, until the window changes size.
  function askProbes() {
    const s = page.state;
    if (page.probePoint && page.probePoint.map !== s.map) page.probePoint = null;
    el.probe.hidden = !page.probePoint;
    askPoint(page.probePoint && probeUrl({ x: page.probePoint.x, y: page.probePoint.y }));
    el.profile.hidden = !s.section;
    const key = s.section && [s.map, s.section.x1, s.section.y1, s.section.x2, s.section.y2].join();
    if (s.section && (!page.profileN || page.profileN.key !== key)) {
      page.profileN = { key, n: clamp(Math.round(el.profilePlot.clientWidth - PROFILE.left - PROFILE.right), 2, 2000) };
    }
    askLine(s.section && probeUrl({ ...s.section, n: page.profileN.n }));
  }

  const askPoint = probeChannel((answer) => {
    el.probeTable.replaceChildren();
    for (const [key, label, value] of probeRows(page.cfg, answer)) {
      const row = el.probeTable.insertRow();
      row.dataset.key = key;
      row.insertCell().textContent = label;
      row.insertCell().textContent = value;
    }
  });

  const askLine = probeChannel((answer) => {
    const s = answer.line;
    el.profileTitle.textContent = s
      ? `단면 / profile A (${s.x1}, ${s.y1}) → B (${s.x2}, ${s.y2}) km · ${displayTime(answer.tm)} 자료 / data`
      : `단면 / profile: 오류 / error: ${answer.error}`;
    // Lower on a phone, where the width is small.
    const width = el.profilePlot.clientWidth;
    el.profilePlot.innerHTML = s ? profileSvg(page.cfg, s, width, width < 600 ? 220 : 260) : '';
  });

  // What the status line says once a picture is on the page: the data time it shows, or why it
  // is the program's error picture. The error picture is square, so a picture whose size is not
  // the map's is one; the list of times tells which of the two reasons it has.
  function pictureStatus() {
    const want = page.want;
    const tm = page.state.tm;
    const img = el.picture;
    const isMap = want.geom && img.naturalWidth === want.geom.GI && img.naturalHeight === want.geom.GJ;
    if (!isMap) {
      return want.shown
        ? `오류 그림: 이 요청을 그리지 못했습니다 / error picture: the program could not draw this request`
        : `오류 그림: ${displayTime(tm)} 전 ${page.cfg.search.stepMinutes * (page.cfg.search.candidates - 1)}분 안에 자료 없음` +
          ` / error picture: no data within ${page.cfg.search.stepMinutes * (page.cfg.search.candidates - 1)} minutes up to ${clockOf(tm)}`;
    }
    const title = productOf().title;
    if (want.shown === tm) return `${displayTime(tm)} · ${title}`;
    return `${clockOf(tm)} 자료 없음: ${clockOf(want.shown)} 자료 표시 / data of ${clockOf(want.shown)} shown for ${clockOf(tm)} · ${title}`;
  }

  function drawOverlay() {
    const svg = el.overlay;
    svg.replaceChildren();
    const img = el.picture;
    if (!img.naturalWidth) return;
    svg.setAttribute('viewBox', `0 0 ${img.naturalWidth} ${img.naturalHeight}`);
    const add = (parent, name, attributes, text) => {
      const node = document.createElementNS('http://www.w3.org/2000/svg', name);
      for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
      if (text) node.textContent = text;
      return parent.appendChild(node);
    };
    const pending = page.pendingPoint;
    if (pending) add(svg, 'circle', { cx: pending.column, cy: pending.row, r: 4, class: 'pending-point' });
    // Marks of the section and the probed point only over the picture they belong to.
    const geom = shownGeometry();
    if (!geom || img.dataset.shown !== img.getAttribute('src')) return;
    const s = page.state;
    const map = mapOf();
    if (page.probePoint) {
      const view = zoomView(ruleOf(), map.nx, map.ny, s.steps);
      const perKm = (geom.NI / map.nx) * view.zm;
      add(svg, 'circle', { cx: (page.probePoint.x - view.ox) * perKm, cy: geom.GJ - (page.probePoint.y - view.oy) * perKm,
        r: 6, class: 'probe-point' });
    }
    if (!s.section) return;
    // A and B stand off the line's ends, outwards, so that its dots stay visible.
    const [a, b] = sectionEnds(page.cfg.sectionRule, map, geom, s.steps, s.section);
    const length = Math.hypot(b.column - a.column, b.row - a.row);
    const [ux, uy] = length ? [(b.column - a.column) / length, (b.row - a.row) / length] : [Math.SQRT1_2, Math.SQRT1_2];
    for (const [name, end, sign] of [['A', a, -1], ['B', b, 1]]) {
      const mark = add(svg, 'g', { class: 'end', 'data-column': end.column, 'data-row': end.row });
      const [cx, cy] = [end.column + sign * 14 * ux, end.row + sign * 14 * uy];
      add(mark, 'circle', { cx, cy, r: 8 });
      add(mark, 'text', { x: cx, y: cy + 4, 'text-anchor': 'middle' }, name);
    }
  }

  // A change of view: one history entry (or replacing the current one), and the loop stops.
  function change(update, how = 'push') {
    if (page.loop) stopLoop();
    update(page.state);
    render(how);
  }

  function stepTime(minutes) {
    if (!page.times.length) return;
    const [earliest, latest] = [page.times[0], page.times[page.times.length - 1]];
    const stepped = addMinutes(page.state.tm, minutes);
    const tm = stepped < earliest ? earliest : stepped > latest ? latest : stepped;
    if (tm !== page.state.tm) change((s) => { s.tm = tm; });
  }

  // The picture's pixel under a pointer, whatever the scale it is shown at.
  function pixelOf(event) {
    const img = el.picture;
    const box = img.getBoundingClientRect();
    return {
      column: Math.floor(((event.clientX - box.left) * img.naturalWidth) / box.width),
      row: Math.floor(((event.clientY - box.top) * img.naturalHeight) / box.height),
    };
  }

  const shownGeometry = () => {
    const geom = page.want && page.want.geom;
    const img = el.picture;
    return geom && img.naturalWidth === geom.GI && img.naturalHeight === geom.GJ ? geom : null;
  };

  // The picture's colours, read once per picture that has arrived.
  function colourAt(column, row) {
    const img = el.picture;
    if (!page.pixels) {
      const canvas = document.createElement('canvas');
      canvas.width = img.naturalWidth;
      canvas.height = img.naturalHeight;
      const context = canvas.getContext('2d', { willReadFrequently: true });
      context.drawImage(img, 0, 0);
      page.pixels = { width: canvas.width, data: context.getImageData(0, 0, canvas.width, canvas.height).data };
    }
    const k = (row * page.pixels.width + column) * 4;
    return [0, 1, 2].map((c) => page.pixels.data[k + c]);
  }

  // The read-out of a pixel: where it is on the earth and what its colour stands for.
  function readOut(column, row) {
    const geom = shownGeometry();
    if (!geom || !el.picture.complete || column < 0 || row < geom.GJ - geom.NJ || column >= geom.GI || row >= geom.GJ) {
      el.readout.textContent = '';
      return;
    }
    const s = page.state;
    const map = mapOf();
    const parts = [];
    const point = pixelToKm(geom, map.nx, zoomView(ruleOf(), map.nx, map.ny, s.steps), column, row);
    if (point) {
      const { lon, lat } = lonLat(page.cfg.projection, map, point.x, point.y);
      parts.push(`${lon.toFixed(3)}°E ${lat.toFixed(3)}°N`, `x ${point.x.toFixed(1)} y ${point.y.toFixed(1)} km`);
    }
    const month = Number((page.want.shown || s.tm).slice(4, 6));
    parts.push(describeColour(page.cfg, productOf(), month, colourAt(column, row)) || '—');
    el.readout.textContent = parts.join(' · ');
  }

  const clickActions = {
    zoom(geom, column, row) {
      const s = page.state;
      const steps = zoomIn(ruleOf(), mapOf(), geom, s.steps, column, row);
      if (steps === s.steps) say('더 확대할 수 없습니다 / no further zoom');
      else change((st) => { st.steps = steps; });
    },
    section(geom, column, row) {
      const map = mapOf();
      const point = sectionPoint(map, geom, zoomView(ruleOf(), map.nx, map.ny, page.state.steps), column, row);
      if (!point) return;
      const first = page.pendingPoint;
      page.pendingPoint = first ? null : { ...point, column, row };
      if (first) change((st) => { st.section = sectionLine(first, point); });
      else change((st) => { st.section = null; }, 'replace');
    },
    probe(geom, column, row) {
      const map = mapOf();
      const point = pixelToKm(geom, map.nx, zoomView(ruleOf(), map.nx, map.ny, page.state.steps), column, row);
      if (!point) return;
      page.probePoint = { x: point.x, y: point.y, map: page.state.map };
      render('replace');
    },
    look() {},
  };

  function pictureClick(event) {
    const geom = shownGeometry();
    if (!geom) {
      say('지도 그림이 아닙니다 / this picture has no map');
      return;
    }
    const { column, row } = pixelOf(event);
    readOut(column, row);
    clickActions[page.mode](geom, column, row);
  }

  function zoomAtCentre() {
    const geom = shownGeometry() || page.want.geom;
    if (!geom) return;
    const steps = zoomIn(ruleOf(), mapOf(), geom, page.state.steps, geom.NI / 2, geom.GJ - geom.NJ / 2);
    if (steps !== page.state.steps) change((s) => { s.steps = steps; });
  }

  function cancelSection() {
    if (page.pendingPoint) {
      page.pendingPoint = null;
      render('replace');
    } else if (page.state.section) {
      change((s) => { s.section = null; });
    }
  }

  // The loop: every frame requested at once and shown only when all have arrived; then the
  // frames in turn at the chosen speed, holding the last one a while.
  function startLoop() {
    const frames = loopFrames(page.times, el.range.value);
    if (frames.length < 2) {
      say('재생할 시각이 둘 이상 있어야 합니다 / a loop needs two times or more');
      return;
    }
    const size = pictureSize();
    const loop = { frames, k: 0, loaded: 0, timer: null };
    loop.images = frames.map((tm) => {
      const image = new Image();
      image.onload = image.onerror = () => frameArrived(loop);
      image.src = expected({ ...page.state, tm }, size).url;
      return image;
    });
    page.loop = loop;
    el.play.textContent = '■ 정지 / stop';
    el.loopProgress.max = frames.length;
    el.loopProgress.value = 0;
    el.loopProgress.hidden = false;
    el.loopText.textContent = `불러오는 중 / loading 0/${frames.length}`;
  }

  function frameArrived(loop) {
    if (page.loop !== loop) return;
    loop.loaded++;
    el.loopProgress.value = loop.loaded;
    el.loopText.textContent = `불러오는 중 / loading ${loop.loaded}/${loop.frames.length}`;
    if (loop.loaded === loop.frames.length) showFrame(loop, 0);
  }

  function showFrame(loop, k) {
    loop.k = k;
    page.state.tm = loop.frames[k];
    render('replace');
    el.loopText.textContent = `재생 / playing ${k + 1}/${loop.frames.length}`;
    const last = k === loop.frames.length - 1;
    const speed = Number(el.speed.value);
    loop.timer = setTimeout(() => showFrame(loop, last ? 0 : k + 1), last ? Math.max(LOOP_HOLD_MS, 3 * speed) : speed);
  }

  function stopLoop() {
    clearTimeout(page.loop.timer);
    page.loop = null;
    el.play.textContent = '▶ 재생 / play';
    el.loopProgress.hidden = true;
    el.loopText.textContent = '';
  }

  const toggleLoop = () => (page.loop ? stopLoop() : startLoop());

  async function copyLink() {
    let copied = false;
    try {
      await navigator.clipboard.writeText(location.href);
      copied = true;
    } catch (err) {
      // Without a secure origin there is no clipboard API: the old way through a selection.
      const field = Object.assign(document.createElement('textarea'), { value: location.href });
      document.body.appendChild(field);
      field.select();
      copied = document.execCommand('copy');
      field.remove();
    }
    el.copy.textContent = copied ? '✓ 복사됨 / copied' : '복사 실패 / not copied';
    say(copied ? `이 화면의 주소를 복사했습니다 / link to this view copied: ${location.href}`
      : '복사하지 못했습니다: 주소창의 주소를 쓰세요 / could not copy: use the address bar');
    setTimeout(() => { el.copy.textContent = '링크 복사 / copy link'; }, 2500);
  }

  const KEYS = {
    ArrowLeft: () => stepTime(-page.cfg.search.stepMinutes),
    ArrowRight: () => stepTime(page.cfg.search.stepMinutes),
    ' ': toggleLoop,
    '+': zoomAtCentre,
    '=': zoomAtCentre,
    '-': () => page.state.steps.length && change((s) => { s.steps = s.steps.slice(0, -1); }),
    0: () => page.state.steps.length && change((s) => { s.steps = []; }),
    Escape: cancelSection,
  };

  function onKey(event) {
    const target = event.target;
    const typing = /^(INPUT|SELECT|TEXTAREA)$/.test(target.tagName);
    const action = KEYS[event.key];
    if (!action || typing || event.ctrlKey || event.metaKey || event.altKey ||
        (target.tagName === 'BUTTON' && event.key === ' ')) return;
    event.preventDefault();
    action();
  }

  function bind() {
    const onChange = (input, update) => input.addEventListener('change', () => change(update));
    onChange(el.obs, (s) => { s.obs = el.obs.value; });
    onChange(el.map, (s) => { s.map = el.map.value; s.steps = []; s.section = null; });
    onChange(el.size, (s) => { s.size = el.size.value === 'fit' ? 'fit' : Number(el.size.value); });
    onChange(el.legend, (s) => { s.legend = el.legend.checked; });
    onChange(el.terrain, (s) => { s.terrain = el.terrain.checked; });
    onChange(el.aws, (s) => { s.aws = Number(el.aws.value); });
    // Digits of one rate mean another place under the other, so a new rate starts from the whole map.
    onChange(el.zoomRate, (s) => { s.rate = Number(el.zoomRate.value); s.steps = []; });
    // A drag of the slider is one history entry: the first move pushes, the others replace it.
    el.timeSlider.addEventListener('input', () => {
      const step = page.steps[Number(el.timeSlider.value)];
      change((s) => { s.tm = step.tm; }, page.sliding ? 'replace' : 'push');
      page.sliding = true;
    });
    el.timeSlider.addEventListener('change', () => { page.sliding = false; });
    el.prev.addEventListener('click', () => stepTime(-page.cfg.search.stepMinutes));
    el.next.addEventListener('click', () => stepTime(page.cfg.search.stepMinutes));
    el.latest.addEventListener('click', () => change((s) => { s.tm = page.times[page.times.length - 1]; }));
    el.play.addEventListener('click', toggleLoop);
    el.zoomIn.addEventListener('click', zoomAtCentre);
    el.zoomOut.addEventListener('click', () => change((s) => { s.steps = s.steps.slice(0, -1); }));
    el.zoomReset.addEventListener('click', () => change((s) => { s.steps = []; }));
    el.sectionClear.addEventListener('click', () => {
      page.pendingPoint = null;
      change((s) => { s.section = null; });
    });
    el.clickModes.addEventListener('change', (event) => {
      page.mode = event.target.value;
      page.pendingPoint = null;
      render('replace');
    });
    el.picture.addEventListener('click', pictureClick);
    el.picture.addEventListener('pointermove', (event) => {
      if (event.pointerType === 'mouse') {
        const { column, row } = pixelOf(event);
        readOut(column, row);
      }
    });
    el.picture.addEventListener('load', () => {
      el.picture.dataset.shown = el.picture.getAttribute('src');
      page.pixels = null;
      say(pictureStatus());
      drawOverlay();
    });
    el.picture.addEventListener('error', () => say('그림을 받지 못했습니다 / no picture from the server'));
    el.copy.addEventListener('click', copyLink);
    el.probeClose.addEventListener('click', () => {
      page.probePoint = null;
      render('replace');
    });
    document.addEventListener('keydown', onKey);
    window.addEventListener('popstate', () => {
      if (page.loop) stopLoop();
      page.pendingPoint = null;
      page.state = stateFromHash(page.cfg, location.hash, page.defaults);
      render('replace');
    });
    let resizeTimer = null;
    window.addEventListener('resize', () => {
      clearTimeout(resizeTimer);
      // A profile of another width asks for another number of samples.
      resizeTimer = setTimeout(() => {
        page.profileN = null;
        render('replace');
      }, 150);
    });
  }

  // The profile's key: its three curves, then the strip's classes and the unpainted colour.
  function fillProfileKey(cfg) {
    const item = (text, className, style) => {
      const span = document.createElement('span');
      span.append(Object.assign(document.createElement('i'), { className }), text);
      span.firstChild.style.cssText = style;
      return span;
    };
    const names = { hsr: '레이더 / radar (mm/h)', rn15x: 'AWS 강수 / station rain (mm/h)', tw: '습구온도 / wet-bulb (°C)' };
    const rnsn = cfg.products.find((p) => p.code === 'RNSN');
    const classes = (rnsn ? rnsn.classes : []).concat([{ name: '자료 없음 / no data', rgb: cfg.slots.background }]);
    el.profileKey.replaceChildren(
      ...PROFILE_LINES.map(([key, colour, dash]) =>
        item(names[key], 'curve', `border-bottom-color: ${colour}; border-bottom-style: ${dash ? 'dashed' : 'solid'}`)),
      item('띠 / strip RNSN:', '', 'display: none'),
      ...classes.map((c) => item(glossed(c.name), 'colour', `background: rgb(${c.rgb.join(',')})`)));
  }

  async function loadConfig() {
    try {
      const answer = await fetch('viewer-config.json', { cache: 'no-store' });
      if (answer.ok) return await answer.json();
    } catch (err) {
      // the caller says that there is none
    }
    return null;
  }

  // The times and the slider's marks: dark where a grid file is, light where the program would
  // search back (or find nothing).
  function takeTimes(times) {
    page.times = times.filter((tm) => parseTime(tm)).sort();
    page.present = new Set(page.times);
    page.steps = timeline(page.times, page.cfg.search.stepMinutes);
    el.timeSlider.max = String(Math.max(0, page.steps.length - 1));
    const n = page.steps.length;
    const stops = page.steps.map((step, k) =>
      `${step.present ? 'var(--data)' : 'var(--gap)'} ${(k / n) * 100}% ${((k + 1) / n) * 100}%`);
    el.timeMarks.style.background = n ? `linear-gradient(to right, ${stops.join(', ')})` : '';
    el.timeMarks.title = `${page.times.length}/${n} 시각에 자료 / times with data`;
    showAge();
  }

  function showAge() {
    const latest = page.times[page.times.length - 1];
    if (!latest) {
      el.age.textContent = '자료 없음 / no grid files listed';
      return;
    }
    const minutes = minutesBetween(latest, clockTime(new Date()));
    el.age.textContent = `최신 자료 / latest data ${displayTime(latest)}: ${ageText(minutes)}`;
    el.age.classList.toggle('stale', minutes > 3 * page.cfg.search.stepMinutes);
  }

  // New grid files arrive every few minutes: a page that shows the latest time follows them.
  async function refreshTimes() {
    const config = await loadConfig();
    if (!config || page.loop) return;
    const following = page.state.tm === page.times[page.times.length - 1];
    takeTimes(config.times || []);
    if (following && page.times.length) page.state.tm = page.times[page.times.length - 1];
    render('replace');
  }

  function build(cfg) {
    page.cfg = cfg;
    const codes = Object.keys(cfg.maps);
    fillSelect(el.obs, cfg.products.map((p) => [p.code, `${p.title} (${p.code})`]));
    fillSelect(el.map, codes.map((code) => [code, `${code} (${cfg.maps[code].nx} × ${cfg.maps[code].ny} km)`]));
    fillSelect(el.aws, STATION_MODE_NAMES.map((name, mode) => [mode, `${mode} ${name}`]));
    fillSelect(el.size, [['fit', '창에 맞춤 / fit window'], ...SIZES.map((s) => [s, `${s} px`])]);
    fillSelect(el.speed, LOOP_SPEEDS.map(([name, ms]) => [ms, name]));
    fillSelect(el.range, LOOP_RANGES);
    fillSelect(el.zoomRate, Object.values(cfg.zoomRules).map((r) => [r.rate, `×${r.rate} (${r.maxSteps}단계 / steps)`]));
    el.speed.value = '250';
    el.clickModes.replaceChildren(...Object.entries(CLICK_MODES).map(([mode, label]) => {
      const item = document.createElement('label');
      const radio = Object.assign(document.createElement('input'), { type: 'radio', name: 'mode', value: mode,
        id: `mode-${mode}`, checked: mode === page.mode });
      item.append(radio, ` ${label}`);
      return item;
    }));
    for (const [name, slot] of [['--rain', 'rain'], ['--dry', 'dry'], ['--disc', 'disc'], ['--section', 'section']]) {
      document.documentElement.style.setProperty(name, `rgb(${cfg.slots[slot].join(',')})`);
    }
    fillProfileKey(cfg);
    takeTimes(cfg.times || []);
    page.defaults = {
      obs: cfg.products.some((p) => p.code === 'RNSN') ? 'RNSN' : cfg.products[0].code,
      map: codes.includes('HR') || !codes.length ? 'HR' : codes[0],
      tm: page.times[page.times.length - 1] || clockTime(new Date()),
      size: 'fit', legend: true, terrain: false, aws: 0, rate: 2, steps: [], section: null,
    };
    page.state = stateFromHash(page.cfg, location.hash, page.defaults);
    bind();
    render('replace');
    if (!codes.length) say('지도 목록 없음: 그림을 놓을 수 없습니다 / no maps in the catalogue');
    setInterval(refreshTimes, (Number(cfg.refresh) > 0 ? Number(cfg.refresh) : 60) * 1000);
    setInterval(showAge, 60000);
  }

  (window.viewerConfig || loadConfig()).then((cfg) => {
    if (cfg && cfg.products) build(cfg);
    else say('viewer-config.json을 읽지 못했습니다 / the page has no configuration (tools/serve writes it)');
  });
}

if (typeof module !== 'undefined' && module.exports) {
  module.exports = {
    canvasGeometry, fitSize, zoomView, pixelToKm, zoomIn, describeView, zoomFields, sectionPoint, sectionLine,
    sectionEnds, probeQuery, probeRows, profileSvg, pictureQuery, parseTime, addMinutes, clockTime, shownTime, timeline,
    loopFrames, lonLat, describeColour, stateToHash, stateFromHash,
  };
} else if (typeof window !== 'undefined') {
  window.addEventListener('DOMContentLoaded', startViewer);
}
