// What others in the same browser get, what a search that fails looks like, and what a screen reader gets.
import assert from 'node:assert/strict';
import {createServer, request} from 'node:http';
import {createRequire} from 'node:module';
import {after, before, test} from 'node:test';

import {camera, openPage, servePage, startBrowser, stopBrowser, untilEnded} from './harness.mjs';
import {scenario} from './scenario.mjs';

const axeSource = createRequire(import.meta.url)('axe-core').source;

let served;
before(async () => {
  await startBrowser();
  served = await servePage(scenario, '--for', '1');
});
after(async () => {
  await stopBrowser();
  await served?.stop();
});

test('a page of another origin reads, frames and runs nothing', async () => {
  const other =
      createServer((_, response) => response.setHeader('Content-Type', 'text/html').end('<!DOCTYPE html>')).listen(0);
  for (const host of ['127.0.0.1', 'localhost']) {
    const page = await openPage(`http://${host}:${other.address().port}/`);
    const results = await page.evaluate(async (address) => {
      const load = (tag, from) => new Promise((resolve) => {
        const element = document.createElement(tag);
        element.onload = () => resolve('loaded');
        element.onerror = () => resolve('refused');
        element.src = from;
        document.body.append(element);
      });
      const read = (mode) =>
          fetch(`${address}events`, {mode}).then((response) => response.text() || 'nothing', () => 'refused');
      return [await read('cors'), await read('no-cors'), await load('script', `${address}model.js`)];
    }, served.address);
    assert.deepEqual(results, ['refused', 'refused', 'refused'], host);
    await page.evaluate(
        (address) => document.body.append(Object.assign(document.createElement('iframe'), {src: address})),
        served.address);
    await page.waitForTimeout(300);
    assert.ok(page.frames().slice(1).every((frame) => !frame.url().startsWith('http://127.0.0.1')), 'framed');
    await page.close();
  }
  other.close();
});

test('a request for another host gets nothing, as after a change of the name\'s address', async () => {
  const ask = (host) => new Promise((resolve) => request(served.address, {headers: {host}}, (response) => {
                                                   response.resume();
                                                   resolve(response.statusCode);
                                                 }).end());
  assert.equal(await ask(new URL(served.address).host), 200);
  assert.ok([403, 404].includes(await ask('evil.example')));
});

test('a refused channel is said loudly, with the step', async () => {
  const refused =
      await servePage({functionFaults: [{function: 'TarnLiveStream_Open', call: 'every', error: true}]}, '--for', '1');
  const page = await openPage(refused.address);
  await untilEnded(page);
  assert.match(await page.innerText('#alert'), /step “channel”[^]*cannot be opened/);
  await refused.stop();
  await page.close();
});

test('the end of tarnfind is said loudly, and the cameras stay', async () => {
  const short = await servePage({cameras: [camera(1)]});
  const page = await openPage(short.address);
  await page.waitForSelector('.card');
  await short.stop();
  await page.waitForSelector('#alert:has-text(\'tarnfind has gone\')');
  assert.equal(await page.locator('.card').count(), 1);
  await page.close();
});

for (const [colorScheme, width] of [['light', 1280], ['dark', 390]]) {
  test(`nothing serious is wrong for a screen reader or weak eyes, ${colorScheme}, ${width} pixels`, async () => {
    const page = await openPage(served.address, {colorScheme, viewport: {width, height: 844}});
    await page.evaluate(axeSource);
    for (const view of ['#view=wall', '#view=table', '#camera=00:40:8C:00:00:01', '#q=nothing']) {
      await page.goto(served.address + view);  // another fragment of the same page
      await untilEnded(page);
      await page.waitForTimeout(200);
      const found = await page.evaluate(() => axe.run());
      assert.ok(found.passes.length > 10);
      const grave = found.violations.filter(({impact}) => ['serious', 'critical'].includes(impact));
      assert.deepEqual(grave.map(({id, nodes}) => `${id}: ${nodes[0].html}`), [], view);
    }
    await page.close();
  });
}
