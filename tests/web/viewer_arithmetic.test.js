// The viewer's arithmetic against the program's rules, with the configuration the program's
// rdr_viewer_config prints (RDR_VIEWER_CONFIG names it): canvas size in single precision, the fit
// to a window, the zoom transform and the digits of a click, pixel to km, the projection's
// inverse against the program's own conversion, colours to classes, the time search, and the hash.
'use strict';

const test = require('node:test');
const assert = require('node:assert/strict');
const path = require('node:path');
const { execFileSync } = require('node:child_process');

const v = require(path.join(__dirname, '..', '..', 'web', 'viewer.js'));
const program = process.env.RDR_VIEWER_CONFIG;
const cfg = JSON.parse(execFileSync(program, [], { encoding: 'utf8' }));
const HR = { nx: 100, ny: 120, xo: 50, yo: 60 };
const [halves, thirds] = [cfg.zoomRules[2], cfg.zoomRules[3]];
const geom600 = v.canvasGeometry(cfg, HR, 600, true);

test('canvas size follows the program, single precision included; fit is the largest that fits', () => {
  assert.deepEqual(geom600, { NI: 600, NJ: 720, GI: 635, GJ: 740 });
  // 78 / 50 x 600 is 936 in double precision but 935.99994 in single: the program draws 935 rows.
  assert.equal(v.canvasGeometry(cfg, { nx: 50, ny: 78 }, 600, true).NJ, 935);
  for (const [map, legend, width, height] of [[HR, true, 1060, 950], [HR, false, 355, 800], [{ nx: 50, ny: 78 }, true, 900, 956]]) {
    const size = v.fitSize(cfg, map, legend, width, height);
    const fits = (s) => { const g = v.canvasGeometry(cfg, map, s, legend); return g.GI <= width && g.GJ <= height; };
    assert.ok(fits(size) && !fits(size + 1), `${width} x ${height}: ${size}`);
  }
});

test('a click zooms to the digits whose view is centred nearest, inside the map', () => {
  const digits = (rule, column, row) => v.zoomIn(rule, HR, geom600, [], column, row)[0];
  for (const [rule, column, row, expected] of [[halves, 450, 200, [5, 5]], [halves, 300, 380, [3, 3]],
    [halves, 598, 738, [5, 1]], [halves, 180, 502, [1, 2]], [thirds, 450, 200, [6, 6]], [thirds, 599, 21, [7, 7]]]) {
    assert.deepEqual(digits(rule, column, row), expected, `${rule.rate}: ${column}, ${row}`);
  }
  // Wherever the click, the point stays in the new view; a point the program places on a pixel
  // (truncating km x pixels per km) reads back less than a pixel south-west of it.
  for (const [rule, steps] of [[halves, [[2, 4]]], [thirds, [[6, 2]]]]) {
    const view = v.zoomView(rule, HR.nx, HR.ny, steps);
    const [s, x, y] = [(geom600.NI / HR.nx) * view.zm, view.ox + 0.371 * HR.nx / view.zm, view.oy + 0.553 * HR.ny / view.zm];
    const back = v.pixelToKm(geom600, HR.nx, view, Math.trunc((x - view.ox) * s), geom600.GJ - Math.trunc((y - view.oy) * s));
    assert.ok(x - back.x >= 0 && x - back.x < 1 / s && y - back.y >= 0 && y - back.y < 1 / s, `${x}, ${y}: ${JSON.stringify(back)}`);
    for (let column = 3; column < 600; column += 37) {
      for (let row = 23; row < 740; row += 41) {
        const point = v.pixelToKm(geom600, HR.nx, view, column, row);
        const next = v.zoomView(rule, HR.nx, HR.ny, v.zoomIn(rule, HR, geom600, steps, column, row));
        const [ux, uy] = [((point.x - next.ox) * next.zm) / HR.nx, ((point.y - next.oy) * next.zm) / HR.ny];
        assert.ok(ux >= 0 && ux <= 1 && uy >= 0 && uy <= 1.01, `${rule.rate}: click ${column}, ${row}`);
      }
    }
  }
  let steps = [];
  for (let k = 0; k < 9; k++) steps = v.zoomIn(halves, HR, geom600, steps, 300, 380);
  assert.deepEqual(v.zoomFields(steps), { zoom_level: 7, zoom_x: '3333333', zoom_y: '3333333' });
  for (const [column, row] of [[300, 10], [620, 300]]) assert.equal(v.zoomIn(halves, HR, geom600, steps.slice(0, 1), column, row).length, 1);
});

test('the projection\'s inverse agrees with the program\'s forward conversion within 0.01 km', () => {
  const points = [[126, 38], [127, 37.5], [129, 35], [124, 33], [131, 43], [121.5, 31], [132.5, 44.5]];
  const km = execFileSync(program, ['--project', '560', '840'], { input: points.map((p) => p.join(' ')).join('\n') })
    .toString().trim().split('\n').map((line) => line.split(' ').map(Number));
  points.forEach(([lon, lat], k) => {
    const back = v.lonLat(cfg.projection, { xo: 560, yo: 840 }, ...km[k]);
    const dx = (back.lon - lon) * 111.32 * Math.cos((lat * Math.PI) / 180);
    assert.ok(Math.hypot(dx, (back.lat - lat) * 110.57) < 0.01, `${lon}, ${lat} -> ${km[k]} -> ${back.lon}, ${back.lat}`);
  });
});

test('colours read back as the product\'s classes, value ranges and named slots', () => {
  const rnsn = cfg.products.find((p) => p.code === 'RNSN');
  const rain = { code: 'HSR', unit: 'mm/h', markingClass: 1, colors: [[1, 1, 1], [2, 2, 2], [3, 3, 3]], bounds: [0.1, 1, 5] };
  const tw = { code: 'TW', unit: 'C', colors: [[1, 1, 1], [2, 2, 2]], boundsByMonth: [[-14, -11], [-9, -6]] };
  for (const [product, month, rgb, expected] of [[rnsn, 1, rnsn.classes[3].rgb, '눈 / snow'], [rain, 7, [1, 1, 1], '≤ 0.1 mm/h'],
    [rain, 7, [2, 2, 2], '0.1 – 1 mm/h (또는 약한 강수 / or light rain ≤ 0.1)'], [rain, 7, [3, 3, 3], '> 1 mm/h'],
    [tw, 2, [2, 2, 2], '> -9 °C'], [rnsn, 1, cfg.slots.background, '자료 없음 / no data'], [rnsn, 1, [7, 8, 9], null],
    [rain, 1, cfg.slots.terrain[1].rgb, '지형 / terrain 100–500 m · ≤ 0.1 mm/h']]) {
    assert.equal(v.describeColour(cfg, product, month, rgb), expected);
  }
});

test('the time shown is the program\'s search over the listed files; loops take listed times', () => {
  const times = ['202402282340', '202402282345', '202402282355', '202402290000', '202402290100'];
  const present = new Set(times);
  for (const [asked, shown] of [['202402290000', '202402290000'], ['202402282359', '202402282355'],
    ['202402282350', '202402282345'], ['202402290049', '202402290000'], ['202402290050', null], ['2024022900', null]]) {
    assert.equal(v.shownTime(cfg.search, present, asked), shown, asked);
  }
  const line = v.timeline(times, 5);
  assert.deepEqual([line.length, line.filter((s) => s.present).map((s) => s.tm)], [17, times]);
  assert.deepEqual(['hour', '2', 'all'].map((range) => v.loopFrames(times, range)), [times.slice(3), times.slice(3), times]);
  assert.equal(v.addMinutes('202312312355', 5), '202401010000');
  for (const bad of ['202413010000', '202402300000', '20240101000', 'abcdefghijkl', null]) assert.equal(v.parseTime(bad), null);
});

test('the query and the hash carry the view; the hash drops what does not fit', () => {
  const defaults = { obs: 'RNSN', map: 'HR', tm: '202401151230', size: 'fit', legend: true, terrain: false, aws: 0,
    rate: 2, steps: [], section: null };
  const view = { ...defaults, obs: 'HSR', map: 'EW', tm: '202401151205', size: 800, legend: false, terrain: true,
    aws: 8, rate: 3, steps: [[7, 1], [4, 6]], section: { x1: 1, y1: 2, x2: 30, y2: 40 } };
  assert.equal(v.pictureQuery(view), 'obs=HSR&map=EW&tm=202401151205&size=800&legend=0&gis=T&aws=8' +
    '&zoom_level=2&zoom_rate=3&zoom_x=7400000&zoom_y=1600000&x1=1&y1=2&x2=30&y2=40');
  assert.deepEqual(v.stateFromHash(cfg, v.stateToHash(view), defaults), view);
  const hostile = '#obs=XYZ&map=a%26b&tm=202413011200&size=650&legend=2&aws=12&rate=4&zx=59&zy=51&section=1,2,3';
  assert.deepEqual(v.stateFromHash(cfg, hostile, defaults), defaults);
  // Digits past the rule's range, more steps than it has, or x and y of different lengths.
  for (const digits of ['#rate=2&zx=8&zy=1', '#rate=3&zx=111&zy=111', '#rate=2&zx=12&zy=345']) {
    assert.deepEqual(v.stateFromHash(cfg, digits, defaults).steps, [], digits);
  }
});
