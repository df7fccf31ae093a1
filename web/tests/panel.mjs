import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readdirSync, readFileSync, readlinkSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { after, before, describe, it } from 'node:test';
import { folderWith, openBrowser, openPage, Panel, run, runToEnd } from './harness.mjs';

const log = (page) => page.locator('#log').innerText();
const cards = (page) => page.locator('#plots .card h3').allInnerTexts();
const position = (page, atom) => page.evaluate((k) => globalThis.panel.structure.view.positionOf(k), atom);

describe('the panel', () => {
  let browser, panel, page, folder;

  before(async () => {
    folder = folderWith('argon');
    browser = await openBrowser();
    panel = await Panel.start(folder);
    page = await openPage(browser, panel.address);
  });
  after(async () => {
    assert.equal(await panel.end(), 0);
    await browser.close();
  });

  it('takes the token out of the address', () => assert.equal(new URL(page.url()).search, ''));

  it('opens a trajectory from the list of files and shows its model', async () => {
    await page.click('.files button:has-text("argon.trj")');
    await page.waitForSelector('.title:has-text("argon: 500 atoms")');
    await page.waitForFunction(() => globalThis.panel.structure.view.drawn > 0);
  });

  it('selects by words', async () => {
    await runToEnd(page, '@select atoms ids 1-7');
    await page.waitForSelector('.title:has-text("7 selected")');
  });

  it('selects and measures by clicks', async () => {
    const places = await page.evaluate(() => [3, 40].map((atom) => globalThis.panel.structure.view.placeOf(atom)));
    const canvas = page.locator('.view canvas');
    await canvas.click({ position: { x: places[0][0], y: places[0][1] } });
    await page.waitForSelector('.title:has-text("1 selected")');
    await canvas.click({ position: { x: places[1][0], y: places[1][1] }, modifiers: ['Shift'] });
    await page.waitForSelector('.title:has-text("2 selected")');
    await page.click('button:has-text("Measure")');
    await page.waitForSelector('.measures li:has-text("distance")');
  });
});
