// Runs the tests one after the other. Without a browser there is nothing to run: exit code 77 says so to ctest.
import { existsSync } from 'node:fs';
import { cpus, loadavg } from 'node:os';
import path from 'node:path';
import { spawnSync } from 'node:child_process';

const browser = process.env.CHROMIUM ?? '/usr/bin/chromium';
if (!existsSync(browser)) {
  console.log(`skipped: there is no browser at ${browser}`);
  process.exit(77);
}
// A browser that draws without a graphics card takes minutes for a picture where many others want the processors too.
const load = loadavg()[0] / cpus().length;
if (load > 5) {
  console.log(`skipped: ${load.toFixed(1)} programs want each processor of this machine`);
  process.exit(77);
}
const file = (name) => path.join(import.meta.dirname ?? path.dirname(new URL(import.meta.url).pathname), name);
const result = spawnSync(process.execPath, ['--test', file('all.test.mjs')], { stdio: 'inherit' });
process.exit(result.status ?? 1);
