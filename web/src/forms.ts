import { button, el, quoted } from './dom';
import { Bodies, Link, WordHelp } from './link';

type Values = Bodies['values'];

/** What the arguments of a word are entered with. */
interface Field {
  root: HTMLElement;
  /** What a label stands for; none where the field is a group with a name of its own. */
  input?: HTMLElement;
  /** The arguments as they stand in the line. */
  text: () => string;
  /** Shows the values that are set and what they may be. */
  take?: (body: Values) => void;
}

/** Time after the last tick in a list before the line goes out. */
const settleTime = 500;

/**
 * The forms of all words, by what they are for. A setting goes out as soon as it is changed; a button runs what it
 * names.
 */
export class Forms {
  readonly root = el('div', { className: 'column' });
  private readonly search = el('input', { type: 'search', placeholder: 'Find a word or a topic', aria: { label: 'Find a command word' } });
  private readonly groups = el('div', { className: 'forms' });
  private readonly fields = new Map<string, (body: Values) => void>();
  private readonly settings = new Map<string, string[]>();
  private readonly unsent = new Map<string, () => void>();

  constructor(private readonly link: Link, private readonly values: ReadonlyMap<string, Values>) {
    this.root.append(this.search, this.groups);
    this.search.oninput = () => this.filter();
  }

  build(body: Bodies['words']): void {
    this.fields.clear();
    const open = this.openGroups();
    this.groups.replaceChildren(...body.groups.map((group) => this.group(group, open)));
  }

  take(body: Values): void {
    if (!this.unsent.has(body.word)) this.fields.get(body.word)?.(body);
  }

  /** Shows again what is set, where a line that was to set something has failed. */
  restore(): void {
    for (const [word, take] of this.fields) {
      const body = this.values.get(word);
      if (body && !this.unsent.has(word)) take(body);
    }
  }

  /** Opens the group that a word stands in. */
  open(word: string): void {
    const form = this.groups.querySelector<HTMLElement>(`[data-word="${word.toLowerCase()}"]`);
    const group = form?.closest('details');
    if (group) group.open = true;
  }

  /** The settings of the groups that are open: what this page wants to be told. */
  watched(): string[] {
    return [...this.openGroups()].flatMap((name) => this.settings.get(name) ?? []);
  }

  private openGroups(): Set<string> {
    return new Set([...this.groups.querySelectorAll('details')].filter((each) => each.open).map((each) => each.dataset.name ?? ''));
  }

  private group(group: Bodies['words']['groups'][number], open: Set<string>): HTMLElement {
    // What to work on, what to do, and how: in this order.
    const order = (word: WordHelp) => (isChecklist(word) ? 0 : word.form === 'none' ? 1 : word.setting ? 2 : 3);
    const words = [...group.words].sort((a, b) => order(a) - order(b));
    this.settings.set(group.name, words.filter((word) => word.setting).map((word) => word.word));
    const details = el('details', { open: open.has(group.name), data: { name: group.name, about: `${group.name} ${group.about}`.toLowerCase() } },
      el('summary', {}, group.name), ...words.map((word) => this.form(word)));
    details.ontoggle = () => {
      if (details.open) this.link.send('watch', { words: this.settings.get(group.name) ?? [] });
    };
    return details;
  }

  private form(word: WordHelp): HTMLElement {
    const needs = word.needs && `Needs: ${word.needs}`;
    const data = { word: word.word.toLowerCase(), about: word.meaning.toLowerCase() };
    const title = [word.word, word.meaning, needs].filter(Boolean).join('\n');
    const form = el('form', { className: word.setting ? 'word' : 'word action', title, data });
    form.onsubmit = (event) => event.preventDefault();
    if (word.form === 'none') {
      const run = el('button', { type: 'submit' }, word.word);
      form.append(run, el('small', {}, word.meaning));
      form.addEventListener('submit', () => this.run(word.word));
      return form;
    }
    const field = this.field(word, () => this.changed(word, field));
    if (field.input) field.input.id = `field-${word.word}`;
    const name = field.input ? el('label', { htmlFor: field.input.id }, word.word) : el('span', { className: 'name' }, word.word);
    form.append(name, field.root, el('small', {}, word.meaning));
    if (!word.setting) {
      form.append(el('button', { type: 'submit', aria: { label: `Run ${word.word}` } }, 'Run'));
      form.addEventListener('submit', () => this.run(`${word.word} ${field.text()}`.trim()));
    }
    if (word.arguments !== 'none' && !isChecklist(word)) form.append(el('small', { className: 'hint' }, word.arguments));
    if (field.take) this.fields.set(word.word, field.take);
    return form;
  }

  /** Runs a line, behind the settings that still wait to go out. */
  private run(line: string): void {
    for (const send of [...this.unsent.values()]) send();
    this.link.line(line);
  }

  private changed(word: WordHelp, field: Field): void {
    if (!word.setting) return;
    let timer = 0;
    const send = () => {
      clearTimeout(timer);
      if (this.unsent.get(word.word) !== send) return;
      this.unsent.delete(word.word);
      this.link.line(`${word.word} ${field.text()}`.trim());
    };
    this.unsent.set(word.word, send);
    if (isChecklist(word)) timer = window.setTimeout(send, settleTime);
    else send();
  }

  private field(word: WordHelp, changed: () => void): Field {
    if (word.form === 'flag') return flagField(changed);
    if (isChecklist(word)) return checklist(word, changed);
    if (word.form === 'names') return pairField(word, changed);
    if (word.form === 'choice') return choiceField(word, changed);
    const input = el('input', {
      type: 'text',
      inputMode: word.form === 'integer' || word.form === 'number' ? 'decimal' : 'text',
      autocomplete: 'off',
      spellcheck: false,
    });
    let typing = false;
    input.oninput = () => (typing = true);
    input.onchange = () => {
      typing = false;
      changed();
    };
    return {
      root: input,
      input,
      text: () => (word.form === 'path' ? quoted(input.value) : input.value),
      take: (body) => {
        input.title = body.ranges.join(', ');
        if (!typing) input.value = body.values.map((each) => each.trim()).join(' ');
      },
    };
  }

  private filter(): void {
    const wanted = this.search.value.trim().toLowerCase();
    for (const group of this.groups.querySelectorAll('details')) {
      const whole = group.dataset.about?.includes(wanted) ?? false;
      let shown = 0;
      for (const form of group.querySelectorAll<HTMLElement>('.word')) {
        form.hidden = !(whole || form.dataset.word?.includes(wanted.replaceAll(' ', '_')) || form.dataset.about?.includes(wanted));
        if (!form.hidden) ++shown;
      }
      group.hidden = shown === 0;
      if (wanted !== '' && shown > 0 && shown < 12) group.open = true;
    }
  }
}

const isChecklist = (word: WordHelp) => word.form === 'names' && word.most > 2;

function flagField(changed: () => void): Field {
  const input = el('input', { type: 'checkbox' });
  input.onchange = changed;
  return { root: input, input, text: () => (input.checked ? 'YES' : 'NO'), take: (body) => (input.checked = /^[TY1]/i.test(body.values[0]?.trim() ?? '')) };
}

function choiceField(word: WordHelp, changed: () => void): Field {
  const input = el('select', {});
  const fill = (ranges: string[], value: string) => {
    const items = itemsOf(ranges);
    input.replaceChildren(...items.map((item) => el('option', { value: item.text, disabled: item.missing, selected: item.text === value }, item.text)));
    if (!items.some((item) => item.text === value)) input.selectedIndex = word.setting ? -1 : 0;
  };
  fill(word.values, '');
  input.onchange = changed;
  return {
    root: input,
    input,
    text: () => quoted(input.value),
    take: (body) => fill(body.ranges.length > 0 ? body.ranges : word.values, body.values[0]?.trim() ?? ''),
  };
}

/** Two names out of one list. */
function pairField(word: WordHelp, changed: () => void): Field {
  const inputs = [1, 2].map((place) => el('select', { onchange: changed, aria: { label: `${word.word}, ${place === 1 ? 'first' : 'second'} name` } }));
  return {
    root: el('div', { className: 'pair' }, ...inputs),
    text: () => inputs.map((input) => quoted(input.value)).join(' '),
    take: (body) => {
      for (const [k, input] of inputs.entries()) {
        input.replaceChildren(...[...new Set(body.ranges.map((each) => each.trim()))].map((name) => el('option', { value: name }, name)));
        input.value = body.values[k]?.trim() ?? '';
      }
    },
  };
}

/** Boxes to tick, under their headings; those that cannot be had are grey. */
function checklist(word: WordHelp, changed: () => void): Field {
  const list = el('div', { className: 'checklist', role: 'group', aria: { label: word.meaning } });
  const ticked = () => [...list.querySelectorAll('input')].filter((box) => box.checked && !box.disabled);
  const row = (item: Item, set: Set<string>) => {
    if (item.heading) return el('div', { className: 'heading' }, item.text);
    const box = el('input', { type: 'checkbox', value: item.text, checked: set.has(item.text), disabled: item.missing });
    box.onchange = changed;
    return el('label', item.missing ? { className: 'missing', title: 'The file does not give it' } : {}, box, item.text);
  };
  const none = button('None', 'Takes all ticks away', () => {
    for (const box of ticked()) box.checked = false;
    changed();
  });
  return {
    root: el('div', {}, list, none),
    text: () => ticked().map((box) => quoted(box.value)).join(' '),
    take: (body) => {
      const set = new Set(body.values.map((each) => each.trim()));
      const items = itemsOf(body.ranges, true);
      const shown = [...list.querySelectorAll('input')];
      const names = items.filter((item) => !item.heading);
      // The same list again keeps its boxes, and with them the focus and the place.
      if (shown.length === names.length && names.every((item, k) => shown[k]?.value === item.text && shown[k]?.disabled === item.missing)) {
        for (const box of shown) box.checked = set.has(box.value);
      } else {
        list.replaceChildren(...items.map((item) => row(item, set)));
      }
    },
  };
}

interface Item {
  text: string;
  heading: boolean;
  missing: boolean;
}

/** The items of a range: between < and > stands what cannot be had. In a list with headings, items are set in. */
function itemsOf(ranges: string[], headed = false): Item[] {
  return ranges.map((range) => {
    const text = range.trim();
    const missing = text.startsWith('<') && text.endsWith('>');
    return { text: missing ? text.slice(1, -1).trim() : text, heading: headed && !range.startsWith(' '), missing };
  });
}
