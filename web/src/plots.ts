import uPlot from 'uplot';
import 'uplot/dist/uPlot.min.css';
import { decimate, lowerBound, yRange } from './decimate';
import { button, el, quoted } from './dom';
import { Bulk, Curve, GraphBody, Link } from './link';
import { PointSet } from './points';

/** Colours by number, those of the pictures that pathdesk draws, lighter where a dark ground asks for it. */
const palette = ['#e8e8e8', '#9a9a9a', '#c9a56b', '#4aa8e8', '#ff8a3c', '#2fcf9c', '#c58be0', '#ffc24a', '#e39cc4', '#7fc8f2', '#c98c5a', '#a58cf0', '#cfd23a', '#4fcfcf', '#f06a9c', '#86a8e0'];
const dashes = [[], [8, 4], [2, 3], [8, 3, 2, 3], [12, 5]];
const markColour = '#ffd91a';
const clickReach = 12;
const ink = '#aab6c6';

type Range = [number, number];

interface Drawn {
  curve: Curve;
  graph: GraphBody;
  points: PointSet;
  colour: string;
  dash: number[];
}

const number = (value: number) => Number(value.toPrecision(7)).toString();

/** One plot: the curves of a graph, and those of others that are laid over it. */
class Plot {
  readonly root: HTMLElement;
  private readonly heading = el('h3', {});
  private readonly legend = el('div', { className: 'legend' });
  private readonly box = el('div', { className: 'plot' });
  private readonly readout = el('span', { className: 'readout' });
  private readonly overlay = el('select', { title: 'Lays another graph over this one', aria: { label: 'Overlay' } });
  private plot: uPlot | null = null;
  private overlays: number[] = [];
  private log = { x: false, y: false };
  private x: Range = [0, 1];
  private y: Range = [0, 1];
  private zoomed = false;
  private zoomedY = false;
  private waits = false;
  /** Pictures that were drawn, for whoever measures. */
  pictures = 0;

  constructor(private graph: GraphBody, private readonly pane: PlotsPane) {
    const toggle = (axis: 'x' | 'y') => {
      const flip = button(`log ${axis}`, `Logarithmic ${axis} axis`, () => {
        this.log[axis] = !this.log[axis];
        flip.setAttribute('aria-pressed', String(this.log[axis]));
        this.showAll();
        this.build();
      });
      flip.setAttribute('aria-pressed', 'false');
      return flip;
    };
    const save = (format: string) => button(format.toUpperCase(), `Saves the graph as ${format.toUpperCase()}`, () => this.save(format));
    this.overlay.onchange = () => {
      const chosen = Number(this.overlay.value);
      this.overlays = chosen === 0 ? [] : [...this.overlays.filter((each) => each !== chosen), chosen];
      this.pane.showChoices();
      this.showAll();
      this.build();
    };
    this.root = el('article', { className: 'card' },
      el('div', { className: 'top' }, this.heading, this.legend), this.box,
      el('div', { className: 'tools' }, this.readout, toggle('x'), toggle('y'), this.overlay,
        button('All', 'Shows the whole curve (double click)', () => this.showAll()), save('svg'), save('png'), save('tsv')));
    new ResizeObserver(() => this.resize()).observe(this.box);
    this.box.tabIndex = 0;
    this.box.setAttribute('role', 'group');
    this.box.addEventListener('keydown', (event) => this.key(event));
    this.setGraph(graph);
  }

  setGraph(graph: GraphBody): void {
    const changed = !this.plot || graph.x !== this.graph.x || graph.y !== this.graph.y;
    this.graph = graph;
    this.heading.textContent = graph.heading;
    this.box.setAttribute('aria-label', `${graph.heading}. Arrow keys move it, + and - zoom, Home shows all of it, a click on a point shows its frame.`);
    if (changed) this.build();
    this.showLegend();
    this.redraw();
  }

  /** Has what is shown drawn as a picture, or written as a table. */
  private save(format: string): void {
    const range = this.zoomed ? { range: this.x } : {};
    this.pane.link.send('export', { graphs: [this.graph.graph, ...this.overlays], format, ...range });
  }

  uses(set: number): boolean {
    return this.curves().some((each) => each.curve.set === set);
  }

  showChoices(graphs: GraphBody[]): void {
    const others = graphs.filter((each) => each.graph !== this.graph.graph);
    this.overlay.replaceChildren(el('option', { value: '0' }, this.overlays.length ? 'no overlay' : 'overlay…'),
      ...others.map((each) => el('option', { value: String(each.graph) }, each.heading)));
  }

  redraw(): void {
    if (this.waits) return;
    this.waits = true;
    requestAnimationFrame(() => {
      this.waits = false;
      this.update();
    });
  }

  private curves(): Drawn[] {
    const uses = new Map<number, number>();
    const graphs = [this.graph, ...this.overlays.map((each) => this.pane.graphs.get(each)).filter((each) => each !== undefined)];
    return graphs.flatMap((graph) => graph.curves.map((curve) => {
      const colour = Math.abs(curve.colour) % palette.length;
      const used = uses.get(colour) ?? 0;
      uses.set(colour, used + 1);
      return { curve, graph, points: this.pane.points(curve.set), colour: palette[colour] as string, dash: dashes[used % dashes.length] as number[] };
    }));
  }

  private showLegend(): void {
    const items = this.curves();
    this.legend.replaceChildren(...(items.length < 2 ? [] : items.map(({ curve, graph, colour, dash }) => {
      const text = graph === this.graph ? curve.label : `${graph.heading} ${curve.label}`;
      return el('span', {}, sample(colour, dash), text.trim() || graph.heading);
    })));
  }

  private build(): void {
    this.plot?.destroy();
    const axis = (label: string): uPlot.Axis => ({ label, stroke: ink, grid: { stroke: '#263040', width: 1 }, ticks: { stroke: '#39475a' }, font: '11px sans-serif', labelFont: '12px sans-serif', labelSize: 18, size: 34 });
    const scale = (log: boolean): uPlot.Scale => ({ time: false, auto: false, distr: log ? 3 : 1 });
    this.fit();
    this.plot = new uPlot({
      width: Math.max(this.box.clientWidth, 50),
      height: Math.max(this.box.clientHeight, 50),
      legend: { show: false },
      cursor: { drag: { x: false, y: false }, points: { show: false } },
      scales: { x: { ...scale(this.log.x), min: this.x[0], max: this.x[1] }, y: { ...scale(this.log.y), min: this.y[0], max: this.y[1] } },
      axes: [{ ...axis(this.graph.x), size: 30 }, { ...axis(this.graph.y), size: 58 }],
      series: [{}, { show: true, paths: () => null, points: { show: false } }],
      hooks: { draw: [(plot) => this.draw(plot)] },
    }, [[...this.x], [...this.y]], this.box);
    this.listen(this.plot.over);
    this.update();
  }

  /** Sets the ranges that were not chosen to what the curves take. */
  private fit(): void {
    const curves = this.curves();
    if (!this.zoomed) {
      let range: Range | null = this.graph.range ?? null;
      if (!range) for (const { points } of curves) range = joined(range, this.extent(points, 'x'));
      this.x = sane(range, this.log.x);
    }
    if (!this.zoomedY) {
      let range: Range | null = null;
      for (const { points } of curves) range = joined(range, this.extent(points, 'y'));
      this.y = padded(sane(range, this.log.y), this.log.y);
    }
  }

  private extent(points: PointSet, axis: 'x' | 'y'): Range | null {
    const positive = this.log[axis];
    const { count } = points;
    if (axis === 'x' && points.ascending && !positive) {
      return count > 0 ? [points.x[0] as number, points.x[count - 1] as number] : null;
    }
    if (axis === 'y' && points.ascending && !positive) return yRange(points.x, points.y, count, this.x[0], this.x[1]);
    let range: Range | null = null;
    for (let k = 0; k < count; ++k) {
      const value = points[axis][k] as number;
      if (Number.isFinite(value) && (!positive || value > 0)) range = joined(range, [value, value]);
    }
    return range;
  }

  private update(): void {
    const { plot } = this;
    if (!plot) return;
    this.fit();
    plot.batch(() => {
      plot.setScale('x', { min: this.x[0], max: this.x[1] });
      plot.setScale('y', { min: this.y[0], max: this.y[1] });
    });
  }

  private draw(plot: uPlot): void {
    ++this.pictures;
    const { ctx, bbox } = plot;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    const at = (x: number, y: number): [number, number] => [plot.valToPos(x, 'x', true), plot.valToPos(y, 'y', true)];
    for (const { curve, points, colour, dash } of this.curves()) {
      ctx.strokeStyle = ctx.fillStyle = colour;
      ctx.lineWidth = 1.5 * devicePixelRatio;
      ctx.setLineDash(dash.map((length) => length * devicePixelRatio));
      this.trace(ctx, points, curve.histogram, bbox.width, at);
      ctx.setLineDash([]);
      if (curve.highlighted) mark(ctx, at(...curve.highlighted), bbox);
    }
    ctx.restore();
  }

  private trace(ctx: CanvasRenderingContext2D, points: PointSet, histogram: boolean, width: number, at: (x: number, y: number) => [number, number]): void {
    const shown = points.ascending && !histogram && !this.log.x
      ? decimate(points.x, points.y, points.count, this.x[0], this.x[1], Math.max(Math.round(width), 1))
      : { x: points.x.subarray(0, points.count), y: points.y.subarray(0, points.count) };
    const count = shown.x.length;
    ctx.beginPath();
    let pen = false;
    for (let k = 0; k < count; ++k) {
      const x = shown.x[k] as number;
      const y = shown.y[k] as number;
      const drawable = Number.isFinite(x) && Number.isFinite(y) && (!this.log.x || x > 0) && (!this.log.y || y > 0);
      if (drawable && histogram) {
        const half = 0.5 * ((shown.x[Math.min(k + 1, count - 1)] as number) - (shown.x[Math.max(k, 1) - (k + 1 < count ? 0 : 1)] as number));
        const [left, top] = at(x - half, y);
        if (pen) ctx.lineTo(left, top);
        else ctx.moveTo(left, top);
        ctx.lineTo(...at(x + half, y));
      } else if (drawable && pen) {
        ctx.lineTo(...at(x, y));
      } else if (drawable) {
        ctx.moveTo(...at(x, y));
      }
      pen = drawable;
    }
    ctx.stroke();
    if (count === 1 && pen) {
      ctx.beginPath();
      ctx.arc(...at(shown.x[0] as number, shown.y[0] as number), 3 * devicePixelRatio, 0, 2 * Math.PI);
      ctx.fill();
    }
  }

  /** The point nearest to a place of the picture, in CSS pixels. */
  private nearest(left: number, top: number, reach: number): { drawn: Drawn; k: number } | null {
    const { plot } = this;
    if (!plot) return null;
    let found: { drawn: Drawn; k: number } | null = null;
    let best = reach * reach;
    const low = plot.posToVal(left - reach, 'x');
    const high = plot.posToVal(left + reach, 'x');
    for (const drawn of this.curves()) {
      const { points } = drawn;
      const begin = points.ascending ? lowerBound(points.x, points.count, low) : 0;
      const end = points.ascending ? lowerBound(points.x, points.count, high) : points.count;
      for (let k = begin; k < end; ++k) {
        const dx = plot.valToPos(points.x[k] as number, 'x') - left;
        const dy = plot.valToPos(points.y[k] as number, 'y') - top;
        if (dx * dx + dy * dy <= best) {
          best = dx * dx + dy * dy;
          found = { drawn, k };
        }
      }
    }
    return found;
  }

  private listen(over: HTMLElement): void {
    let from: { x: number; y: number; ranges: [Range, Range]; moved: boolean } | null = null;
    over.onpointerdown = (event) => {
      if (event.button !== 0) return;
      over.setPointerCapture(event.pointerId);
      from = { x: event.clientX, y: event.clientY, ranges: [[...this.x], [...this.y]], moved: false };
    };
    over.onpointermove = (event) => {
      if (!from) return this.tell(event.offsetX, event.offsetY);
      const dx = event.clientX - from.x;
      const dy = event.clientY - from.y;
      if (Math.abs(dx) + Math.abs(dy) > 3) from.moved = true;
      if (!from.moved) return;
      this.x = moved(from.ranges[0], -dx / over.clientWidth, this.log.x);
      this.zoomed = true;
      if (Math.abs(dy) > 8 || this.zoomedY) {
        this.y = moved(from.ranges[1], dy / over.clientHeight, this.log.y);
        this.zoomedY = true;
      }
      this.redraw();
    };
    over.onpointerup = (event) => {
      const still = from && !from.moved;
      from = null;
      const hit = still ? this.nearest(event.offsetX, event.offsetY, clickReach) : null;
      if (hit) this.pick(hit.drawn, hit.k);
    };
    over.ondblclick = () => this.showAll();
    over.onwheel = (event) => {
      event.preventDefault();
      const factor = Math.exp(Math.sign(event.deltaY) * 0.18);
      if (event.shiftKey) this.zoomY(factor, 1 - event.offsetY / over.clientHeight);
      else this.zoomX(factor, event.offsetX / over.clientWidth);
    };
  }

  private pick({ graph, points }: Drawn, k: number): void {
    this.pane.link.line(`@pick ${quoted(graph.name.trim())} ${points.x[k]} ${points.y[k]}`);
  }

  private tell(left: number, top: number): void {
    const hit = this.nearest(left, top, 30);
    this.readout.textContent = hit ? `${number(hit.drawn.points.x[hit.k] as number)}, ${number(hit.drawn.points.y[hit.k] as number)} ${hit.drawn.curve.label}` : '';
  }

  private zoomX(factor: number, at: number): void {
    this.x = zoomed(this.x, factor, at, this.log.x);
    this.zoomed = true;
    this.redraw();
  }

  private zoomY(factor: number, at: number): void {
    this.y = zoomed(this.y, factor, at, this.log.y);
    this.zoomedY = true;
    this.redraw();
  }

  /** Moves the picture by a share of its width. */
  pan(share: number): void {
    this.x = moved(this.x, share, this.log.x);
    this.zoomed = true;
    this.redraw();
  }

  private showAll(): void {
    this.zoomed = this.zoomedY = false;
    this.showLegend();
    this.redraw();
  }

  private key(event: KeyboardEvent): void {
    const actions: Record<string, () => void> = {
      ArrowLeft: () => this.pan(-0.1),
      ArrowRight: () => this.pan(0.1),
      '+': () => this.zoomX(0.8, 0.5),
      '=': () => this.zoomX(0.8, 0.5),
      '-': () => this.zoomX(1.25, 0.5),
      Home: () => this.showAll(),
    };
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  }

  private resize(): void {
    const { clientWidth: width, clientHeight: height } = this.box;
    if (width > 0 && height > 0) this.plot?.setSize({ width, height });
  }
}

/** A short piece of a line as a curve is drawn. */
function sample(colour: string, dash: number[]): HTMLCanvasElement {
  const canvas = el('canvas', { width: 22, height: 8 });
  const ctx = canvas.getContext('2d');
  if (!ctx) return canvas;
  ctx.strokeStyle = colour;
  ctx.lineWidth = 2;
  ctx.setLineDash(dash);
  ctx.beginPath();
  ctx.moveTo(0, 4);
  ctx.lineTo(22, 4);
  ctx.stroke();
  return canvas;
}

function mark(ctx: CanvasRenderingContext2D, [x, y]: [number, number], box: { top: number; height: number }): void {
  ctx.strokeStyle = markColour;
  ctx.lineWidth = devicePixelRatio;
  ctx.beginPath();
  ctx.moveTo(x, box.top);
  ctx.lineTo(x, box.top + box.height);
  ctx.stroke();
  ctx.lineWidth = 2 * devicePixelRatio;
  ctx.beginPath();
  ctx.arc(x, y, 5 * devicePixelRatio, 0, 2 * Math.PI);
  ctx.stroke();
}

function joined(a: Range | null, b: Range | null): Range | null {
  if (!a || !b) return a ?? b;
  return [Math.min(a[0], b[0]), Math.max(a[1], b[1])];
}

function sane(range: Range | null, log: boolean): Range {
  if (!range || !Number.isFinite(range[0] + range[1]) || (log && range[0] <= 0)) return log ? [0.1, 1] : [0, 1];
  if (range[0] < range[1]) return range;
  return log ? [range[0] / 2, range[0] * 2] : [range[0] - 0.5, range[1] + 0.5];
}

const toLog = (range: Range, log: boolean): Range => (log ? [Math.log(range[0]), Math.log(range[1])] : range);
const fromLog = (range: Range, log: boolean): Range => (log ? [Math.exp(range[0]), Math.exp(range[1])] : range);

function padded(range: Range, log: boolean): Range {
  const [low, high] = toLog(range, log);
  const pad = 0.05 * (high - low);
  return fromLog([low - pad, high + pad], log);
}

function moved(range: Range, share: number, log: boolean): Range {
  const [low, high] = toLog(range, log);
  const way = share * (high - low);
  return fromLog([low + way, high + way], log);
}

function zoomed(range: Range, factor: number, at: number, log: boolean): Range {
  const [low, high] = toLog(range, log);
  const middle = low + at * (high - low);
  return fromLog([middle - (middle - low) * factor, middle + (high - middle) * factor], log);
}

/** All plots, the latest in view. */
export class PlotsPane {
  readonly graphs = new Map<number, GraphBody>();
  readonly plots = new Map<number, Plot>();
  private readonly sets = new Map<number, PointSet>();
  private readonly list = el('div', { id: 'cards' });
  private readonly none = el('p', { className: 'none' }, 'Plots come up here as analyses run; a click on a point shows its frame.');
  readonly root = el('div', { className: 'cards' }, this.none, this.list);

  constructor(readonly link: Link) {
    link.on('graph', (body) => this.take(body));
    link.onBulk(Bulk.points, (message) => {
      this.points(message.handle).take(message);
      for (const plot of this.plots.values()) if (plot.uses(message.handle)) plot.redraw();
    });
    link.on('download', (body) => {
      const anchor = el('a', { href: body.path, download: body.name });
      document.body.append(anchor);
      anchor.click();
      anchor.remove();
    });
  }

  forget(): void {
    this.graphs.clear();
    this.sets.clear();
  }

  points(set: number): PointSet {
    let points = this.sets.get(set);
    if (!points) this.sets.set(set, (points = new PointSet()));
    return points;
  }

  private take(body: GraphBody): void {
    const isNew = !this.graphs.has(body.graph);
    this.graphs.set(body.graph, body);
    this.none.hidden = true;
    const known = this.plots.get(body.graph);
    if (known) {
      known.setGraph(body);
    } else {
      const plot = new Plot(body, this);
      this.plots.set(body.graph, plot);
      this.list.prepend(plot.root);
    }
    if (isNew) this.showChoices();
  }

  /** Offers every plot the others to lay over it. */
  showChoices(): void {
    for (const plot of this.plots.values()) plot.showChoices([...this.graphs.values()]);
  }
}
