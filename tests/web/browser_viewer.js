// The viewer page in headless Chromium, as a forecaster uses it: it loads the latest picture,
// zooms by clicks (rate 2 and 3), steps out and back, steps the time, draws a section by two
// clicks, a shared address restores the view, and a page at the latest time follows a new grid
// file. Exits 0 when every check held.
//   node browser_viewer.js BASE_URL SCREENSHOT_DIR LATEST_GRID_FILE NEXT_GRID_FILE
// The fixture behind BASE_URL: map HR of 100 x 120 km, grids 12:00 .. 12:30 on 2024-01-15.
'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

let chromium;
try {
  ({ chromium } = require('playwright-core'));
} catch (err) {
  console.error('playwright-core is missing: run "npm ci" in tests/web (tools/test does)');
  process.exit(2);
}

const [base, shotDir, latestGrid, nextGrid] = process.argv.slice(2);
const CHROMIUM = '/usr/bin/chromium';
// The page at size 600: map 600 x 720 pixels, 20 title rows, 35 legend columns.
const PICTURE = { width: 635, height: 740 };

async function main() {
  assert.ok(nextGrid, 'usage: node browser_viewer.js BASE_URL SCREENSHOT_DIR LATEST_GRID_FILE NEXT_GRID_FILE');
  assert.ok(fs.existsSync(CHROMIUM), `${CHROMIUM} is missing (apt-get install chromium)`);
  fs.mkdirSync(shotDir, { recursive: true });
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'rdr-chromium-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: CHROMIUM,
    headless: true,
    viewport: { width: 1100, height: 900 },
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  try {
    await drive(await context.newPage());
  } finally {
    await context.close();
    fs.rmSync(profile, { recursive: true, force: true });
  }
}

async function drive(page) {
  page.setDefaultTimeout(15000);
  const pictures = new Map();
  page.on('response', async (response) => {
    if (!response.url().includes('/cgi-bin/rdr_sfc_pty_img?')) return;
    pictures.set(response.url(), { status: response.status(), type: response.headers()['content-type'] });
  });
  const pageErrors = [];
  page.on('pageerror', (err) => pageErrors.push(err.message));
  // Every request the page makes succeeds (the icon too); a picture replaced while loading is aborted.
  const failed = [];
  page.on('response', (r) => r.status() >= 400 && failed.push(`${r.status()} ${r.url()}`));
  page.on('requestfailed', (r) => r.failure().errorText !== 'net::ERR_ABORTED' && failed.push(r.url()));

  await page.goto(base);
  let request = await shownRequest(page);
  check('the latest listed time and the whole map', request,
    { obs: 'RNSN', map: 'HR', tm: '202401151230', size: '600', legend: '1' }, ['zoom_level']);
  await pictureShown(page, pictures, request);

  // (450, 200) shows 75 km east, 90 km north: three quarters across both ways, digit 5.
  await clickPixel(page, 450, 200);
  request = await shownRequest(page, request);
  check('first zoom step', request, { zoom_level: '1', zoom_rate: '2', zoom_x: '5000000', zoom_y: '5000000' });
  await pictureShown(page, pictures, request);

  // In the view from (50, 60) km at magnification 2, (300, 400) shows (75, 88.3) km: digit 3 both ways.
  await clickPixel(page, 300, 400);
  request = await shownRequest(page, request);
  check('second zoom step', request, { zoom_level: '2', zoom_x: '5300000', zoom_y: '5300000' });
  await pictureShown(page, pictures, request);
  await page.screenshot({ path: path.join(shotDir, 'viewer-zoomed.png'), fullPage: true });

  await page.click('#zoom-out');
  request = await shownRequest(page, request);
  check('zoom out by one step', request, { zoom_level: '1', zoom_x: '5000000', zoom_y: '5000000' });

  await page.click('#zoom-reset');
  request = await shownRequest(page, request);
  check('reset', request, {}, ['zoom_level', 'zoom_x', 'zoom_y']);

  await page.selectOption('#zoom-rate', '3');
  await clickPixel(page, 450, 200);
  request = await shownRequest(page, request);
  check('a third of the view, moved in ninths', request,
    { zoom_level: '1', zoom_rate: '3', zoom_x: '6000000', zoom_y: '6000000' });
  await pictureShown(page, pictures, request);

  await page.click('#prev');
  request = await shownRequest(page, request);
  check('five minutes back keeps the zoom', request, { tm: '202401151225', zoom_x: '6000000' });
  await page.click('#next');
  await page.click('#next');
  request = await shownRequest(page, request);
  check('no step past the latest time', request, { tm: '202401151230' });

  // The slider runs over the seven listed times; the loop plays them from the first.
  await page.$eval('#time-slider', (slider) => {
    slider.value = '2';
    slider.dispatchEvent(new Event('input'));
  });
  request = await shownRequest(page, request);
  check('the third listed time from the slider', request, { tm: '202401151210' });
  await page.selectOption('#speed', '250');
  await page.click('#play');
  const played = new Set();
  for (let k = 0; k < 12 && played.size < 3; k++) {
    request = await shownRequest(page, request);
    played.add(new URL(request).searchParams.get('tm'));
  }
  await page.click('#play');
  assert.deepEqual([...played].sort(), ['202401151200', '202401151205', '202401151210'],
    'the loop starts at the first time and steps by 5 minutes');
  const paused = await shownRequest(page, '');
  await page.waitForTimeout(700);
  assert.equal(await shownRequest(page, ''), paused, 'pause holds the frame');
  await page.click('#latest');
  request = await shownRequest(page, paused);

  await page.selectOption('#zoom-rate', '2');
  await page.check('#mode-section');
  await clickPixel(page, 300, 200);
  await page.waitForSelector('#overlay circle');
  await clickPixel(page, 450, 500);
  request = await shownRequest(page, request);
  check('section from (50, 90) to (75, 40) km', request, { x1: '50', y1: '90', x2: '75', y2: '40' }, ['zoom_level']);
  await pictureShown(page, pictures, request);

  await page.selectOption('#size', '400');
  request = await shownRequest(page, request);
  const small = await page.$eval('#picture', (img) => [img.naturalWidth, img.naturalHeight]);
  assert.deepEqual(small, [435, 500], 'a 400-pixel map with its legend');

  // The address carries the view: a fresh page on it asks for the same picture.
  const shared = page.url();
  assert.match(shared, /#.*section=50%2C90%2C75%2C40/);
  const second = await page.context().newPage();
  await second.goto(shared);
  assert.equal(await shownRequest(second), request, 'the shared address restores the request');
  await second.close();

  await page.selectOption('#size', '600');
  request = await shownRequest(page, request);
  await page.screenshot({ path: path.join(shotDir, 'viewer.png'), fullPage: true });

  // The served list of times is rewritten as files arrive; the page at the latest time follows.
  fs.copyFileSync(latestGrid, nextGrid);
  request = await shownRequest(page, request);
  check('the new latest time', request, { tm: '202401151240', x1: '50' });
  assert.deepEqual(pageErrors, [], 'errors in the page');
  assert.deepEqual(failed, [], 'failed requests');
  console.log('browser: every check held; screenshots in ' + shotDir);
}

// The request that the page shows once its picture has arrived (a different one than `previous`).
async function shownRequest(page, previous) {
  await page.waitForFunction((prev) => {
    const img = document.getElementById('picture');
    const shown = img.dataset.shown;
    return shown && shown === img.getAttribute('src') && img.complete && img.naturalWidth > 0 &&
      document.getElementById('request').textContent !== prev;
  }, previous || '');
  return page.$eval('#request', (code) => code.textContent);
}

// The picture of `request` came as a 200 PNG, decoded at the map's size, and is the one on screen.
async function pictureShown(page, pictures, request) {
  const answer = pictures.get(request);
  assert.ok(answer, `no answer seen for ${request}`);
  assert.equal(answer.status, 200);
  assert.equal(answer.type, 'image/png');
  const shown = await page.$eval('#picture', (img) => [img.currentSrc, img.naturalWidth, img.naturalHeight]);
  assert.deepEqual(shown, [request, PICTURE.width, PICTURE.height]);
}

// Clicks the picture's pixel (column, row), whatever the scale it is shown at.
async function clickPixel(page, column, row) {
  const box = await page.locator('#picture').boundingBox();
  const size = await page.$eval('#picture', (img) => [img.naturalWidth, img.naturalHeight]);
  await page.mouse.click(box.x + ((column + 0.5) * box.width) / size[0],
    box.y + ((row + 0.5) * box.height) / size[1]);
}

// The query of a request holds the expected values and none of the absent keys.
function check(what, request, expected, absent = []) {
  const query = new URL(request).searchParams;
  for (const [key, value] of Object.entries(expected)) {
    assert.equal(query.get(key), value, `${what}: ${key} in ${request}`);
  }
  for (const key of absent) assert.equal(query.get(key), null, `${what}: no ${key} in ${request}`);
}

main().catch((err) => {
  console.error(err);
  process.exit(1);
});
