import { el } from './dom';
import { Bodies, Link } from './link';

/** A row leads to a frame by its number in the file, or by its time. */
export interface Jump {
  frame?: number;
  time?: number;
}

interface Table {
  title: string;
  columns: string[];
  rows: string[][];
}

/** Words whose tables have the times of frames in them; the TIME of other tables is a lag. */
const overFrames = new Set(['PROFILE', 'RUNNING_AVERAGE', 'BLOCK_AVERAGE', 'RUNNING_AVERAGE_FLUCTUATIONS', 'BLOCK_AVERAGE_FLUCTUATIONS']);

const isNumber = (text: string) => text !== '' && Number.isFinite(Number(text));
const cells = (line: string) => line.trim().split(/\s+/);
const headings = (line: string) => line.trim().split(/\s{2,}/);

/** The tables in a text: a line of headings, and under it lines of as many numbers. */
export function tablesIn(text: string): Table[] {
  const lines = text.split('\n');
  const tables: Table[] = [];
  let title: string[] = [];
  for (let k = 0; k < lines.length; ++k) {
    const columns = headings(lines[k] ?? '');
    const rows: string[][] = [];
    for (let j = k + 1; columns.length > 1 && j < lines.length; ++j) {
      const row = cells(lines[j] ?? '');
      if (row.length !== columns.length || !row.every(isNumber)) break;
      rows.push(row);
    }
    if (rows.length > 0) {
      tables.push({ title: title.join(' · '), columns, rows });
      title = title.slice(0, -1);
      k += rows.length;
    } else if ((lines[k] ?? '').trim() !== '') {
      title.push((lines[k] ?? '').trim());
    }
  }
  return tables;
}

/** Where a row leads. */
export function jumpOf(table: Table, row: string[], word: string): Jump | null {
  const column = (name: string) => table.columns.findIndex((each) => each.toLowerCase().startsWith(name));
  const frame = row[column('frame')];
  if (frame !== undefined) return { frame: Number(frame) };
  const time = overFrames.has(word) ? row[column('time')] : undefined;
  return time === undefined ? null : { time: Number(time) };
}

/** The place of a frame of the file in the range; null where the range leaves it out. */
export function placeInRange(frame: number, first: number, last: number, increment: number): number | null {
  const place = (frame - first) / increment + 1;
  return frame >= first && frame <= last && Number.isInteger(place) ? place : null;
}

/** Rankings and statistics, the latest first. */
export class TablesPane {
  private static readonly mostTables = 40;
  /** More rows than this are in the console and in the files of the run. */
  private static readonly mostRows = 2000;
  private readonly list = el('div', { id: 'tables' });
  readonly root = el('div', {}, el('p', { className: 'none' }, 'Rankings and statistics come up here; a click on a row shows its frame.'), this.list);
  private word = '';
  private texts: string[] = [];
  private timer = 0;

  constructor(link: Link, private readonly goTo: (jump: Jump) => void, private readonly changed: (count: number) => void) {
    link.on('log', (body) => this.take(body));
  }

  clear(): void {
    this.texts = [];
    this.list.replaceChildren();
    this.changed(0);
  }

  private take({ kind, text }: Bodies['log']): void {
    if (kind === 'entry') {
      this.flush();
      this.word = text.trim().split(/\s+/)[0] ?? '';
    }
    if (kind !== 'table' && kind !== 'result') return;
    // What one line tells may come in many texts.
    this.texts.push(text);
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => this.flush(), 100);
  }

  private flush(): void {
    const tables = tablesIn(this.texts.join('\n'));
    this.texts = [];
    for (const table of tables) this.list.prepend(this.card(table, this.word));
    while (this.list.childElementCount > TablesPane.mostTables) this.list.lastElementChild?.remove();
    if (tables.length > 0) this.changed(this.list.childElementCount);
  }

  private card(table: Table, word: string): HTMLElement {
    const head = el('tr', {}, ...table.columns.map((name) => el('th', { scope: 'col' }, name)), el('th', { scope: 'col' }, ''));
    const rows = table.rows.slice(0, TablesPane.mostRows).map((row) => this.row(row, jumpOf(table, row, word)));
    const caption = el('caption', {}, table.title || word);
    return el('article', { className: 'card' }, el('div', { className: 'scroll', tabIndex: 0, role: 'region', aria: { label: table.title || word } },
      el('table', {}, caption, el('thead', {}, head), el('tbody', {}, ...rows))));
  }

  private row(row: string[], jump: Jump | null): HTMLElement {
    const line = el('tr', {}, ...row.map((cell) => el('td', {}, cell)));
    if (!jump) return line;
    const text = jump.frame !== undefined ? `Show frame ${jump.frame}` : `Show the frame at ${jump.time} ps`;
    // A click on the button is one on its row.
    line.append(el('td', {}, el('button', { type: 'button', title: text, aria: { label: text } }, '→')));
    line.onclick = () => this.goTo(jump);
    line.className = 'leads';
    return line;
  }
}
