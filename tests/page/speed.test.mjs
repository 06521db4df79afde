// The speed of the live page. It is printed, not asserted, because a busy machine would fail.
import assert from 'node:assert/strict';
import {after, before, test} from 'node:test';

import {camera, openPage, servePage, startBrowser, stopBrowser, untilEnded} from './harness.mjs';

before(startBrowser);
after(stopBrowser);

test('frame times with 1,000 cameras and 50 events a second', async (context) => {
  const cameras = Array.from({length: 1000}, (_, i) => camera(i + 1));
  const events = Array.from({length: 200}, (_, i) => ({
                                             atMs: 2000 + i * 20,
                                             camera: `Camera ${i * 37 % 1000 + 1}`,
                                             event: ['changed', 'picture', 'values', 'seen'][i % 4],
                                             ...(i % 4 === 0 ? {set: {firmware: `2.${i}`}} : {}),
                                           }));
  const served = await servePage({cameras, events}, '--for', '7');
  const page = await openPage(served.address);
  await page.waitForSelector('#states .is-all:has-text("1,000")');
  const frames = await page.evaluate(() => new Promise((resolve) => {
                                       const gaps = [];
                                       let last = performance.now();
                                       const step = (now) => {
                                         gaps.push(now - last);
                                         last = now;
                                         if (gaps.length < 240)
                                           requestAnimationFrame(step);
                                         else
                                           resolve(gaps.sort((a, b) => a - b));
                                       };
                                       requestAnimationFrame(step);
                                     }));
  context.diagnostic(`median ${frames[120].toFixed(0)} ms, 95 % within ${frames[228].toFixed(0)} ms, longest ${
      frames.at(-1).toFixed(0)} ms`);
  await untilEnded(page);
  assert.equal(await page.evaluate(() => model.counts.changed), 50);
  assert.ok(await page.locator('.card').count() < 60);
  await served.stop();
});
