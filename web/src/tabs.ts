import { el } from './dom';

export interface Tab {
  id: string;
  text: string;
  content: HTMLElement;
}

/** Contents of which one is shown, chosen by a bar of tabs. */
export class Tabs {
  readonly bar = el('div', { role: 'tablist', className: 'tabs' });
  readonly panels: HTMLElement[];
  private readonly tabs: HTMLButtonElement[];

  constructor(rows: Tab[], label: string) {
    this.bar.setAttribute('aria-label', label);
    this.tabs = rows.map(({ id, text }, k) => {
      const tab = el('button', { type: 'button', role: 'tab', id: `tab-${id}`, aria: { controls: `panel-${id}` } }, text);
      tab.onclick = () => this.show(id);
      tab.onkeydown = (event) => {
        const step = event.key === 'ArrowRight' ? 1 : event.key === 'ArrowLeft' ? -1 : 0;
        const next = rows[(k + step + rows.length) % rows.length];
        if (step !== 0 && next) this.show(next.id, true);
      };
      return tab;
    });
    this.panels = rows.map(({ id, content }) =>
      el('div', { role: 'tabpanel', id: `panel-${id}`, className: 'tabpanel', aria: { labelledby: `tab-${id}` } }, content));
    this.bar.append(...this.tabs);
    if (rows[0]) this.show(rows[0].id);
  }

  show(id: string, focus = false): void {
    for (const [k, tab] of this.tabs.entries()) {
      const on = tab.id === `tab-${id}`;
      tab.setAttribute('aria-selected', String(on));
      tab.tabIndex = on ? 0 : -1;
      if (on && focus) tab.focus();
      const panel = this.panels[k];
      if (panel) panel.hidden = !on;
    }
  }

  rename(id: string, text: string): void {
    for (const tab of this.tabs) if (tab.id === `tab-${id}`) tab.textContent = text;
  }
}
