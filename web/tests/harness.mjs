import { spawn } from 'node:child_process';
import { cpSync, mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

export const source = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');
export const pathdesk = process.env.PATHDESK ?? path.join(source, 'build/release/bin/pathdesk');

/** A folder of its own with copies of examples. */
export function folderWith(...examples) {
  const folder = mkdtempSync(path.join(tmpdir(), 'panel-test-'));
  for (const example of examples) {
    for (const name of readdirSync(path.join(source, 'examples', example))) {
      cpSync(path.join(source, 'examples', example, name), path.join(folder, name));
    }
  }
  return folder;
}

/** pathdesk panel in a folder. */
export class Panel {
  static async start(folder, ...more) {
    const panel = new Panel();
    panel.folder = folder;
    panel.process = spawn(pathdesk, ['panel', '--no-open', '--out', path.join(folder, 'out'), ...more], { cwd: folder });
    panel.output = '';
    panel.ended = new Promise((resolve) => panel.process.on('exit', (code, signal) => resolve(code ?? signal)));
    panel.address = await new Promise((resolve, reject) => {
      const take = (data) => {
        panel.output += data;
        const found = /http:\S+/.exec(panel.output);
        if (found) resolve(found[0]);
      };
      panel.process.stdout.on('data', take);
      panel.process.stderr.on('data', take);
      panel.process.on('exit', () => reject(new Error(panel.output)));
    });
    panel.origin = new URL(panel.address).origin;
    return panel;
  }

  /** Ends it as Ctrl-C does. @return its exit code */
  async end() {
    this.process.kill('SIGINT');
    const code = await this.ended;
    rmSync(this.folder, { recursive: true, force: true });
    return code;
  }
}

export async function openBrowser() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-dev-shm-usage'],
  });
}

/** A page on the panel, ready for lines. */
export async function openPage(browser, address, size = { width: 1280, height: 800 }, deviceScaleFactor = 1) {
  const context = await browser.newContext({ viewport: size, acceptDownloads: true, deviceScaleFactor });
  context.setDefaultTimeout(60000); // machines that do much else besides are slow
  const page = await context.newPage();
  page.faults = [];
  page.on('pageerror', (error) => page.faults.push(String(error)));
  page.on('console', (message) => {
    if (message.type() === 'error') page.faults.push(message.text());
  });
  await page.goto(address);
  await page.waitForFunction(() => document.querySelectorAll('#side details').length > 0);
  return page;
}

export async function run(page, line) {
  await page.fill('#line', line);
  await page.press('#line', 'Enter');
}

/** Runs a line and waits for its end. */
export async function runToEnd(page, line) {
  const before = await page.locator('.lines > li').count();
  await run(page, line);
  await page.waitForFunction(
    (count) => document.querySelectorAll('.lines > li').length > count && !document.querySelector('.lines > li.runs'),
    before,
    { timeout: 60000 },
  );
}
