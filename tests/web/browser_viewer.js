// The viewer page in headless Chromium as a forecaster uses it, on a phone (390 x 844, touch) and a
// desk (1400 x 1000): what it requests and shows after each action; exits 0 when every check held,
// with a screenshot of each. ARGS: BASE_URL SCREENSHOT_DIR LATEST_GRID_FILE NEXT_GRID_FILE. Behind
// BASE_URL: the fixture tree of rdr_fixture_tree.cpp; rain in the west, 0.2 x row mm/h.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');

// From tests/web/node_modules: "npm ci" there installs it (tools/test does).
const { chromium } = require('playwright-core');

const [base, shotDir, latestGrid, nextGrid] = process.argv.slice(2);
const T = (minute) => `2024011512${minute}`;
const SESSIONS = [
  ['phone', { viewport: { width: 390, height: 844 }, isMobile: true, hasTouch: true, deviceScaleFactor: 2 }, [T(30)]],
  ['desk', { viewport: { width: 1400, height: 1000 } }, [T(30), T(40)]],
];

async function main() {
  fs.mkdirSync(shotDir, { recursive: true });
  const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', headless: true,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'] });
  try {
    for (const [name, options, profiles] of SESSIONS) {
      const context = await browser.newContext({ ...options, acceptDownloads: true });
      await context.grantPermissions(['clipboard-read', 'clipboard-write'], { origin: base });
      const page = await context.newPage();
      page.setDefaultTimeout(15000);
      const [errors, probes] = [[], []];
      page.on('pageerror', (err) => errors.push(err.message));
      // Every request succeeds (the icon too); a picture replaced while loading is aborted.
      page.on('response', (r) => r.status() >= 400 && errors.push(`${r.status()} ${r.url()}`));
      page.on('requestfailed', (r) => r.failure().errorText !== 'net::ERR_ABORTED' && errors.push(r.url()));
      page.on('request', (r) => /_probe\?/.test(r.url()) && probes.push(Object.fromEntries(new URL(r.url()).searchParams)));
      await probed(page, probes, profiles, await (name === 'phone' ? phone(page) : desk(page)));
      await page.screenshot({ path: path.join(shotDir, `viewer-${name}.png`), fullPage: true });
      await step(page, 'the section cleared', () => page.click('#section-clear'), {}, ['x1']);
      assert.ok(await page.isHidden('#profile') && !(await page.locator('#overlay .end').count()), 'the profile and A, B go too');
      assert.deepEqual(errors, [], `${name}: errors in the page or failed requests`);
      await context.close();
    }
  } finally {
    await browser.close();
  }
  console.log('browser: every check held; screenshots in ' + shotDir);
}

async function phone(page) {
  await step(page, 'the first picture', () => page.goto(base));
  for (const width of [390, 360]) {
    if (width === 360) await step(page, 'a narrower fit', () => page.setViewportSize({ width, height: 844 }));
    const fit = await page.evaluate(() => [document.documentElement.scrollWidth, innerWidth, document.getElementById('picture').width]);
    assert.ok(fit[0] <= fit[1] && fit[2] >= 0.9 * fit[1], `${width} px: page, window, picture widths ${fit}`);
  }
  const size = await page.$eval('#picture', (img) => [img.naturalWidth, img.naturalHeight]);
  await step(page, 'a tap zooms', () => press(page, size[0] * 0.6, size[1] * 0.3), { zoom_level: '1' });
  await page.tap('#mode-section');
  await press(page, size[0] * 0.2, size[1] * 0.3);
  return step(page, 'two taps draw a section while zoomed', () => press(page, size[0] * 0.5, size[1] * 0.8), { zoom_level: '1' });
}

async function desk(page) {
  await step(page, 'the latest time, the whole map', () => page.goto(base), { obs: 'RNSN', tm: T(30) }, ['zoom_level']);
  const box = await page.locator('#picture').boundingBox();
  assert.ok(box.y + box.height <= 1000 && box.height > 900, `fits the window: ${JSON.stringify(box)}`);
  assert.equal(await text(page, 'status'), '2024.01.15 12:30 · 실황 눈비영역');
  assert.match(await text(page, 'age'), /^최신 자료 \/ latest data 2024\.01\.15 12:30: \d+일 전/);
  assert.equal(await page.$eval('#time-marks', (m) => m.style.background.match(/var\(--gap\)/g).length), 1);

  // At 600 pixels the map is 600 x 720 below 20 title rows: pixel (120, 554) shows (20, 31) km.
  await step(page, 'a size', () => page.selectOption('#size', '600'), { size: '600' });
  for (const [obs, reading] of [['HSR', '5 – 10 mm/h'], ['TW', '-2 – 1 °C'], ['RNSN', '비 / rain']]) {
    await step(page, obs, () => page.selectOption('#obs', obs), { obs });
    await press(page, 120, 554, 'hover');
    assert.equal(await text(page, 'readout'), `125.651°E 37.731°N · x 20.0 y 31.0 km · ${reading}`);
  }

  // (450, 200) shows 75 km east, 90 km north: three quarters across both ways, digit 5.
  const click = (column, row) => () => press(page, column, row);
  await step(page, 'a click zooms', click(450, 200), { zoom_level: '1', zoom_x: '5000000', zoom_y: '5000000' });
  assert.equal(await text(page, 'zoom-info'), '1/7단계 ×2 · 50 × 60 km · 남서 모서리 / south-west corner (50, 60) km');
  const key = (name) => () => page.keyboard.press(name);
  for (const [what, action, expected, absent] of [['Back undoes the zoom', () => page.goBack(), {}, ['zoom_level']],
    ['Forward redoes it', () => page.goForward(), { zoom_x: '5000000' }], ['+', key('+'), { zoom_x: '5300000' }],
    ['-', key('-'), { zoom_x: '5000000' }], ['0', key('0'), {}, ['zoom_level']], ['←', key('ArrowLeft'), { tm: T(25) }],
    ['→', key('ArrowRight'), { tm: T(30) }]]) {
    await step(page, what, action, expected, absent);
  }

  // Back to the earliest time; the program shows 12:10 for 12:15, and the page says so.
  for (const minute of ['25', '20', '15', '10', '05', '00']) {
    await step(page, '◀', () => page.click('#prev'), { tm: T(minute) });
    if (minute !== '15') continue;
    assert.match(await text(page, 'status'), /^12:15 자료 없음: 12:10 자료 표시 \/ data of 12:10 shown for 12:15 · /);
    const [download] = await Promise.all([page.waitForEvent('download'), page.click('#download')]);
    assert.equal(download.suggestedFilename(), 'RNSN_202401151210.png');
  }
  assert.ok(await page.isDisabled('#prev'), '◀ stops at the earliest time with data');
  await step(page, 'a time without data', () => page.goto(base + '#tm=202401151100&size=600'), { tm: '202401151100' });
  assert.match(await text(page, 'status'), /^오류 그림: .* \/ error picture: no data within 45 minutes up to 11:00$/);

  // Stations named by what they show, with the key to their discs.
  await step(page, 'latest', () => page.click('#latest'), { tm: T(30) });
  await step(page, 'stations', () => page.selectOption('#aws', '4'), { aws: '4' });
  assert.match(await page.$eval('#aws', (s) => s.options[4].text + s.options[5].text), /temperature.*humidity/);
  assert.ok(await page.isVisible('#station-key'));

  // Space plays the last hour: every frame requested before the first is shown, the last held.
  await page.selectOption('#speed', '100');
  await page.mouse.click(5, 5);
  const played = page.evaluate(() => new Promise((resolve) => {
    performance.clearResourceTimings();
    let [text, shows, asked] = [document.getElementById('loop-text'), []];
    new MutationObserver(() => {
      if (!/^재생/.test(text.textContent) || shows.at(-1)?.[0] === text.textContent) return;
      shows.push([text.textContent, performance.now()]);
      // The page refreshes its list of times meanwhile: only pictures count.
      asked = asked || performance.getEntriesByType('resource').map((e) => new URL(e.name))
        .filter((url) => url.pathname.endsWith('/rdr_sfc_pty_img')).map((url) => url.searchParams.get('tm'));
      if (shows.length === 8) resolve({ shows, asked });
    }).observe(text, { childList: true, subtree: true, characterData: true });
  }));
  await page.keyboard.press(' ');
  const { shows, asked } = await played;
  // 12:30 is the picture on the page already.
  assert.deepEqual(asked.sort(), ['00', '05', '10', '20', '25'].map(T), 'every other frame asked first');
  assert.deepEqual(shows.map(([frame]) => frame.split(' ').at(-1)), ['1/6', '2/6', '3/6', '4/6', '5/6', '6/6', '1/6', '2/6']);
  assert.ok(shows[6][1] - shows[5][1] >= 1450, 'the last frame is held');
  await page.keyboard.press(' ');
  assert.equal(await text(page, 'loop-text'), '', 'space stops the loop');
  await page.click('#latest');

  // A section by two clicks; Esc cancels a first point.
  await page.check('#mode-section');
  for (const [action, points] of [[click(300, 200), 1], [key('Escape'), 0], [click(300, 200), 1]]) {
    await action();
    assert.equal(await page.locator('#overlay circle').count(), points);
  }
  const request = await step(page, 'a section', click(450, 500), { x1: '50', y1: '90', x2: '75', y2: '40' });

  // Copy puts the page's address on the clipboard; that address restores the view.
  await page.click('#copy');
  await page.waitForFunction(() => /copied/.test(document.getElementById('copy').textContent));
  const shared = await page.evaluate(() => navigator.clipboard.readText());
  assert.equal(shared, page.url(), 'the page\'s address on the clipboard');
  const second = await page.context().newPage();
  assert.equal(await step(second, 'the shared address', () => second.goto(shared)), request);
  await second.close();

  // The served list of times is rewritten as files arrive; the page at the latest time follows.
  return step(page, 'a new grid file', async () => fs.copyFileSync(latestGrid, nextGrid), { tm: T(40), x1: '50' });
}

// After the flow's last `request`, a section drawn: its profile and the point read out under a click in probe
// mode against the probe's answers; the probes asked: a profile (a sample a pixel) at each `profiles` time, the point.
async function probed(page, probes, profiles, request) {
  const [tm, x1, y1, x2, y2] = ['tm', 'x1', 'y1', 'x2', 'y2'].map((key) => new URL(request).searchParams.get(key));
  const day = tm.replace(/(\d{4})(\d\d)(\d\d)(\d\d)(\d\d)/, '$1.$2.$3 $4:$5');
  await page.waitForFunction((d) => document.getElementById('profile-title').textContent.includes(d), day);
  assert.deepEqual(await page.$$eval('#overlay .end, #profile .end', (marks) => marks.map((g) => g.textContent)), ['A', 'B', 'A', 'B']);
  assert.equal(await page.textContent('#profile .length'), `${Math.hypot(x2 - x1, y2 - y1).toFixed(1)} km`);
  await page.check('#mode-probe');
  await press(page, ...(await page.$eval('#picture', (img) => [img.naturalWidth * 0.2, img.naturalHeight * 0.75])));
  await page.waitForSelector('#probe-table tr[data-key="station"]');
  const [point, n] = [probes.at(-1), String((await page.$eval('#profile-plot', (plot) => plot.clientWidth)) - 80)];
  assert.deepEqual(probes, [...profiles.map((t) => ({ tm: t, map: 'HR', x1, y1, x2, y2, n })), { tm, map: 'HR', x: point.x, y: point.y }]);
  const { point: p, station: s } = await (await fetch(`${base}cgi-bin/rdr_sfc_pty_probe?tm=${tm}&map=HR&x=${point.x}&y=${point.y}`)).json();
  const rows = Object.fromEntries(await page.$$eval('#probe-table tr', (trs) => trs.map((tr) => [tr.dataset.key, tr.lastChild.textContent])));
  for (const [key, expected] of [['tm', day], ['place', (await text(page, 'readout')).split(' · ').slice(0, 2).join(' · ')],
    ['TW', `${p.tw} °C`], ['HSR', `${p.hsr} mm/h`], ['RN15X', `${p.rn15x} mm/h`], ['station', s ? `${s.stn_id} ${s.name}` : '20 km 안에 없음'],
    ...Object.entries(p.classes).map(([k, c]) => [k, c ? c.name || '분류' : '—'])]) {
    assert.ok(rows[key].startsWith(expected), `${key}: ${rows[key]}`);
  }
}

// Does `action`, then waits until the picture of another request is on screen; checks the query
// of that request for the expected values and none of the absent keys, and returns it.
async function step(page, what, action, expected = {}, absent = []) {
  const previous = await text(page, 'request').catch(() => '');
  await action();
  await page.waitForFunction((prev) => {
    const img = document.getElementById('picture');
    return img.dataset.shown === img.getAttribute('src') && img.complete && img.naturalWidth > 0 &&
      document.getElementById('request').textContent !== prev;
  }, previous);
  const request = await text(page, 'request');
  const query = new URL(request).searchParams;
  for (const [key, value] of Object.entries(expected)) assert.equal(query.get(key), value, `${what}: ${key} in ${request}`);
  for (const key of absent) assert.equal(query.get(key), null, `${what}: no ${key} in ${request}`);
  return request;
}

const text = (page, id) => page.$eval('#' + id, (e) => e.textContent);

// Taps (on a touch screen), clicks or, with `hover`, points at the picture's pixel (column, row),
// whatever the scale it is shown at.
async function press(page, column, row, hover) {
  await page.locator('#picture').scrollIntoViewIfNeeded();
  const box = await page.locator('#picture').boundingBox();
  const [width, height, touch] = await page.$eval('#picture', (img) => [img.naturalWidth, img.naturalHeight, navigator.maxTouchPoints > 0]);
  const [x, y] = [box.x + ((Math.floor(column) + 0.5) * box.width) / width, box.y + ((Math.floor(row) + 0.5) * box.height) / height];
  await (hover ? page.mouse.move(x, y) : touch ? page.touchscreen.tap(x, y) : page.mouse.click(x, y));
}

main().catch((err) => {
  console.error(err);
  process.exit(1);
});
