/** An element with properties and children. Texts become text nodes, never markup. */
export function el<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  properties: Partial<Omit<HTMLElementTagNameMap[K], 'style'>> & { data?: Record<string, string>; aria?: Record<string, string> } = {},
  ...children: (Node | string)[]
): HTMLElementTagNameMap[K] {
  const { data, aria, ...plain } = properties as Record<string, unknown>;
  const element = Object.assign(document.createElement(tag), plain);
  for (const [name, value] of Object.entries((data ?? {}) as Record<string, string>)) element.dataset[name] = value;
  for (const [name, value] of Object.entries((aria ?? {}) as Record<string, string>)) {
    element.setAttribute(`aria-${name}`, value);
  }
  element.append(...children);
  return element;
}

export function button(text: string, title: string, action: () => void): HTMLButtonElement {
  return el('button', { type: 'button', title, onclick: action }, text);
}

export function byId<T extends HTMLElement>(id: string): T {
  const found = document.getElementById(id);
  if (!found) throw new Error(`the page has no ${id}`);
  return found as T;
}

/** A text as one argument of a line: in marks where it has blanks or a comma in it. */
export function quoted(text: string): string {
  if (text !== '' && !/[\s"'{},#]/.test(text)) return text;
  return text.includes('"') ? `'${text}'` : `"${text}"`;
}
