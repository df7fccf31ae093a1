/** What the program tells. The kinds of binary messages are those of panel_messages.h. */
export interface WordHelp {
  word: string;
  arguments: string;
  meaning: string;
  needs: string;
  form: 'none' | 'flag' | 'choice' | 'integer' | 'number' | 'path' | 'text' | 'names';
  most: number;
  setting: boolean;
  values: string[];
}
export interface Curve {
  set: number;
  label: string;
  colour: number;
  histogram: boolean;
  highlighted?: [number, number];
}
export interface GraphBody {
  graph: number;
  name: string;
  version: number;
  heading: string;
  x: string;
  y: string;
  range?: [number, number];
  curves: Curve[];
}
export interface ModelBody {
  id: number;
  name: string;
  atoms: number;
  bonds: number;
  names: string[];
  ffTypes: string[];
  residues: string[];
  symbols: string[];
  radii: number[];
}
export interface Bodies {
  words: { groups: { name: string; about: string; words: WordHelp[] }[]; lines: { name: string; usage: string; meaning: string }[] };
  folder: { path: string };
  log: { kind: 'entry' | 'result' | 'table' | 'complaint' | 'help'; text: string };
  line: { number: number; text: string; state: 'runs' | 'done' | 'failed' | 'interrupted' | 'lost'; seconds: number };
  busy: { text: string; waiting: number };
  progress: { fraction: number };
  status: { text: string };
  frame: { text: string };
  question: { id: number; text?: string; choices?: string[]; usual?: number };
  values: { word: string; values: string[]; ranges: string[] };
  model: ModelBody;
  cell: { directions: number; vectors: [number, number, number][] };
  measures: { list: { text: string; atoms: number[] }[] };
  graph: GraphBody;
  completion: { tag: number; begun: string; from: number; candidates: string[] };
  download: { path: string; name: string };
  saved: { name: string; problem: string };
  ended: object;
}

export enum Bulk {
  positions = 1,
  points = 2,
  elements = 3,
  bonds = 4,
  selection = 5,
  atomWords = 6,
  atomIds = 7,
}
export interface BulkMessage {
  kind: Bulk;
  handle: number;
  first: number;
  count: number;
  /** The elements, from their first byte on. */
  bytes: ArrayBuffer;
}

type Handler<T> = (body: T) => void;

/** The connection to the program: it comes back by itself, and is then told everything anew. */
export class Link {
  private socket: WebSocket | null = null;
  private handlers = new Map<string, Handler<never>[]>();
  private bulkHandlers = new Map<Bulk, Handler<BulkMessage>[]>();
  private ended = false;

  constructor(private readonly showState: (text: string) => void, private readonly beginAnew: () => void) {}

  on<K extends keyof Bodies>(type: K, handler: Handler<Bodies[K]>): void {
    this.handlers.set(type, [...(this.handlers.get(type) ?? []), handler as Handler<never>]);
  }

  onBulk(kind: Bulk, handler: Handler<BulkMessage>): void {
    this.bulkHandlers.set(kind, [...(this.bulkHandlers.get(kind) ?? []), handler]);
  }

  send(what: string, body: object = {}): void {
    if (this.socket?.readyState === WebSocket.OPEN) this.socket.send(JSON.stringify({ do: what, ...body }));
  }

  line(text: string): void {
    this.send('line', { text });
  }

  open(): void {
    const socket = new WebSocket(`ws://${location.host}/events`);
    socket.binaryType = 'arraybuffer';
    socket.onopen = () => {
      this.beginAnew();
      this.showState('');
    };
    socket.onmessage = (event: MessageEvent<string | ArrayBuffer>) => {
      if (typeof event.data === 'string') this.take(JSON.parse(event.data) as { type: string });
      else this.takeBulk(event.data);
    };
    socket.onclose = () => {
      this.socket = null;
      if (this.ended) return;
      this.showState('No connection to pathdesk');
      setTimeout(() => this.open(), 1000);
    };
    this.socket = socket;
  }

  private take(message: { type: string }): void {
    if (message.type === 'ended') {
      this.ended = true;
      this.showState('pathdesk panel has ended');
    }
    for (const handler of this.handlers.get(message.type) ?? []) (handler as Handler<unknown>)(message);
  }

  private takeBulk(data: ArrayBuffer): void {
    const [kind, handle, first, count] = new Uint32Array(data, 0, 4) as unknown as [number, number, number, number];
    for (const handler of this.bulkHandlers.get(kind) ?? []) handler({ kind, handle, first, count, bytes: data.slice(16) });
  }
}
