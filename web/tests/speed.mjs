// What the panel's speed is on this machine: node web/tests/speed.mjs [ATOMS]. docs/panel.md tells what was measured.
// The run that is shown is made with MDAnalysis and pathdesk import.
import { spawnSync } from 'node:child_process';
import { writeFileSync } from 'node:fs';
import path from 'node:path';
import { folderWith, openBrowser, openPage, Panel, pathdesk, run } from './harness.mjs';

const atoms = Number(process.argv[2] ?? 10000);
const frames = 200;
const seconds = 5;
const lineOfWork = 'RDF';
const repeats = 7;

const makeRun = `
import sys, warnings
warnings.simplefilter("ignore")
import MDAnalysis, numpy
atoms, frames = int(sys.argv[1]), int(sys.argv[2])
random = numpy.random.default_rng(1)
edge = (atoms / 0.1) ** (1 / 3)
places = random.uniform(0, edge, (atoms, 3))
universe = MDAnalysis.Universe.empty(atoms, trajectory=True)
universe.add_TopologyAttr("name", ["Ar"] * atoms)
universe.dimensions = [edge, edge, edge, 90, 90, 90]
universe.atoms.positions = places
universe.atoms.write("start.gro")
with MDAnalysis.Writer("run.dcd", atoms) as writer:
    for _ in range(frames):
        places += random.normal(0, 0.1, places.shape)
        universe.atoms.positions = places
        writer.write(universe.atoms)
`;

function must(program, words, folder) {
  const done = spawnSync(program, words, { cwd: folder, encoding: 'utf8' });
  if (done.status !== 0) throw new Error(done.stderr);
}

const median = (values) => [...values].sort((a, b) => a - b)[values.length >> 1];

/** Counts how far a counter of the page comes in a second. */
async function rate(page, counter) {
  const begin = await page.evaluate(counter);
  const start = performance.now();
  await page.waitForTimeout(1000 * seconds);
  const end = await page.evaluate(counter);
  return (end - begin) / ((performance.now() - start) / 1000);
}

/** The runs of the line that have ended, with the seconds of each, as pathdesk tells them to every page that opens. */
const runsDone = (page) => page.evaluate((text) => globalThis.lines.filter((line) => line.state === 'done' && line.text === text), lineOfWork);

const folder = folderWith();
must('/usr/bin/python3', ['-c', makeRun, String(atoms), String(frames)], folder);
must(pathdesk, ['import', 'start.gro', 'run.dcd', '--as-is', '-o', 'run'], folder);
writeFileSync(path.join(folder, 'work.script'), 'TRAJECTORY run.trj\nRDF_CUTOFF 9\n');

// The same line with nobody watching, and with a page that shows the curve as it grows, in turn: a machine is not always as quick.
const browser = await openBrowser();
const panel = await Panel.start(folder, 'work.script');
const context = await browser.newContext({ viewport: { width: 1280, height: 800 } });
await context.addInitScript(() => {
  globalThis.lines = [];
  const Socket = globalThis.WebSocket;
  globalThis.WebSocket = class extends Socket {
    constructor(...words) {
      super(...words);
      this.addEventListener('message', ({ data }) => {
        const body = typeof data === 'string' ? JSON.parse(data) : {};
        if (body.type === 'line') globalThis.lines.push(body);
      });
    }
  };
});
const page = await context.newPage();
await page.goto(panel.address);
await page.waitForTimeout(3000);
const alone = [];
const watched = [];
for (let k = 0; k < 2 * repeats; ++k) {
  const watches = k % 2 === 1;
  await run(page, lineOfWork);
  await page.waitForTimeout(100);
  if (!watches) {
    await page.goto('about:blank');
    await page.waitForTimeout(6000);
    await page.goto(panel.address);
  }
  await page.waitForFunction(([text, count]) => globalThis.lines.filter((line) => line.state === 'done' && line.text === text).length >= count, [lineOfWork, k + 1], { timeout: 120000 });
  (watches ? watched : alone).push((await runsDone(page)).at(-1).seconds);
  await page.waitForTimeout(500);
}
const least = (values) => Math.min(...values);
console.log(`${lineOfWork} of ${atoms} atoms: ${median(alone).toFixed(2)} s with no page, ${median(watched).toFixed(2)} s with a page, ratio ${(median(watched) / median(alone)).toFixed(3)}, of the shortest ${(least(watched) / least(alone)).toFixed(3)}`);

await run(page, 'FRAME_STEPPING_MODE "LOOP AT END"');
await run(page, 'FRAME_STEP_SPEED 100');
await run(page, '@step forwards 1000000');
await page.waitForTimeout(2000);
const stepping = await rate(page, () => globalThis.panel.structure.view.drawn);
console.log(`${atoms} atoms: ${stepping.toFixed(1)} frames a second`);
await page.evaluate(() => document.getElementById('stop').click());
await page.waitForSelector('#stop:disabled');

// A curve of 10^6 points in the place of the one that is there, moved in every picture.
const pictures = await page.evaluate(async (milliseconds) => {
  const { plots } = globalThis.panel;
  const graph = [...plots.graphs.values()][0];
  const set = plots.points(graph.curves[0].set);
  const count = 1000000;
  set.x = Float32Array.from({ length: count }, (_, k) => k / 1000);
  set.y = Float32Array.from({ length: count }, (_, k) => Math.sin(k / 5000) + Math.random());
  set.count = count;
  set.ascending = true;
  const drawn = plots.plots.get(graph.graph);
  drawn.showAll();
  const begin = drawn.pictures;
  const end = performance.now() + milliseconds;
  let way = 0.01;
  while (performance.now() < end) {
    drawn.pan(way);
    way = -way;
    await new Promise((resolve) => requestAnimationFrame(resolve));
  }
  return drawn.pictures - begin;
}, 1000 * seconds);
console.log(`a curve of 1,000,000 points: ${(pictures / seconds).toFixed(1)} pictures a second as it moves`);
await panel.end();
await browser.close();
