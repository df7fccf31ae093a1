import assert from 'node:assert/strict';
import { mkdirSync, readFileSync, symlinkSync, writeFileSync } from 'node:fs';
import http from 'node:http';
import net from 'node:net';
import path from 'node:path';
import { after, before, describe, it } from 'node:test';
import { setTimeout as delay } from 'node:timers/promises';
import { folderWith, Panel } from './harness.mjs';

/** Status, headers and text of what comes back for a request with these headers. */
function ask(port, target, headers = {}, method = 'GET') {
  return new Promise((resolve, reject) => {
    const request = http.request({ host: '127.0.0.1', port, path: target, method, headers, agent: false }, (reply) => {
      let text = '';
      reply.on('data', (data) => (text += data));
      reply.on('end', () => resolve({ status: reply.statusCode, headers: reply.headers, text }));
    });
    request.on('upgrade', (reply, socket) => {
      socket.destroy();
      resolve({ status: reply.statusCode, headers: reply.headers, text: '' });
    });
    request.on('error', reject);
    request.end();
  });
}

const upgrade = { Connection: 'Upgrade', Upgrade: 'websocket', 'Sec-WebSocket-Version': '13', 'Sec-WebSocket-Key': 'dGhlIHNhbXBsZSBub25jZQ==' };

describe('access to the panel', () => {
  let panel, port, token, cookie, host, own;

  before(async () => {
    const folder = folderWith('argon');
    mkdirSync(path.join(folder, 'inner'));
    writeFileSync(path.join(folder, 'inner', 'note.txt'), 'a note');
    symlinkSync('/etc', path.join(folder, 'link'));
    panel = await Panel.start(folder);
    const url = new URL(panel.address);
    port = Number(url.port);
    token = url.searchParams.get('token');
    host = url.host;
    const first = await ask(port, `/?token=${token}`, { Host: host });
    cookie = first.headers['set-cookie'][0];
    own = { Host: host, Cookie: cookie.split(';')[0] };
  });
  after(() => panel.end());

  it('hands the token over as a cookie that scripts and other sites do not get', () => {
    assert.match(token, /^[0-9a-f]{64}$/);
    assert.match(cookie, /; HttpOnly/);
    assert.match(cookie, /; SameSite=Strict/);
  });

  it('listens on the loopback address alone', () => {
    const hex = port.toString(16).toUpperCase().padStart(4, '0');
    const listening = ['/proc/net/tcp', '/proc/net/tcp6'].flatMap((file) => readFileSync(file, 'utf8').split('\n'))
      .filter((line) => line.includes(`:${hex} `) && / 0A /.test(line)).map((line) => line.trim().split(/\s+/)[1]);
    assert.deepEqual(listening, [`0100007F:${hex}`]);
  });

  it('serves the page with a policy that lets nothing else in', async () => {
    const page = await ask(port, '/', own);
    assert.equal(page.status, 200);
    const policy = page.headers['content-security-policy'];
    assert.match(policy, /default-src 'none'/);
    assert.doesNotMatch(policy, /unsafe/);
    assert.doesNotMatch(page.text, /<script(?![^>]*src=)/);
    assert.doesNotMatch(page.text, /<style|style=|https?:/);
  });

  const refused = [
    ['no token', '/', () => ({ Host: host }), 403],
    ['a wrong token', `/?token=${'0'.repeat(64)}`, () => ({ Host: host }), 403],
    ['a token of another length', '/?token=0', () => ({ Host: host }), 403],
    ['a wrong cookie', '/', () => ({ Host: host, Cookie: `pathdesk_${port}=${'0'.repeat(64)}` }), 403],
    ['the token in another place than the first page', () => `/files?token=${token}`, () => ({ Host: host }), 403],
    ['a name that resolves to this machine', '/', () => ({ ...own, Host: `example.org:${port}` }), 403],
    ['another port in the host', '/', () => ({ ...own, Host: '127.0.0.1:1' }), 403],
    ['a foreign origin', '/', () => ({ ...own, Origin: 'http://example.org' }), 403],
    ['a web socket of a foreign origin', '/events', () => ({ ...own, ...upgrade, Origin: 'http://example.org' }), 403],
    ['a web socket of no origin', '/events', () => ({ ...own, ...upgrade }), 403],
    ['a web socket without the cookie', '/events', () => ({ Host: host, ...upgrade, Origin: `http://${host}` }), 403],
    ['a file of the machine', '/../../../../etc/passwd', () => own, 404],
  ];
  for (const [what, target, headers, status] of refused) {
    it(`refuses ${what}`, async () => {
      const reply = await ask(port, typeof target === 'function' ? target() : target, headers());
      assert.equal(reply.status, status);
      assert.doesNotMatch(reply.text, /root:/);
    });
  }

  it('opens a web socket for its own page', async () => {
    const reply = await ask(port, '/events', { ...own, ...upgrade, Origin: `http://${host}` });
    assert.equal(reply.status, 101);
  });

  it('takes no other method', async () => {
    assert.equal((await ask(port, '/', own, 'POST')).status, 405);
  });

  it('lists what lies below the start folder and nothing else', async () => {
    const names = async (folder) => {
      const reply = await ask(port, `/files?folder=${encodeURIComponent(folder)}`, own);
      return reply.status === 200 ? JSON.parse(reply.text).entries.map((entry) => entry.name) : reply.status;
    };
    assert.deepEqual(await names('inner'), ['note.txt']);
    assert.ok(!(await names('')).includes('link'), 'a link that leads outside is not listed');
    for (const outside of ['..', '/etc', 'link', 'none/../link', 'inner/../../', 'argon.trj']) assert.equal(await names(outside), 404);
  });

  it('lets the connections that came first give way to more than it has room for', async () => {
    const opened = 200;
    const room = 64;
    let closed = 0;
    let tell;
    const gaveWay = new Promise((resolve) => (tell = resolve));
    const idle = await Promise.all(Array.from({ length: opened }, () => new Promise((resolve, reject) => {
      const socket = net.connect(port, '127.0.0.1', () => resolve(socket));
      socket.on('close', () => (closed += 1) >= opened - room && tell(true)).on('error', reject);
      socket.resume();
    })));
    assert.equal((await ask(port, '/', own)).status, 200);
    // The word that a connection was closed arrives in its own time, behind the answer just read.
    assert.ok(await Promise.race([gaveWay, delay(10_000, false, { ref: false })]), `${closed} were closed`);
    for (const socket of idle) socket.destroy();
  });

  it('closes a web socket that sends too long a message', async () => {
    const socket = await new Promise((resolve, reject) => {
      const request = http.request({ host: '127.0.0.1', port, path: '/events', headers: { ...own, ...upgrade, Origin: `http://${host}` } });
      request.on('upgrade', (reply, opened) => resolve(opened));
      request.on('error', reject);
      request.end();
    });
    const length = 65 << 10;
    const head = Buffer.alloc(14);
    head[0] = 0x81; // a whole text message
    head[1] = 0x80 | 127; // masked, with a length of 64 bits
    head.writeBigUInt64BE(BigInt(length), 2);
    const closed = new Promise((resolve) => socket.on('close', resolve));
    socket.on('error', () => {});
    socket.resume();
    socket.write(Buffer.concat([head, Buffer.alloc(length, 'a')]));
    await closed;
    assert.equal((await ask(port, '/', own)).status, 200);
  });
});
