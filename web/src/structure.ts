import { button, byId, el } from './dom';
import { Bodies, Bulk, Link, ModelBody } from './link';
import { MoleculeView } from './molecule';

const measureKinds = ['distance', 'angle', 'torsion'];
const stepsOfPlay = 1_000_000_000;

type Way = 'forwards' | 'backwards';

/** The structure with what can be done to it: selecting, measuring, stepping through the frames. */
export class StructurePane {
  readonly view: MoleculeView;
  private model: ModelBody | null = null;
  private elements = new Uint8Array(0);
  private words = new Uint32Array(0);
  private ids = new Int32Array(0);
  private residues = new Int32Array(0);
  private bonds = new Uint32Array(0);
  private clicked: number[] = [];
  private playing: Way | null = null;
  private selected = 0;
  private readonly box = el('div', { className: 'view' });
  private readonly title = el('span', { className: 'title' }, 'No model');
  private readonly picked = el('div', { className: 'picked', role: 'status' });
  private readonly frame = el('span', { id: 'frame', role: 'status' });
  private readonly measure = button('Measure', 'Measures between the 2, 3 or 4 atoms that were clicked', () => this.measureClicked());
  private readonly measures = el('ul', { className: 'measures', aria: { label: 'Measures' } });
  private readonly speed = el('input', { type: 'range', min: '0', max: '100', value: '100', title: 'Speed', aria: { label: 'Speed of stepping' } });
  private readonly atEnd = el('select', { title: 'What stepping does at an end of the range', aria: { label: 'At an end of the range' } });
  private readonly place = el('input', { type: 'number', min: '1', step: '1', title: 'Frame of the range', aria: { label: 'Frame of the range' } });

  constructor(private readonly link: Link) {
    const toggle = (name: 'images' | 'spaceFilling' | 'showCell', text: string, on: boolean) => {
      const check = el('input', { type: 'checkbox', checked: on });
      check.onchange = () => {
        this.view[name] = check.checked;
        this.view.redraw();
      };
      return el('label', {}, check, text);
    };
    const tools = el('div', { className: 'tools' }, this.title, toggle('showCell', 'Cell', true), toggle('images', 'Images', false),
      toggle('spaceFilling', 'Spheres', false), button('Fit', 'Brings everything into the picture', () => this.view.frameAll()), this.measure);
    const step = (way: Way, steps: number) => () => this.step(way, steps);
    const buttons: [string, string, () => void][] = [
      ['|‹', 'First frame', () => link.line('CURRENT_FRAME_NUMBER 1')],
      ['◀', 'Play backwards', step('backwards', stepsOfPlay)],
      ['‹', 'One frame back ( , )', step('backwards', 1)],
      ['■', 'Stop', () => link.send('stop')],
      ['›', 'One frame on ( . )', step('forwards', 1)],
      ['▶', 'Play (space)', step('forwards', stepsOfPlay)],
    ];
    const playback = el('div', { className: 'tools playback', role: 'group', aria: { label: 'Frames' } },
      ...buttons.map(([text, title, action]) => Object.assign(button(text, title, action), { ariaLabel: title })),
      this.place, this.speed, this.atEnd);
    this.view = new MoleculeView(this.box, (atom, adding) => this.clickOn(atom, adding));
    byId('structure').append(tools, el('div', { className: 'stage' }, this.box, this.picked, this.measures), this.frame, playback);
    this.box.addEventListener('keydown', (event) => this.key(event));
    this.speed.onchange = () => this.set(`FRAME_STEP_SPEED ${this.speed.value}`);
    this.atEnd.onchange = () => this.set(`FRAME_STEPPING_MODE "${this.atEnd.value}"`);
    this.place.onchange = () => link.line(`CURRENT_FRAME_NUMBER ${this.place.value}`);
    this.showPicked();
    this.listen();
  }

  forget(): void {
    this.clicked = [];
  }

  /** Words whose values this pane shows. */
  static readonly words = ['FRAME_STEP_SPEED', 'FRAME_STEPPING_MODE', 'CURRENT_FRAME_NUMBER', 'FIRST_FRAME_NO', 'LAST_FRAME_NO', 'INCREMENT_NO'];

  private listen(): void {
    const { link } = this;
    link.on('model', (body) => this.setModel(body));
    link.onBulk(Bulk.elements, ({ bytes }) => (this.elements = new Uint8Array(bytes)));
    link.onBulk(Bulk.bonds, ({ bytes }) => (this.bonds = new Uint32Array(bytes)));
    link.onBulk(Bulk.atomWords, ({ bytes }) => (this.words = new Uint32Array(bytes)));
    link.onBulk(Bulk.atomIds, ({ bytes }) => {
      // Number and residue number of each atom, in turn.
      const pairs = new Int32Array(bytes);
      this.ids = pairs.filter((_, k) => k % 2 === 0);
      this.residues = pairs.filter((_, k) => k % 2 === 1);
      const { model } = this;
      if (model) this.view.setAtoms({ count: model.atoms, elements: this.elements, bonds: this.bonds, symbols: model.symbols, radii: model.radii });
    });
    link.onBulk(Bulk.positions, ({ bytes }) => {
      this.view.setPositions(new Float32Array(bytes));
      if (this.clicked.length > 0) this.showPicked();
    });
    link.onBulk(Bulk.selection, ({ bytes }) => {
      const flags = new Uint8Array(bytes);
      this.view.setSelection(flags);
      this.selected = flags.reduce((sum, flag) => sum + flag, 0);
      this.showTitle();
    });
    link.on('cell', (body) => this.view.setCell(body.vectors, body.directions));
    link.on('measures', (body) => this.showMeasures(body));
    link.on('frame', (body) => (this.frame.textContent = body.text));
    link.on('values', (body) => this.takeValues(body));
    link.on('busy', ({ text }) => (this.playing = /^@step (\w+) \d+/.exec(text)?.[1] as Way | undefined ?? null));
  }

  private setModel(body: ModelBody): void {
    this.model = body.id === 0 ? null : body;
    this.clicked = [];
    if (!this.model) this.view.setAtoms(null);
    this.showTitle();
    this.showPicked();
  }

  private showTitle(): void {
    const { model } = this;
    this.title.textContent = model ? `${model.name}: ${model.atoms} atoms` + (this.selected ? `, ${this.selected} selected` : '') : 'No model';
  }

  private takeValues(body: Bodies['values']): void {
    const value = body.values[0]?.trim() ?? '';
    if (body.word === 'FRAME_STEP_SPEED') this.speed.value = value;
    if (body.word === 'CURRENT_FRAME_NUMBER') this.place.value = value;
    if (body.word === 'FRAME_STEPPING_MODE') {
      this.atEnd.replaceChildren(...body.ranges.map((range) => el('option', { value: range.trim() }, range.trim().toLowerCase())));
      this.atEnd.value = value;
    }
  }

  private step(way: Way, steps: number): void {
    this.link.line(`@step ${way}${steps === 1 ? '' : ` ${steps}`}`);
  }

  /** Sets something while frames may be playing: that ends the play, which goes on behind it. */
  private set(line: string): void {
    const { playing } = this;
    this.link.line(line);
    if (playing) this.step(playing, stepsOfPlay);
  }

  private key(event: KeyboardEvent): void {
    const actions: Record<string, () => void> = {
      ' ': () => (this.playing ? this.link.send('stop') : this.step('forwards', stepsOfPlay)),
      ',': () => this.step('backwards', 1),
      '.': () => this.step('forwards', 1),
    };
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  }

  private clickOn(atom: number | null, adding: boolean): void {
    if (atom === null) {
      this.clicked = [];
      this.link.line('@select atoms none');
    } else {
      const kept = adding ? this.clicked.filter((each) => each !== atom) : [];
      this.clicked = [...kept, atom];
      this.link.line(`@select atoms ids ${this.clicked.map((each) => this.ids[each]).join(',')}`);
    }
    this.showPicked();
  }

  private measureClicked(): void {
    const kind = measureKinds[this.clicked.length - 2];
    if (kind) this.link.line(`@measure ${kind} ${this.clicked.map((each) => this.ids[each]).join(' ')}`);
  }

  private showPicked(): void {
    const kind = measureKinds[this.clicked.length - 2];
    this.measure.disabled = kind === undefined;
    this.measure.textContent = kind === undefined ? 'Measure' : `Measure ${kind}`;
    const { model } = this;
    this.picked.replaceChildren(...(model ? this.clicked.slice(-4).map((atom) => el('div', {}, this.describe(model, atom))) : []));
  }

  private describe(model: ModelBody, atom: number): string {
    const word = (list: string[], k: number) => list[this.words[3 * atom + k] ?? 0] ?? '';
    const [x, y, z] = this.view.positionOf(atom).map((value) => value.toFixed(3));
    const element = model.symbols[this.elements[atom] ?? 0] ?? '';
    const residue = `${word(model.residues, 2)} ${this.residues[atom] ?? ''}`;
    return `atom ${this.ids[atom]}  ${word(model.names, 0)}  ${element}  ${word(model.ffTypes, 1)}  ${residue}  (${x}, ${y}, ${z}) Å`;
  }

  private showMeasures(body: Bodies['measures']): void {
    this.measures.replaceChildren(...body.list.map((each, k) =>
      el('li', {}, `${k + 1}  ${each.text} `, button('✕', `Remove measure ${k + 1}`, () => this.link.line(`@measure remove ${k + 1}`)))));
  }
}
