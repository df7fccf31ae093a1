import { button, byId, el, quoted } from './dom';
import { Bodies, Link, WordHelp } from './link';

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

/** Files, the forms of all words, and what was done. */
export class SidePane {
  private readonly files = el('div', { className: 'files' });
  private readonly forms = el('div', { className: 'forms' });
  private readonly lines = el('ol', { className: 'lines' });
  private readonly search = el('input', { type: 'search', placeholder: 'Find a word', aria: { label: 'Find a command word' } });
  private readonly values = new Map<string, Bodies['values']>();
  private readonly fields = new Map<string, (body: Bodies['values']) => void>();
  private folder = '';
  private start = '';
  private script = 'panel.script';

  constructor(private readonly link: Link) {
    const tabs: [string, string, HTMLElement][] = [
      ['files', 'Files', this.files],
      ['forms', 'Commands', el('div', { className: 'column' }, this.search, this.forms)],
      ['history', 'History', el('div', { className: 'column' }, this.historyTools(), this.lines)],
    ];
    const bar = el('div', { role: 'tablist', className: 'tabs' });
    const panels = tabs.map(([id, text, content]) => {
      const tab = el('button', { type: 'button', role: 'tab', id: `tab-${id}`, aria: { controls: `panel-${id}` } }, text);
      tab.onclick = () => this.show(id);
      tab.onkeydown = (event) => {
        const step = event.key === 'ArrowRight' ? 1 : event.key === 'ArrowLeft' ? -1 : 0;
        if (step === 0) return;
        const names = tabs.map(([name]) => name);
        this.show(names[(names.indexOf(id) + step + names.length) % names.length] as string, true);
      };
      bar.append(tab);
      return el('div', { role: 'tabpanel', id: `panel-${id}`, className: 'tabpanel', aria: { labelledby: `tab-${id}` } }, content);
    });
    byId('side').append(bar, ...panels);
    this.search.oninput = () => this.filter();
    this.show('files');
    link.on('folder', (body) => {
      this.start = body.path;
      byId('folder').textContent = body.path;
      void this.list('');
    });
    link.on('words', (body) => this.buildForms(body));
    link.on('values', (body) => {
      this.values.set(body.word, body);
      this.fields.get(body.word)?.(body);
    });
    link.on('line', (body) => this.takeLine(body));
    link.on('saved', (body) => this.saved(body));
  }

  forget(): void {
    this.lines.replaceChildren();
  }

  valueOf(word: string): number {
    return Number(this.values.get(word)?.values[0] ?? NaN);
  }

  private show(id: string, focus = false): void {
    for (const tab of document.querySelectorAll<HTMLElement>('#side [role=tab]')) {
      const on = tab.id === `tab-${id}`;
      tab.setAttribute('aria-selected', String(on));
      tab.tabIndex = on ? 0 : -1;
      if (on && focus) tab.focus();
    }
    for (const panel of document.querySelectorAll<HTMLElement>('#side .tabpanel')) panel.hidden = panel.id !== `panel-${id}`;
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
    };
    const action = actions[entry.kind];
    if (!action) return el('span', {}, text, ' ', about);
    const open = button(text, action[0], action[1]);
    open.append(' ', about);
    return open;
  }

  // Forms.

  private buildForms(body: Bodies['words']): void {
    this.fields.clear();
    this.forms.replaceChildren(...body.groups.map((group) => {
      const details = el('details', { data: { about: `${group.name} ${group.about}`.toLowerCase() } }, el('summary', {}, group.name),
        ...group.words.map((word) => this.form(word)));
      details.ontoggle = () => {
        if (details.open) this.link.send('watch', { words: group.words.filter((word) => word.setting).map((word) => word.word) });
      };
      return details;
    }));
  }

  private form(word: WordHelp): HTMLElement {
    const title = [word.meaning, word.arguments === 'none' ? '' : word.arguments, word.needs && `Needs: ${word.needs}`].filter(Boolean).join('\n');
    const form = el('form', { className: 'word', title, data: { word: word.word.toLowerCase(), about: word.meaning.toLowerCase() } });
    if (word.form === 'none') {
      form.append(el('button', { type: 'submit' }, word.word), el('small', {}, word.meaning));
      form.onsubmit = (event) => this.submit(event, word.word);
      return form;
    }
    const field = this.field(word);
    const id = `field-${word.word}`;
    field.input.id = id;
    form.append(el('label', { htmlFor: id }, word.word), field.input, el('button', { type: 'submit', aria: { label: `Run ${word.word}` } }, word.setting ? 'Set' : 'Run'),
      el('small', {}, word.meaning));
    form.onsubmit = (event) => this.submit(event, `${word.word} ${field.text()}`.trim());
    // A choice is made by choosing; what is typed is sent by Enter or the button.
    if (word.setting && field.input instanceof HTMLSelectElement && !field.input.multiple) field.input.onchange = () => form.requestSubmit();
    if (field.take) this.fields.set(word.word, field.take);
    return form;
  }

  private submit(event: Event, line: string): void {
    event.preventDefault();
    this.link.line(line);
  }

  /** What the value of a word is entered with, how it stands in the line, and how it shows the value that is set. */
  private field(word: WordHelp): { input: HTMLElement & { id: string }; text: () => string; take?: (body: Bodies['values']) => void } {
    const chosen = word.form === 'flag' || word.form === 'choice' || word.form === 'names';
    if (chosen) {
      const several = word.form === 'names' && word.most > 1;
      const select = el('select', { multiple: several, size: several ? 8 : 0 });
      const fill = (ranges: string[], values: string[]) => {
        const set = new Set(values.map((each) => each.trim()));
        select.replaceChildren(...options(ranges, set));
      };
      fill(word.values, []);
      return {
        input: select,
        text: () => [...select.selectedOptions].map((option) => quoted(option.value)).join(' '),
        take: (body) => fill(body.ranges.length > 0 ? body.ranges : word.values, body.values),
      };
    }
    const numeric = word.form === 'integer' || word.form === 'number';
    const input = el('input', { type: 'text', inputMode: numeric ? 'decimal' : 'text', placeholder: word.arguments, autocomplete: 'off' });
    return {
      input,
      text: () => (word.form === 'path' ? quoted(input.value) : input.value),
      take: (body) => {
        if (document.activeElement !== input) input.value = body.values.map((each) => each.trim()).join(' ');
      },
    };
  }

  private filter(): void {
    const wanted = this.search.value.trim().toLowerCase();
    for (const group of this.forms.querySelectorAll('details')) {
      const whole = group.dataset.about?.includes(wanted) ?? false;
      let shown = 0;
      for (const form of group.querySelectorAll<HTMLElement>('.word')) {
        form.hidden = !(whole || form.dataset.word?.includes(wanted) || form.dataset.about?.includes(wanted));
        if (!form.hidden) ++shown;
      }
      group.hidden = shown === 0;
      if (wanted !== '' && shown > 0 && shown < 12) group.open = true;
    }
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
    if (body.state !== 'runs') item.scrollIntoView({ block: 'nearest' });
  }
}

/**
 * Options from the items of a range: those that are set in belong under the heading above them, and those between
 * < and > cannot be had yet.
 */
function options(ranges: string[], set: Set<string>): (HTMLOptionElement | HTMLOptGroupElement)[] {
  const headed = ranges.some((item) => item.startsWith(' ')) && ranges.some((item) => !item.startsWith(' '));
  const all: (HTMLOptionElement | HTMLOptGroupElement)[] = [];
  let group: HTMLOptGroupElement | null = null;
  for (const item of ranges) {
    const text = item.trim();
    if (headed && !item.startsWith(' ')) {
      group = el('optgroup', { label: text.replace(/^<|>$/g, '') });
      all.push(group);
      continue;
    }
    const missing = text.startsWith('<') && text.endsWith('>');
    const option = el('option', { value: text, disabled: missing, selected: set.has(text) }, missing ? text.slice(1, -1) : text);
    if (group) group.append(option);
    else all.push(option);
  }
  return all;
}
