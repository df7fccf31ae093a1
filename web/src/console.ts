import { byId, el } from './dom';
import { Bodies, Link } from './link';

const mostLines = 2000;

/** The log of what was done and said, and the line that takes every word. */
export class Console {
  private readonly log = el('div', { id: 'log', tabIndex: 0, role: 'log', aria: { label: 'What was done and said' } });
  private readonly input = el('input', {
    id: 'line',
    type: 'text',
    autocomplete: 'off',
    spellcheck: false,
    placeholder: 'a command word, or a line that begins with @; help lists them, Tab completes',
    aria: { label: 'Command line' },
  });
  private readonly choices = el('div', { id: 'choices', role: 'status', aria: { live: 'polite' } });
  private readonly past: string[] = [];
  private place = 0;
  private tag = 0;

  constructor(private readonly link: Link) {
    const form = el('form', {}, el('span', { ariaHidden: 'true' } as never, '›'), this.input);
    byId('console').append(this.log, this.choices, form);
    form.onsubmit = (event) => {
      event.preventDefault();
      this.enter(this.input.value);
      this.input.value = '';
    };
    this.input.onkeydown = (event) => this.key(event);
    this.input.onpaste = (event) => this.paste(event);
    link.on('log', (body) => this.show(body));
    link.on('completion', (body) => this.complete(body));
  }

  clear(): void {
    this.log.replaceChildren();
  }

  focus(): void {
    this.input.focus();
  }

  private enter(text: string): void {
    this.choices.textContent = '';
    if (text.trim() === '') return;
    if (this.past.at(-1) !== text) this.past.push(text);
    this.place = this.past.length;
    this.link.line(text);
  }

  /** Lines that are pasted together run one after the other. */
  private paste(event: ClipboardEvent): void {
    const lines = (event.clipboardData?.getData('text') ?? '').split(/\r?\n/);
    if (lines.length < 2) return;
    event.preventDefault();
    const last = lines.pop() ?? '';
    for (const [k, line] of lines.entries()) this.enter(k === 0 ? this.input.value + line : line);
    this.input.value = last;
  }

  private key(event: KeyboardEvent): void {
    const step = event.key === 'ArrowUp' ? -1 : event.key === 'ArrowDown' ? 1 : 0;
    if (step !== 0) {
      event.preventDefault();
      this.place = Math.min(Math.max(this.place + step, 0), this.past.length);
      this.input.value = this.past[this.place] ?? '';
    } else if (event.key === 'Tab' && !event.shiftKey && this.input.value.trim() !== '') {
      event.preventDefault();
      const end = this.input.selectionStart ?? this.input.value.length;
      this.link.send('complete', { before: this.input.value.slice(0, end), tag: ++this.tag });
    }
  }

  private complete(body: Bodies['completion']): void {
    if (body.tag !== this.tag) return;
    const { candidates } = body;
    const only = candidates.length === 1 ? candidates[0] : undefined;
    const shared = only ?? commonStart(candidates);
    if (shared.length >= body.begun.length && shared !== '') {
      const blank = /\s/.test(shared);
      const open = only !== undefined && !only.endsWith('/');
      // What is open stays open, so that more can be typed behind it.
      const text = (blank ? '"' : '') + shared + (open ? (blank ? '"' : '') + ' ' : '');
      this.input.value = this.input.value.slice(0, bytesToPlace(this.input.value, body.from)) + text;
    }
    this.choices.textContent = candidates.length > 1 ? candidates.slice(0, 60).join('   ') : '';
  }

  private show(body: Bodies['log']): void {
    const atEnd = this.log.scrollHeight - this.log.scrollTop - this.log.clientHeight < 40;
    const block = el('div', { className: `said ${body.kind}` }, body.text);
    this.log.append(block);
    while (this.log.childElementCount > mostLines) this.log.firstElementChild?.remove();
    if (atEnd || body.kind === 'entry') this.log.scrollTop = this.log.scrollHeight;
  }
}

function commonStart(texts: string[]): string {
  let shared = texts[0] ?? '';
  for (const text of texts) while (!text.startsWith(shared)) shared = shared.slice(0, -1);
  return shared;
}

/** The place in a text that lies behind so many bytes of its UTF-8 form. */
function bytesToPlace(text: string, bytes: number): number {
  const start = new TextEncoder().encode(text).slice(0, bytes);
  return new TextDecoder().decode(start).length;
}
