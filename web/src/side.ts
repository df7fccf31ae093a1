import { button, byId, el, quoted } from './dom';
import { Forms } from './forms';
import { Bodies, Link } from './link';
import { Tabs } from './tabs';

interface Entry {
  name: string;
  kind: 'folder' | 'trajectory' | 'model' | 'script' | 'file';
  bytes: number;
}

const size = (bytes: number) => {
  const units = ['B', 'kB', 'MB', 'GB', 'TB'];
  let power = 0;
  while (bytes >= 1000 && power < 4) {
    bytes /= 1000;
    ++power;
  }
  return `${bytes < 10 && power > 0 ? bytes.toFixed(1) : Math.round(bytes)} ${units[power]}`;
};

/** Files, the forms of all words, and what was done, each behind a tab. */
export class SidePane {
  private readonly files = el('div', { className: 'files' });
  private readonly lines = el('ol', { className: 'lines' });
  private readonly values = new Map<string, Bodies['values']>();
  private readonly forms: Forms;
  private readonly tabs: Tabs;
  private hasModel = false;
  private folder = '';
  private start = '';
  private script = 'panel.script';

  constructor(private readonly link: Link) {
    this.forms = new Forms(link, this.values);
    this.tabs = new Tabs([
      { id: 'files', text: 'Files', content: this.files },
      { id: 'forms', text: 'Analyse', content: this.forms.root },
      { id: 'history', text: 'History', content: el('div', { className: 'column' }, this.historyTools(), this.lines) },
    ], 'Files, analyses and history');
    byId('side').append(this.tabs.bar, ...this.tabs.panels);
    link.on('folder', (body) => {
      this.start = body.path;
      byId('folder').textContent = body.path;
      void this.list('');
    });
    link.on('words', (body) => this.forms.build(body));
    link.on('values', (body) => {
      this.values.set(body.word, body);
      this.forms.take(body);
    });
    link.on('line', (body) => this.takeLine(body));
    link.on('model', ({ id }) => this.takeModel(id));
    link.on('saved', (body) => this.saved(body));
  }

  forget(): void {
    this.lines.replaceChildren();
  }

  /** The settings that are in view. */
  watched(): string[] {
    return this.forms.watched();
  }

  /** The first model leads from the files to what can be done with it. */
  private takeModel(id: number): void {
    if (id === 0 || this.hasModel) return;
    this.hasModel = true;
    this.tabs.show('forms');
    this.forms.open('SELECT_PROPERTIES');
  }

  valueOf(word: string): number {
    return Number(this.values.get(word)?.values[0] ?? NaN);
  }

  // Files.

  private async list(folder: string): Promise<void> {
    const reply = await fetch(`/files?folder=${encodeURIComponent(folder)}`);
    if (!reply.ok) return;
    const body = (await reply.json()) as { entries: Entry[] };
    this.folder = folder;
    const items = body.entries.map((entry) => el('li', {}, this.fileButton(entry)));
    const up = folder === '' ? [] : [el('li', {}, button('../', 'The folder above', () => void this.list(folder.split('/').slice(0, -1).join('/'))))];
    this.files.replaceChildren(
      el('div', { className: 'tools' }, el('strong', {}, folder === '' ? this.start.split('/').at(-1) ?? '/' : folder),
        button('↻', 'Reads the folder again', () => void this.list(this.folder))),
      el('ul', {}, ...up, ...items));
  }

  private fileButton(entry: Entry): HTMLElement {
    const path = this.folder === '' ? entry.name : `${this.folder}/${entry.name}`;
    const text = entry.kind === 'folder' ? `${entry.name}/` : entry.name;
    const about = el('small', {}, entry.kind === 'folder' ? '' : size(entry.bytes));
    const actions: Partial<Record<Entry['kind'], [string, () => void]>> = {
      folder: ['Opens the folder', () => void this.list(path)],
      trajectory: ['Loads the trajectory', () => this.link.line(`TRAJECTORY ${quoted(path)}`)],
      script: ['Runs the lines of the script, with paths from the start folder', () => this.link.send('script', { path })],
    };
    const action = actions[entry.kind];
    if (!action) return el('span', {}, text, ' ', about);
    const open = button(text, action[0], action[1]);
    open.append(' ', about);
    return open;
  }

  // History.

  private historyTools(): HTMLElement {
    const name = el('input', { type: 'text', value: this.script, aria: { label: 'File name of the script' } });
    const form = el('form', { className: 'tools' }, name, el('button', { type: 'submit', title: 'Saves what was done as a script that pathdesk run repeats' }, 'Save script'));
    form.onsubmit = (event) => {
      event.preventDefault();
      this.script = name.value;
      this.link.send('save', { name: this.script });
    };
    return form;
  }

  private saved(body: Bodies['saved']): void {
    if (body.problem === 'exists') {
      if (confirm(`${body.name} exists. Replace it?`)) this.link.send('save', { name: body.name, replace: 'yes' });
      return;
    }
    const text = body.problem === '' ? `Saved as ${body.name}` : body.problem;
    byId('link').textContent = text;
    setTimeout(() => (byId('link').textContent = ''), 6000);
    void this.list(this.folder);
  }

  private takeLine(body: Bodies['line']): void {
    const id = `line-${body.number}`;
    let item = document.getElementById(id);
    if (!item) {
      item = el('li', { id });
      this.lines.append(item);
    }
    const seconds = body.seconds >= 0.1 ? ` ${body.seconds.toFixed(1)} s` : '';
    item.className = body.state;
    item.replaceChildren(button(body.text, 'Runs the line again', () => this.link.line(body.text)), el('small', {}, `${body.state}${seconds}`));
    if (body.state === 'failed') this.forms.restore();
    if (body.state !== 'runs') item.scrollIntoView({ block: 'nearest' });
  }
}
