// The viewer's arithmetic against the program's rules: canvas size in single precision, the zoom
// transform, the choice of zoom digits for a click, pixel to km, the query, times and the hash.
'use strict';

const test = require('node:test');
const assert = require('node:assert/strict');
const path = require('node:path');

const v = require(path.join(__dirname, '..', '..', 'web', 'viewer.js'));

const HR = { nx: 100, ny: 120 };
const geom600 = v.canvasGeometry(600, HR.nx, HR.ny, true);

// The program's forward mapping of a map point (km) to a pixel under a view.
function forward(geom, map, view, x, y) {
  const s = geom.NI / map.nx;
  return { column: Math.trunc((x - view.ox) * view.zm * s), row: geom.GJ - Math.trunc((y - view.oy) * view.zm * s) };
}

test('canvas size follows the program, single precision included', () => {
  assert.deepEqual(geom600, { NI: 600, NJ: 720, GI: 635, GJ: 740 });
  assert.deepEqual(v.canvasGeometry(500, 1000, 1200, true), { NI: 500, NJ: 600, GI: 535, GJ: 620 });
  assert.deepEqual(v.canvasGeometry(400, 100, 120, false), { NI: 400, NJ: 480, GI: 400, GJ: 500 });
  // 78 / 50 x 600 is 936 in double precision but 935.99994 in single: the program draws 935 rows.
  assert.equal(v.canvasGeometry(600, 50, 78, true).NJ, 935);
});

test('zoom view: eighths and halves, ninths and thirds, nothing for other rates', () => {
  assert.deepEqual(v.zoomView(100, 120, 2, []), { ox: 0, oy: 0, zm: 1 });
  assert.deepEqual(v.zoomView(100, 120, 2, [[3, 1]]), { ox: 25, oy: 0, zm: 2 });
  assert.deepEqual(v.zoomView(100, 120, 2, [[5, 5]]), { ox: 50, oy: 60, zm: 2 });
  const two = v.zoomView(100, 120, 2, [[5, 5], [3, 2]]);
  assert.deepEqual(two, { ox: 50 + 2 * 12.5 / 2, oy: 60 + 15 / 2, zm: 4 });
  const third = v.zoomView(90, 180, 3, [[4, 7], [2, 1]]);
  assert.ok(Math.abs(third.ox - (30 + 10 / 3)) < 1e-9 && Math.abs(third.oy - 120) < 1e-9 && third.zm === 9);
  // Rate 3 has two steps at most: a third pair changes nothing.
  assert.deepEqual(v.zoomView(90, 180, 3, [[4, 7], [2, 1], [5, 5]]), third);
  assert.deepEqual(v.zoomView(100, 120, 4, [[5, 5]]), { ox: 0, oy: 0, zm: 1 });
});

test('pixel to km inverts the program placing a map point', () => {
  assert.deepEqual(v.pixelToKm(geom600, HR.nx, { ox: 0, oy: 0, zm: 1 }, 450, 200), { x: 75, y: 90 });
  // The view's corner itself falls on row GJ, one below the picture; row GJ - 12 is 1 km north.
  const corner = v.pixelToKm(geom600, HR.nx, { ox: 50, oy: 60, zm: 2 }, 6, 728);
  assert.ok(Math.abs(corner.x - 50.5) < 1e-9 && Math.abs(corner.y - 61) < 1e-9, JSON.stringify(corner));
  // The title band, the legend column and anything past the picture show no map.
  for (const [column, row] of [[10, 19], [600, 300], [-1, 300], [10, 740]]) {
    assert.equal(v.pixelToKm(geom600, HR.nx, { ox: 0, oy: 0, zm: 1 }, column, row), null, `${column},${row}`);
  }
  const view = v.zoomView(HR.nx, HR.ny, 2, [[2, 4], [5, 1]]);
  for (const [x, y] of [[40, 50], [41.7, 52.2], [55.3, 71.1]]) {
    const pixel = forward(geom600, HR, view, x, y);
    const back = v.pixelToKm(geom600, HR.nx, view, pixel.column, pixel.row);
    const kmPerPixel = HR.nx / 600 / view.zm;
    assert.ok(x - back.x >= 0 && x - back.x < kmPerPixel, `x ${x} -> ${back.x}`);
    assert.ok(y - back.y >= 0 && y - back.y < kmPerPixel, `y ${y} -> ${back.y}`);
  }
});

test('a zoom step centres the clicked point as near as the digits allow', () => {
  const digits = (rate, steps, column, row) => v.zoomIn(HR, geom600, rate, steps, column, row).at(-1);
  assert.deepEqual(digits(2, [], 450, 200), [5, 5]);   // three quarters across: the centre of digit 5
  assert.deepEqual(digits(2, [], 300, 380), [3, 3]);   // the middle
  assert.deepEqual(digits(2, [], 598, 738), [5, 1]);   // corners hold the view inside the map
  assert.deepEqual(digits(2, [], 0, 21), [1, 5]);
  assert.deepEqual(digits(2, [], 180, 502), [1, 2]);   // x 0.30 is nearer 0.25; y 0.33 nearer 0.375
  assert.deepEqual(digits(3, [], 450, 200), [6, 6]);   // 0.75 between 0.72 (6) and 0.83 (7)
  assert.deepEqual(digits(3, [], 300, 380), [4, 4]);
  assert.deepEqual(digits(3, [], 599, 21), [7, 7]);

  // Wherever the click, the point stays in the new view; away from the edges it lies within
  // half a digit's move of the new view's centre.
  for (const rate of [2, 3]) {
    const rule = { 2: { D: 8, max: 7 }, 3: { D: 9, max: 2 } }[rate];
    const steps = rate === 2 ? [[2, 4]] : [[6, 2]];
    const view = v.zoomView(HR.nx, HR.ny, rate, steps);
    for (let column = 3; column < 600; column += 37) {
      for (let row = 23; row < 740; row += 41) {
        const point = v.pixelToKm(geom600, HR.nx, view, column, row);
        const next = v.zoomView(HR.nx, HR.ny, rate, v.zoomIn(HR, geom600, rate, steps, column, row));
        const ux = ((point.x - next.ox) * next.zm) / HR.nx;
        const uy = ((point.y - next.oy) * next.zm) / HR.ny;
        assert.ok(ux >= 0 && ux <= 1 && uy >= 0 && uy <= 1.01, `rate ${rate} click ${column},${row}`);
        const edge = 1 / (2 * rate);
        const nearCentre = rate / (2 * rule.D) + 1e-9;
        const acrossX = ((point.x - view.ox) * view.zm) / HR.nx;
        const acrossY = ((point.y - view.oy) * view.zm) / HR.ny;
        if (acrossX > edge && acrossX < 1 - edge) assert.ok(Math.abs(ux - 0.5) <= nearCentre);
        if (acrossY > edge && acrossY < 1 - edge) assert.ok(Math.abs(uy - 0.5) <= nearCentre);
      }
    }
  }
});

test('zoom steps end at the rule\'s limit and ignore clicks off the map', () => {
  let steps = [];
  for (let k = 0; k < 9; k++) steps = v.zoomIn(HR, geom600, 2, steps, 300, 380);
  assert.equal(steps.length, 7);
  assert.deepEqual(v.zoomFields(steps), { zoom_level: 7, zoom_x: '3333333', zoom_y: '3333333' });
  steps = [];
  for (let k = 0; k < 3; k++) steps = v.zoomIn(HR, geom600, 3, steps, 300, 380);
  assert.equal(steps.length, 2);
  const before = [[2, 2]];
  assert.equal(v.zoomIn(HR, geom600, 2, before, 300, 10), before);   // the title band
  assert.equal(v.zoomIn(HR, geom600, 2, before, 620, 300), before);  // the legend
  assert.deepEqual(v.zoomFields([[5, 5], [3, 1]]), { zoom_level: 2, zoom_x: '5300000', zoom_y: '5100000' });
  assert.equal(v.zoomFields([]), null);
});

test('section points are whole km on the map, and a line never starts at x 0', () => {
  const whole = { ox: 0, oy: 0, zm: 1 };
  assert.deepEqual(v.sectionPoint(HR, geom600, whole, 300, 200), { x: 50, y: 90 });
  assert.deepEqual(v.sectionPoint(HR, geom600, whole, 451, 201), { x: 75, y: 90 });  // 75.17, 89.83
  assert.deepEqual(v.sectionPoint(HR, geom600, whole, 0, 21), { x: 0, y: 120 });
  assert.equal(v.sectionPoint(HR, geom600, whole, 300, 5), null);
  const zoomed = v.zoomView(HR.nx, HR.ny, 2, [[5, 5]]);
  assert.deepEqual(v.sectionPoint(HR, geom600, zoomed, 300, 380), { x: 75, y: 90 });
  assert.deepEqual(v.sectionLine({ x: 0, y: 120 }, { x: 40, y: 3 }), { x1: 1, y1: 120, x2: 40, y2: 3 });
});

test('the query names every key the program reads, and only those in use', () => {
  const state = {
    obs: 'RNSN', map: 'HR', tm: '202401151230', size: 600, legend: true, terrain: true, aws: 3,
    rate: 2, steps: [[5, 5], [3, 3]], section: { x1: 50, y1: 90, x2: 75, y2: 40 },
  };
  assert.equal(v.pictureQuery(state), 'obs=RNSN&map=HR&tm=202401151230&size=600&legend=1&gis=T&aws=3' +
    '&zoom_level=2&zoom_rate=2&zoom_x=5300000&zoom_y=5300000&x1=50&y1=90&x2=75&y2=40');
  const plain = { ...state, legend: false, terrain: false, aws: 0, steps: [], section: null };
  assert.equal(v.pictureQuery(plain), 'obs=RNSN&map=HR&tm=202401151230&size=600&legend=0');
});

test('times step by 5 minutes across days, months and leap days', () => {
  assert.equal(v.addMinutes('202402282355', 5), '202402290000');
  assert.equal(v.addMinutes('202403010000', -5), '202402292355');
  assert.equal(v.addMinutes('202312312355', 5), '202401010000');
  for (const bad of ['202413010000', '202402300000', '20240101000', '2024010100001', 'abcdefghijkl', null]) {
    assert.equal(v.parseTime(bad), null, String(bad));
  }
  assert.equal(v.currentTime(new Date(2024, 0, 15, 12, 39, 59)), '202401151235');
  assert.equal(v.currentTime(new Date(2024, 0, 1, 0, 4)), '202401010000');
  assert.deepEqual(v.stepTimes('202401010005', 3), ['202312312355', '202401010000', '202401010005']);
  const times = ['202401151200', '202401151205', '202401151215'];
  assert.equal(v.timeIndex(times, '202401151212'), 1);  // the program searches back
  assert.equal(v.timeIndex(times, '202401151215'), 2);
  assert.equal(v.timeIndex(times, '202401151100'), 0);
});

test('the hash carries the view and drops what does not fit', () => {
  const defaults = {
    obs: 'RNSN', map: 'HR', tm: '202401151230', size: 600, legend: true, terrain: false, aws: 0,
    rate: 2, steps: [], section: null,
  };
  const view = {
    ...defaults, obs: 'HSR', map: 'EW', tm: '202401151205', size: 800, legend: false, terrain: true,
    aws: 8, rate: 3, steps: [[7, 1], [4, 6]], section: { x1: 1, y1: 2, x2: 30, y2: 40 },
  };
  assert.deepEqual(v.stateFromHash(v.stateToHash(view), defaults), view);
  assert.deepEqual(v.stateFromHash('', defaults), defaults);
  const hostile = '#obs=XYZ&map=a%26b&tm=202413011200&size=650&legend=2&aws=12&rate=4&zx=59&zy=51' +
    '&section=1,2,3';
  assert.deepEqual(v.stateFromHash(hostile, defaults), defaults);
  // Digits beyond what the rate allows (8 under halves) or more steps than it has are refused.
  assert.deepEqual(v.stateFromHash('#rate=2&zx=8&zy=1', defaults).steps, []);
  assert.deepEqual(v.stateFromHash('#rate=3&zx=111&zy=111', defaults).steps, []);
  assert.deepEqual(v.stateFromHash('#rate=2&zx=12&zy=345', defaults).steps, []);
  assert.deepEqual(v.stateFromHash('#rate=2&zx=15&zy=51', defaults).steps, [[1, 5], [5, 1]]);
});
