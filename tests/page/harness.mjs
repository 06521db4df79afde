// Starts tarnfind against a scenario of the simulated server, and Chromium on the page that it serves.
import {execFileSync, spawn} from 'node:child_process';
import {mkdtempSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {chromium} from 'playwright-core';

const program = process.env.TARNFIND;
export const folder = mkdtempSync(join(tmpdir(), 'page-tests-'));
process.on('exit', () => rmSync(folder, {recursive: true, force: true}));

/// A camera of a scenario; its number makes its addresses.
export function camera(number, members = {}) {
  const hex = number.toString(16).toUpperCase().padStart(4, '0');
  return {
    name: `Camera ${number}`,
    mac: `00:40:8C:00:${hex.slice(0, 2)}:${hex.slice(2)}`,
    ip: `10.0.${number >> 8}.${number & 255}`,
    subnetMask: '255.255.0.0',
    gateway: '10.0.0.254',
    vendorTypeMask: '0x40',
    plugins: ['Axis IPC'],
    vendor: 'North',
    model: `Model ${number}`,
    firmware: '1.0',
    ...members,
  };
}

function environment(scenario) {
  const file = join(folder, `scenario-${Math.random()}.json`);
  // JSON.stringify writes no number that JavaScript cannot hold, so the greatest one of 64 bits has a name.
  writeFileSync(file, JSON.stringify(scenario).replaceAll('"GREATEST"', '18446744073709551615'));
  return {...process.env, TARN_SIMULATOR_SCENARIO: file};
}

/// Runs tarnfind to its end, and returns what it printed.
export function runTool(scenario, ...options) {
  return execFileSync(program, options, {env: environment(scenario), encoding: 'utf8'});
}

const tools = new Set();  // processes that serve a page

/// Serves a search until stop(), or stopBrowser where a test has failed before; address: of its page; printed(): what
/// tarnfind has printed so far.
export async function servePage(scenario, ...options) {
  const tool = spawn(program, ['page', ...options], {env: environment(scenario), stdio: ['ignore', 'pipe', 'ignore']});
  tools.add(tool);
  const ended = new Promise((resolve) => tool.on('exit', resolve)).finally(() => tools.delete(tool));
  let output = '';
  const address = await new Promise((resolve, reject) => {
    tool.stdout.on('data', (data) => {
      const found = /http:[^\s"]+/.exec(output += data);
      if (found) resolve(found[0]);
    });
    ended.then((code) => reject(new Error(`tarnfind ended with ${code}: ${output}`)));
  });
  const stop = () => {
    tool.kill('SIGKILL');
    return ended;
  };
  return {address, stop, printed: () => output};
}

let browser;
export async function startBrowser() {
  browser = await chromium.launch({
    executablePath: process.env.CHROMIUM,
    args: [
      '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'
    ],
  });
}
export function stopBrowser() {
  for (const tool of tools) tool.kill('SIGKILL');
  return browser.close();
}

/// A page at that address. page.faults collects what must never happen: errors, dialogs, violations of its policy.
export async function openPage(address, options = {}) {
  const page = await browser.newPage({viewport: {width: 1280, height: 800}, ...options});
  page.faults = [];
  page.on('pageerror', (error) => page.faults.push(error.message));
  page.on('console', (message) => /Content Security Policy/.test(message.text()) && page.faults.push(message.text()));
  page.on('dialog', (dialog) => {
    page.faults.push(`dialog ${dialog.message()}`);
    dialog.dismiss();
  });
  await page.goto(address);
  return page;
}

export const untilEnded = (page) => page.waitForSelector('#state.is-ended, #state.is-error');
/// What the element's descendants say, one text for each.
export const texts = (page, selector) => page.locator(selector).allInnerTexts();
