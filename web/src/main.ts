import './style.css';
import { Console } from './console';
import { button, byId, el } from './dom';
import { Bodies, Link } from './link';
import { PlotsPane } from './plots';
import { SidePane } from './side';
import { StructurePane } from './structure';
import { Jump, placeInRange, TablesPane } from './tables';
import { Tabs } from './tabs';

// The token has become a cookie: it has no more business in the address.
history.replaceState(null, '', '/');

const link = new Link(
  (text) => (byId('link').textContent = text),
  () => {
    terminal.clear();
    side.forget();
    structure.forget();
    plots.forget();
    tables.clear();
    link.send('watch', { words: [...StructurePane.words, ...side.watched()] });
  },
);
const side = new SidePane(link);
const structure = new StructurePane(link);
const plots = new PlotsPane(link);
const tables = new TablesPane(link, jumpTo, (count) => results.rename('tables', count > 0 ? `Tables (${count})` : 'Tables'));
const results = new Tabs([
  { id: 'plots', text: 'Plots', content: plots.root },
  { id: 'tables', text: 'Tables', content: tables.root },
], 'Results');
byId('results').append(results.bar, ...results.panels);
const terminal = new Console(link);

/** Shows the frame that a row of a table leads to. */
function jumpTo({ frame, time }: Jump): void {
  if (frame === undefined) return link.line(`CURRENT_FRAME_TIME ${time}`);
  const place = placeInRange(frame, side.valueOf('FIRST_FRAME_NO'), side.valueOf('LAST_FRAME_NO'), side.valueOf('INCREMENT_NO'));
  if (place === null) byId('link').textContent = `Frame ${frame} is not in the range of frames`;
  else link.line(`CURRENT_FRAME_NUMBER ${place}`);
}

const stop = byId<HTMLButtonElement>('stop');
const progress = byId<HTMLProgressElement>('progress');
const activity = byId('activity');
stop.onclick = () => link.send('stop');

link.on('busy', ({ text, waiting }) => {
  stop.disabled = text === '';
  progress.hidden = text === '';
  activity.textContent = text === '' ? 'Ready' : text + (waiting > 0 ? ` (${waiting} more)` : '');
});
link.on('progress', ({ fraction }) => {
  // A bar without a value moves all the time, which costs a picture of the page sixty times a second.
  progress.value = fraction;
});

const question = byId<HTMLDialogElement>('question');
link.on('question', ({ id, text, choices, usual }: Bodies['question']) => {
  if (id === 0) return question.close();
  const answers = (choices ?? []).map((choice, k) =>
    Object.assign(button(choice, '', () => link.send('answer', { question: id, choice: k + 1 })), { autofocus: k + 1 === usual }));
  question.replaceChildren(el('p', {}, text ?? ''), el('div', { className: 'tools' }, ...answers));
  question.setAttribute('aria-label', 'Question');
  question.oncancel = (event) => event.preventDefault();
  if (!question.open) question.showModal();
});

document.addEventListener('keydown', (event) => {
  if (event.key === 'Escape' && !stop.disabled && !question.open) link.send('stop');
  if (event.key === '/' && !(event.target instanceof HTMLInputElement)) {
    event.preventDefault();
    terminal.focus();
  }
});

link.open();
terminal.focus();

/** What a test or a measurement looks at. */
Object.assign(globalThis, { panel: { structure, plots, link } });
