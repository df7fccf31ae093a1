import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { readdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { after, before, describe, it } from 'node:test';
import { folderWith, openBrowser, openPage, Panel, pathdesk, run, runToEnd, source } from './harness.mjs';

const log = (page) => page.locator('#log').innerText();
const position = (page, atom) => page.evaluate((k) => globalThis.panel.structure.view.positionOf(k), atom);
const pointsOf = (page, heading) => page.evaluate((wanted) => {
  const { plots } = globalThis.panel;
  const graph = [...plots.graphs.values()].find((each) => each.heading === wanted);
  const set = graph && plots.points(graph.curves[0].set);
  return set ? { x: [...set.x.subarray(0, set.count)], y: [...set.y.subarray(0, set.count)] } : null;
}, heading);
const card = (page, heading) => page.locator('#cards .card', { has: page.locator(`h3:text-is("${heading}")`) });
const temperatures = 'Profile of Temperature';

/** Where a point stands in its plot, in pixels. */
const placeInPlot = (page, heading, k) => page.evaluate(([wanted, place]) => {
  const { plots } = globalThis.panel;
  const graph = [...plots.graphs.values()].find((each) => each.heading === wanted);
  const { plot } = plots.plots.get(graph.graph);
  const set = plots.points(graph.curves[0].set);
  return [plot.valToPos(set.x[place], 'x'), plot.valToPos(set.y[place], 'y')];
}, [heading, k]);

describe('the panel', () => {
  let browser, panel, page, folder;

  before(async () => {
    folder = folderWith('water');
    writeFileSync(path.join(folder, 'first.script'), 'SELECT_PROPERTIES "Kinetic Energy"\nPROFILE\n');
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
    await page.click('.files button:has-text("water.trj")');
    await page.waitForSelector('.title:has-text("water: 648 atoms")');
    await page.waitForFunction(() => globalThis.panel.structure.view.drawn > 0);
  });

  it('greys out what the file cannot give', async () => {
    await page.waitForSelector('.checklist input[value="Temperature"]');
    const missing = page.locator('.checklist input:disabled');
    for (const box of await missing.all()) assert.equal(await box.isChecked(), false);
    assert.equal(await page.locator('.checklist label.missing').count(), await missing.count());
  });

  it('sets properties by ticks and runs an analysis by its button', async () => {
    await page.uncheck('.checklist input[value="Total Energy"]');
    await page.check('.checklist input[value="Temperature"]');
    await page.check('.checklist input[value="Pressure"]');
    await page.click('#side button:text-is("PROFILE")');
    await card(page, temperatures).waitFor();
    await page.waitForSelector('.lines li.done:has-text("PROFILE")', { state: 'attached' });
    assert.match(await log(page), /SELECT_PROPERTIES Temperature Pressure/);
    assert.equal((await pointsOf(page, temperatures)).x.length, 300);
  });

  it('puts back a setting that was refused', async () => {
    await page.fill('#field-NUMBER_OF_BINS', '-4');
    await page.press('#field-NUMBER_OF_BINS', 'Enter');
    await page.waitForSelector('.said.complaint');
    await page.waitForFunction(() => document.querySelector('#field-NUMBER_OF_BINS').value === '20');
  });

  it('shows the frame of a point that is clicked, and marks it in all plots', async () => {
    const before = await position(page, 7);
    const [x, y] = await placeInPlot(page, temperatures, 120);
    await card(page, temperatures).locator('.u-over').click({ position: { x, y } });
    await page.waitForFunction((old) => globalThis.panel.structure.view.positionOf(7)[0] !== old, before[0]);
    await runToEnd(page, '@show model');
    const shown = await position(page, 7);
    const told = (await log(page)).split('\n').reverse().find((line) => /^\s*8\s/.test(line));
    for (const [k, text] of told.trim().split(/\s+/).slice(-3).entries()) assert.ok(Math.abs(Number(text) - shown[k]) < 2e-5, told);
    const marks = await page.evaluate(() => [...globalThis.panel.plots.graphs.values()].map((graph) => graph.curves[0].highlighted?.[0]));
    assert.equal(marks.length, 2);
    for (const mark of marks) assert.ok(Math.abs(mark - 1.2) < 0.006, `marked at ${mark}`);
  });

  it('steps, plays and stops', async () => {
    const before = await position(page, 7);
    await page.click('button[aria-label^="One frame on"]');
    await page.waitForFunction((old) => globalThis.panel.structure.view.positionOf(7)[0] !== old, before[0]);
    await runToEnd(page, 'FRAME_STEPPING_MODE "LOOP AT END"');
    await page.click('button[aria-label^="Play (space)"]');
    await page.waitForSelector('#stop:not(:disabled)');
    const drawn = await page.evaluate(() => globalThis.panel.structure.view.drawn);
    await page.waitForFunction((old) => globalThis.panel.structure.view.drawn > old, drawn, { polling: 100 });
    // While frames play, a slow browser has no quiet moment for a click of the mouse.
    await page.evaluate(() => document.getElementById('stop').click());
    await page.waitForSelector('#stop:disabled');
  });

  it('lists extrema as a table whose rows lead to their frames', async () => {
    await runToEnd(page, 'MAXIMA 3');
    await runToEnd(page, 'FIND_EXTREMA');
    await page.click('#tab-tables');
    const row = page.locator('#tables tr.leads').first();
    const frame = await row.locator('td').nth(2).innerText();
    await row.click();
    await page.waitForFunction((wanted) => document.querySelector('[aria-label="Frame of the range"]').value === wanted, frame);
    await page.click('#tab-plots');
  });

  it('selects by words', async () => {
    await runToEnd(page, '@select atoms ids 1-7');
    await page.waitForSelector('.title:has-text("7 selected")');
  });

  it('selects and measures by clicks', async () => {
    await page.click('button:text-is("Fit")');
    // Atoms that hide each other are no choice: three that stand apart.
    const places = await page.evaluate(() => {
      const { view } = globalThis.panel.structure;
      const inFront = [...Array(648).keys()].filter((atom) => view.atomAt(...view.placeOf(atom)) === atom);
      return [0, 1, 2].map((k) => view.placeOf(inFront[k * Math.floor(inFront.length / 3)]));
    });
    const canvas = page.locator('.view canvas');
    for (const [k, [x, y]] of places.entries()) {
      await canvas.click({ position: { x, y }, modifiers: k > 0 ? ['Shift'] : [] });
      await page.waitForSelector(`.title:has-text("${k + 1} selected")`);
    }
    await page.click('button:text-is("Measure angle")');
    await page.waitForSelector('.measures li:has-text("angle")');
  });

  it('draws atoms where they stand, the nearer ones in front, with rims around the selected ones', async () => {
    await runToEnd(page, '@select atoms ids 1');
    const seen = await page.evaluate(async () => {
      const { view } = globalThis.panel.structure;
      await new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
      const canvas = document.querySelector('.view canvas');
      const { data, width } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
      const count = { oxygen: 0, hydrogen: 0, others: 0, marked: 0 };
      for (let atom = 0; atom < 648; ++atom) {
        const [x, y] = view.placeOf(atom).map(Math.floor);
        if (view.atomAt(x, y) !== atom) continue;
        const [red, green, blue] = data.subarray(4 * (y * width + x));
        const kind = red > 1.8 * green ? 'oxygen' : blue > 0.9 * red ? 'hydrogen' : 'others';
        ++count[(kind === 'oxygen') === (atom % 3 === 0) ? kind : 'others'];
      }
      for (let k = 0; k < data.length; k += 4) if (data[k] > 90 && data[k + 1] > 0.8 * data[k] && data[k + 2] < 0.3 * data[k]) ++count.marked;
      return count;
    });
    assert(seen.oxygen > 60 && seen.hydrogen > 60, JSON.stringify(seen));
    assert(seen.others < 0.02 * (seen.oxygen + seen.hydrogen) && seen.marked > 5, JSON.stringify(seen));
  });

  it('draws with the pixels of a fine screen, in the same place', async () => {
    const fine = await openPage(browser, panel.address, { width: 1280, height: 800 }, 2);
    await fine.waitForFunction(() => globalThis.panel.structure.view.drawn > 0);
    const [pixels, shown, room] = await fine.evaluate(() => {
      const canvas = document.querySelector('.view canvas');
      return [canvas.width, canvas.clientWidth, canvas.parentElement.clientWidth];
    });
    await fine.context().close();
    assert.equal(shown, room);
    assert.equal(pixels, 2 * room);
  });

  it('watches a curve grow and stops it, keeping what is done', async () => {
    await runToEnd(page, 'MONITOR YES');
    // So many images that it takes longer than the stop takes to arrive.
    await runToEnd(page, 'RDF_CUTOFF 60');
    await page.evaluate(() => {
      globalThis.growth = 0;
      // Stopped by the page itself, however slow this machine is.
      globalThis.panel.link.onBulk(2, () => {
        if (++globalThis.growth === 1) document.getElementById('stop').click();
      });
    });
    await run(page, 'RDF');
    await page.waitForFunction(() => globalThis.growth >= 1);
    await page.waitForSelector('.lines li.interrupted:has-text("RDF")', { state: 'attached' });
    assert.ok(await page.locator('#cards .card h3').count() > 2);
    await runToEnd(page, 'RDF_CUTOFF 10');
  });

  it('saves plots as SVG, PNG and TSV', async () => {
    const signs = { SVG: '<svg', PNG: '\x89PNG', TSV: '\t' };
    for (const [format, sign] of Object.entries(signs)) {
      const [download] = await Promise.all([page.waitForEvent('download'), card(page, temperatures).locator(`button:text-is("${format}")`).click()]);
      assert.ok(readFileSync(await download.path(), 'latin1').includes(sign), format);
    }
  });

  it('zooms, pans and lays one plot over another', async () => {
    const range = () => page.evaluate((heading) => {
      const { plots } = globalThis.panel;
      const graph = [...plots.graphs.values()].find((each) => each.heading === heading);
      return [...plots.plots.get(graph.graph).x];
    }, temperatures);
    const whole = await range();
    await card(page, temperatures).locator('.plot').focus();
    await page.keyboard.press('+');
    const near = await range();
    assert.ok(near[1] - near[0] < whole[1] - whole[0]);
    await page.keyboard.press('ArrowRight');
    assert.ok((await range())[0] > near[0]);
    await page.keyboard.press('Home');
    await card(page, temperatures).locator('select').selectOption({ label: 'Profile of Pressure' });
    await card(page, temperatures).locator('.legend span:has-text("Pressure")').waitFor();
    await card(page, temperatures).locator('button:text-is("log x")').click();
  });

  it('completes words', async () => {
    await page.fill('#line', 'SELECT_PROP');
    await page.press('#line', 'Tab');
    await page.waitForFunction(() => document.querySelector('#line').value.startsWith('SELECT_PROPERTIES'));
    await page.fill('#line', '');
  });

  it('shows another page the same', async () => {
    const other = await openPage(browser, panel.address);
    await card(other, temperatures).waitFor();
    assert.deepEqual(await pointsOf(other, temperatures), await pointsOf(page, temperatures));
    assert.deepEqual(await position(other, 7), await position(page, 7));
    await runToEnd(other, 'CURRENT_FRAME_NUMBER 33');
    await page.waitForFunction(() => document.querySelector('[aria-label="Frame of the range"]').value === '33');
    await other.close();
  });

  it('runs a script from the list of files', async () => {
    await page.click('#tab-files');
    await page.click('.files button:has-text("first.script")');
    await card(page, 'Profile of Kinetic Energy').waitFor();
  });

  it('keeps to the start folder, and shows texts as texts', async () => {
    await runLine(page, 'TRAJECTORY /etc/passwd', 'outside of');
    await runLine(page, 'TRAJECTORY <b>bold</b>', '<b>bold</b>');
    assert.equal(await page.locator('#log b').count(), 0);
  });

  it('goes on with another pathstat where one is lost', async () => {
    const children = readFileSync(`/proc/${panel.process.pid}/task/${panel.process.pid}/children`, 'utf8').trim().split(/\s+/);
    for (const child of children) process.kill(Number(child), 'SIGKILL');
    await runLine(page, 'PROFILE', 'another one is started');
    await runToEnd(page, 'PROFILE');
    await page.waitForSelector('.lines li:last-child.done', { state: 'attached' });
  });

  it('saves a script that gives the same again', async () => {
    await page.click('#tab-history');
    await page.click('button:text-is("Save script")');
    await page.waitForSelector('#link:has-text("Saved as panel.script")');
    const out = path.join(folder, 'again');
    const again = spawnSync(pathdesk, ['run', 'panel.script', '--out', out], { cwd: folder, encoding: 'utf8' });
    assert.equal(again.status, 0, again.stderr);
    const name = readdirSync(out).find((each) => /temperature.*\.tsv$/i.test(each));
    const rows = readFileSync(path.join(out, name), 'utf8').trim().split('\n').map((line) => line.split('\t').map(Number)).filter(([x]) => Number.isFinite(x));
    const points = await pointsOf(page, temperatures);
    assert.deepEqual(rows.map(([, y]) => Math.fround(y)), points.y);
  });

  it('fits a screen of 1280 x 800 and has no serious fault of accessibility', async () => {
    assert.equal(await page.evaluate(() => document.documentElement.scrollHeight > innerHeight || document.documentElement.scrollWidth > innerWidth), false);
    await page.evaluate(readFileSync(path.join(source, 'web/node_modules/axe-core/axe.min.js'), 'utf8'));
    for (const tab of ['files', 'forms', 'history', 'tables', 'plots']) {
      await page.click(`#tab-${tab}`);
      const { violations } = await page.evaluate(() => globalThis.axe.run());
      const serious = violations.filter((each) => ['serious', 'critical'].includes(each.impact));
      assert.deepEqual(serious.map((each) => `${each.id}: ${each.nodes[0].html}`), []);
    }
    assert.deepEqual(page.faults, []);
  });
});

/** Runs a line that is refused or fails, and waits for what is said. */
async function runLine(page, line, said) {
  await run(page, line);
  await page.waitForFunction((text) => document.querySelector('#log').innerText.includes(text), said);
}
