// What a person does on the page, and what it then shows.
import assert from 'node:assert/strict';
import {after, before, test} from 'node:test';

import {openPage, runTool, servePage, startBrowser, stopBrowser, texts, untilEnded} from './harness.mjs';
import {kHostile, scenario} from './scenario.mjs';

const kHostileName = `<U+202E>${kHostile}`;
const kArrival = ['Beta', 'Alpha', kHostileName, '10.0.0.5', 'Delta', 'no such camera'];

let served, page;
before(async () => {
  await startBrowser();
  served = await servePage(scenario, '--for', '1');
  page = await openPage(served.address);
  await untilEnded(page);
});
after(async () => {
  await stopBrowser();
  await served?.stop();
});

/// Waits until the cards have these names, in this order.
async function shows(...expected) {
  const names = () => texts(page, '.card .name');
  for (let i = 0; i < 60 && (await names()).join() !== expected.join(); ++i) await page.waitForTimeout(50);
  assert.deepEqual(await names(), expected);
}

test('cards stand in the order of their first events', async () => {
  await shows(...kArrival);
  assert.deepEqual(
      (await texts(page, '#states button:visible')).map((text) => text.replace(/\s+/g, ' ')),
      ['All 5', 'Known 3', 'New 2', 'Changed 1', 'Gone 1', 'Same IP 2', 'No known camera 1']);
});

test('the sort box orders by each column, numbers as numbers, and strays last', async () => {
  await page.selectOption('#sort', 'ip');
  await shows('Alpha', '10.0.0.5', 'Beta', 'Delta', kHostileName, 'no such camera');
  await page.click('#order');
  await shows(kHostileName, 'Beta', 'Delta', '10.0.0.5', 'Alpha', 'no such camera');
  await page.selectOption('#sort', 'model');
  await shows(kHostileName, 'Delta', 'Beta', 'Alpha', '10.0.0.5', 'no such camera');
  await page.click('#order');
  await page.selectOption('#sort', '');
});

for (const [state, ...expected] of [
         ['known', 'Beta', 'Alpha', kHostileName],
         ['new', '10.0.0.5', 'Delta'],
         ['changed', 'Alpha'],
         ['gone', kHostileName],
         ['shared', 'Beta', 'Delta'],
         ['stray', 'no such camera'],
]) {
  test(`the filter "${state}" shows its cameras`, async () => {
    await page.click(`#states [data-state=${state}]`);
    await shows(...expected);
    await page.click('#states [data-state=\'\']');
  });
}

test('vendor, type and search narrow what is shown, and one button ends it', async () => {
  await page.selectOption('#vendor', {label: 'South (2)'});
  await shows('Alpha', 'Delta');
  await page.fill('#search', '10.0.0.20');
  await shows('Delta');
  await page.selectOption('#vendor', '');
  for (const [text, ...expected] of [['south 2.0', 'Alpha'], ['00408c000001', 'Beta'], ['onvif', kHostileName]]) {
    await page.fill('#search', text);
    await shows(...expected);
  }
  await page.selectOption('#type', {label: 'Axis IPC (4)'});
  await shows();
  assert.match(await page.innerText('#empty'), /No camera matches/);
  await page.click('#clear');
  await shows(...kArrival);
});

test('the table says what the tool\'s own says', async () => {
  await page.click('#show-table');
  await page.waitForSelector('#rows tr');
  const columns = ['mac', 'ip', 'dhcp', 'vendor', 'model', 'firmware', 'plugin'];
  const rows = await page.$$eval(
      '#rows tr:not(.is-stray)',
      (all, names) => all.map((row) => names.map((name) => row.querySelector(`.column-${name}`).innerText.trim())),
      columns);
  const [head, ...lines] =
      runTool(scenario, 'search', '--csv', '--for', '1').trim().split(/\r?\n/).map((line) => line.split(','));
  const plain = (row) => !row.join().includes('<');  // names with quotation marks would need a reader of their own
  assert.deepEqual(
      rows.filter(plain), lines.filter(plain).map((line) => columns.map((name) => line[head.indexOf(name)] || '?')));
  await page.click('#heads .column-firmware button');
  await page.waitForSelector('#heads .column-firmware[aria-sort=ascending]');
  assert.match(page.url(), /view=table&sort=firmware/);
  await page.evaluate(() => writeAddress({view: null, sort: null}));
});

test('the own view shows what changed, exact values, and what is not told', async () => {
  await page.click('.card:has-text(\'Alpha\')');
  assert.match(await page.innerText('.events'), /Firmware\s+1\.0 → 2\.0/);
  await page.keyboard.press('ArrowLeft');
  assert.match(await page.innerText('.value-lists'), /18446744073709551615/);
  assert.match(await page.innerText('.remark'), /Also at 10\.0\.0\.20: 00:40:8C:00:00:04/);
  await page.goto(`${served.address}#camera=00:40:8C:00:00:05`);
  assert.match(await page.innerText('.all-fields'), /Mask\s+\?[^]*Plug-in\s+Axis IPC/);
  await page.keyboard.press('Escape');
});

test('a hostile name is text, and nothing breaks the page\'s policy', async () => {
  await page.click('.card.is-gone');
  assert.equal(await page.innerText('#details-name'), kHostileName);
  assert.equal(await page.locator('img[src=x], main script').count(), 0);
  await page.keyboard.press('Escape');
  assert.deepEqual(page.faults, []);
});

test('a first line tells whether the server knew the camera', async () => {
  for (const [line, expected] of [
           [{change: 'new', kind: 0}, 'new, 0 known, 1 new'],
           [{change: 'known'}, 'known, 1 known, 0 new'],
           [{change: 'same', kind: 2}, 'known, 1 known, 0 new'],  // the list came while the event waited
           [{change: 'changed', kind: 1}, 'changed, 1 known, 0 new'],
           [{}, 'known, 1 known, 0 new'],  // of info
           [{change: 'gone', kind: 4, camera: {mac: '00:40:8C:00:00:01'}}, 'gone, 0 known, 0 new'],
  ]) {
    const text = JSON.stringify({event: 'camera', type: 2, camera: {mac: '00:40:8C:00:00:01', ip: ''}, ...line});
    assert.equal(await page.evaluate((text) => {
      const told = new Model();
      told.take(text);
      return `${told.cameras[0].state}, ${told.counts.known} known, ${told.counts.new} new`;
    }, text), expected);
  }
});

test('pictures are shown, and a broken one says that it is', async () => {
  const shown = await page.$eval('.card img', (image) => image.decode().then(() => image.naturalWidth));
  assert.equal(shown, 96);
  const broken = await openPage('about:blank');
  await broken.route('**/pictures/*', (route) => route.fulfill({status: 415}));
  await broken.goto(served.address);
  await broken.waitForSelector('text=Picture cannot be shown');
  assert.match(await broken.innerText('.card .no-picture'), /Picture cannot be shown\s+PNG, \d,\d+ bytes/);
  await broken.close();
});

test('everything can be reached by keyboard', async () => {
  const focused = () => page.evaluate(
      () => document.activeElement.closest('.card')?.querySelector('.name').innerText ?? document.activeElement.id);
  await page.evaluate(() => document.activeElement.blur());
  await page.keyboard.press('/');
  assert.equal(await focused(), 'search');
  for (const [key, expected] of [
           ['ArrowDown', 'Beta'], ['ArrowRight', 'Alpha'], ['End', 'no such camera'], ['Home', 'Beta']]) {
    await page.keyboard.press(key);
    assert.equal(await focused(), expected, key);
  }
  await page.keyboard.press('Enter');
  await page.waitForSelector('#details[open]');
  await page.keyboard.press('Escape');
  await page.waitForSelector('#details:not([open])', {state: 'attached'});
  assert.equal(await focused(), 'Beta');
});
