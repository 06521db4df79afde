// The saved page beside the live one.
import assert from 'node:assert/strict';
import {writeFileSync} from 'node:fs';
import {join} from 'node:path';
import {after, before, test} from 'node:test';
import {pathToFileURL} from 'node:url';

import {folder, openPage, runTool, servePage, startBrowser, stopBrowser, texts, untilEnded} from './harness.mjs';
import {scenario} from './scenario.mjs';

before(startBrowser);
after(stopBrowser);

/// What the cards say, without the times, which the lines do not have.
const cards = (page) => page.$$eval(
    '.card',
    (all) => all.map(
        (card) => ['.badges', '.name', '.maker', '.fields', '.values', '.picture-count'].map(
            (part) => card.querySelector(part).innerText)));

test('a report opened from a file shows what the live page shows, and asks for nothing', async () => {
  const [file, lines, pictures] = ['report.html', 'lines', 'pictures'].map((name) => join(folder, name));
  const served = await servePage(scenario, '--for', '1', '--json', '--pictures', pictures);
  const live = await openPage(served.address);
  await untilEnded(live);
  while (!served.printed().includes('"event":"summary"')) await live.waitForTimeout(50);
  writeFileSync(lines, served.printed().slice(served.printed().indexOf('\n') + 1));  // the first one is the address
  runTool(scenario, 'report', lines, '--pictures', pictures, '-o', file);
  const requests = [];
  const report = await openPage('about:blank');
  report.on('request', (request) => requests.push(request.url().slice(0, 40)));
  await report.goto(pathToFileURL(file).href);
  await untilEnded(report);
  await report.waitForSelector('.card img');
  assert.deepEqual(await cards(report), await cards(live));
  assert.equal((await cards(report)).length, 6);
  assert.deepEqual(await texts(report, '#states button'), await texts(live, '#states button'));
  assert.ok(await report.$eval('.card img', (image) => image.decode().then(() => image.naturalWidth > 0)));
  assert.deepEqual(requests.filter((address) => !/^(file|data):/.test(address)), []);
  assert.deepEqual(report.faults, []);
  await served.stop();
});
