import { Box3, Matrix3, Matrix4, PerspectiveCamera, Quaternion, Vector3 } from 'three';
import { TrackballControls } from 'three/addons/controls/TrackballControls.js';
import { colourOf } from './elements';
import { Colour, Paint, Raster } from './raster';

const bondRadius = 0.16;
const cellColour: Colour = [143, 163, 191];
/** How much of an image of the model fades away at least. */
const fadeOfImages = 0.55;
/** Steps of depth by which atoms are put in order: what is drawn from the front on hides most of the rest before it costs time. */
const depthSteps = 1024;
/** Screens finer than this are drawn with that many pixels to a unit. */
const finest = 2;

export interface Atoms {
  count: number;
  elements: Uint8Array;
  bonds: Uint32Array;
  symbols: string[];
  radii: number[];
}

type Vector = [number, number, number];
interface Look { paint: Paint; radius: number }
type Fading = (depth: number, least: number) => number;

/** The picture of one model in a canvas. */
export class MoleculeView {
  private readonly raster = new Raster(document.createElement('canvas'));
  private readonly camera = new PerspectiveCamera(30, 1, 0.1, 10000);
  private readonly controls: TrackballControls;
  private atoms: Atoms | null = null;
  private looks: Look[] = [];
  /** x, y, z of each atom. */
  private positions: Float32Array = new Float32Array(0);
  private selection: Uint8Array = new Uint8Array(0);
  /** Of each atom as it is drawn: place in pixels and depth. */
  private projected = new Float32Array(0);
  private order = new Uint32Array(0);
  private cell: Vector[] = [];
  private directions = 0;
  private cellMatrix = new Matrix3();
  private inverseCell = new Matrix3();
  /** 1 along vectors that the model repeats along. */
  private repeats: Vector = [0, 0, 0];
  private repeated: boolean[] = [false, false, false];
  private dirty = true;
  private awake = false;
  private framed = false;
  /** Of the sphere around the atoms. */
  private radius = 10;
  /** Pictures that were drawn, for whoever measures. */
  drawn = 0;
  images = false;
  spaceFilling = false;
  showCell = true;

  constructor(private readonly box: HTMLElement, private readonly clicked: (atom: number | null, adding: boolean) => void) {
    const { canvas } = this.raster;
    canvas.tabIndex = 0;
    canvas.setAttribute('role', 'img');
    canvas.setAttribute('aria-label', 'The structure. Drag turns it, the wheel brings it nearer, a click selects an atom; arrow keys turn it, + and - bring it nearer.');
    box.append(canvas);
    this.camera.position.set(0, 0, 50);
    this.controls = new TrackballControls(this.camera, canvas);
    this.controls.rotateSpeed = 3;
    this.controls.staticMoving = true;
    this.controls.addEventListener('change', () => (this.dirty = true));
    let down: [number, number] | null = null;
    canvas.addEventListener('pointerdown', (event) => (down = [event.clientX, event.clientY]));
    canvas.addEventListener('pointerup', (event) => {
      const still = down && Math.hypot(event.clientX - down[0], event.clientY - down[1]) < 4;
      if (still && event.button === 0) this.clicked(this.atomAt(event.offsetX, event.offsetY), event.shiftKey || event.ctrlKey);
    });
    canvas.addEventListener('keydown', (event) => this.key(event));
    new ResizeObserver(() => this.resize()).observe(box);
    this.resize();
    for (const event of ['pointerdown', 'pointermove', 'wheel']) canvas.addEventListener(event, () => this.wake(), { passive: true });
    this.redraw();
  }

  /** Has the structure drawn in the browser's next picture; to be called after images, spaceFilling or showCell have changed. */
  redraw(): void {
    this.dirty = true;
    this.wake();
  }

  /** Looks ahead of the next picture what there is to draw. While nothing moves none is asked for, which would cost the analysis time. */
  private wake(): void {
    if (this.awake) return;
    this.awake = true;
    requestAnimationFrame(() => {
      this.awake = false;
      this.controls.update();
      if (!this.dirty) return;
      this.dirty = false;
      this.draw();
      ++this.drawn;
    });
  }

  setAtoms(atoms: Atoms | null): void {
    const count = atoms?.count ?? 0;
    this.atoms = atoms;
    this.looks = atoms ? atoms.symbols.map((symbol, k) => ({ paint: new Paint(colourOf(symbol)), radius: (atoms.radii[k] || 1) * 1.1 + 0.15 })) : [];
    this.positions = new Float32Array(3 * count);
    if (this.selection.length !== count) this.selection = new Uint8Array(count);
    this.projected = new Float32Array(3 * count);
    this.order = new Uint32Array(count);
    this.framed = false;
    this.redraw();
  }

  /** Moves the atoms: x, y, z of each. */
  setPositions(xyz: Float32Array): void {
    if (!this.atoms || xyz.length !== this.positions.length) return;
    this.positions = xyz;
    this.redraw();
    if (!this.framed) this.frameAll();
  }

  /** x, y, z of an atom. */
  positionOf(atom: number): Vector {
    return [this.positions[3 * atom] as number, this.positions[3 * atom + 1] as number, this.positions[3 * atom + 2] as number];
  }

  setSelection(flags: Uint8Array): void {
    if (flags.length !== this.selection.length) return;
    this.selection = flags;
    this.redraw();
  }

  setCell(vectors: Vector[], directions: number): void {
    this.directions = directions;
    this.repeated = [directions === 3, directions >= 2, directions >= 1];
    this.repeats = this.repeated.map(Number) as Vector;
    this.cell = [0, 1, 2].map((k) => (this.repeated[k] && vectors[k]) || ([0, 1, 2].map((j) => (j === k ? 1 : 0)) as Vector));
    this.cellMatrix.fromArray(this.cell.flat());
    this.inverseCell.copy(this.cellMatrix).invert();
    this.redraw();
  }

  /** Brings everything into the picture. */
  frameAll(): void {
    if (!this.atoms) return;
    const bounds = new Box3();
    const point = new Vector3();
    for (let k = 0; k < this.atoms.count; ++k) bounds.expandByPoint(point.set(...this.positionOf(k)));
    const center = bounds.getCenter(new Vector3());
    const direction = new Vector3(0.35, 0.25, 1).normalize();
    const turn = new Quaternion().setFromRotationMatrix(new Matrix4().lookAt(direction, new Vector3(), new Vector3(0, 1, 0))).invert();
    const slope = Math.tan((this.camera.fov * Math.PI) / 360);
    const spread = this.images ? 3 : 1;
    // As near as leaves every atom in the picture.
    let away = 8;
    let radius = 3;
    for (let k = 0; k < this.atoms.count; ++k) {
      point.set(...this.positionOf(k)).sub(center).multiplyScalar(spread).applyQuaternion(turn);
      away = Math.max(away, point.z + (Math.abs(point.y) + 1.5) / slope, point.z + (Math.abs(point.x) + 1.5) / (slope * this.camera.aspect));
      radius = Math.max(radius, point.length());
    }
    this.radius = radius;
    this.controls.target.copy(center);
    this.camera.position.copy(center).addScaledVector(direction, away);
    this.camera.up.set(0, 1, 0);
    this.camera.near = away / 100;
    this.camera.far = away * 20;
    this.camera.updateProjectionMatrix();
    this.framed = true;
    this.redraw();
  }

  /** The translations of the cells that are drawn: the model's own first. */
  private offsets(): Vector[] {
    const offsets: Vector[] = [[0, 0, 0]];
    if (!this.images) return offsets;
    const range = [this.directions === 3, this.directions >= 2, this.directions >= 1].map((on) => (on ? [-1, 0, 1] : [0]));
    for (const i of range[0] as number[])
      for (const j of range[1] as number[])
        for (const k of range[2] as number[]) {
          if (i === 0 && j === 0 && k === 0) continue;
          const steps = [i, j, k];
          offsets.push([0, 1, 2].map((axis) => this.cell.reduce((sum, v, n) => sum + (steps[n] as number) * (v[axis] as number), 0)) as Vector);
        }
    return offsets;
  }

  /** Pixels that a length of 1 has at depth 1. */
  private get focal(): number {
    return (0.5 * this.raster.height) / Math.tan((this.camera.fov * Math.PI) / 360);
  }

  /** Half the size of a sphere of an element, in the units of the coordinates. */
  private radiusOf(look: Look): number {
    return look.radius * (this.spaceFilling ? 1.6 : 0.5);
  }

  private draw(): void {
    const { raster, camera } = this;
    raster.clear();
    camera.updateMatrixWorld();
    const middle = camera.position.distanceTo(this.controls.target);
    const faded: Fading = (depth, least) => Math.max(least, Math.min(Math.max((0.7 * (depth - middle + this.radius)) / (2 * this.radius), 0), 0.7) - 0.1, 0);
    for (const [k, offset] of this.offsets().entries()) {
      const view = new Matrix4().makeTranslation(...offset).premultiply(camera.matrixWorldInverse);
      const least = k === 0 ? 0 : fadeOfImages;
      this.drawAtoms(view, least, faded);
      if (!this.spaceFilling) this.drawBonds(view, least, faded);
    }
    if (this.showCell && this.directions > 0) this.drawCell(camera.matrixWorldInverse);
    raster.show();
  }

  private drawAtoms(view: Matrix4, least: number, faded: Fading): void {
    const { atoms, looks, raster, projected, selection, focal } = this;
    if (!atoms) return;
    this.project(view);
    for (const atom of this.nearestFirst()) {
      const depth = projected[3 * atom + 2] as number;
      const look = looks[atoms.elements[atom] as number];
      if (depth < this.camera.near || !look) continue;
      const mark = selection[atom] !== 0;
      const radius = this.radiusOf(look) * (mark ? 1.25 : 1);
      raster.sphere(projected[3 * atom] as number, projected[3 * atom + 1] as number, Math.max((radius * focal) / depth, 0.75), depth, radius, look.paint, faded(depth, least), mark);
    }
  }

  /** Where each atom stands in the picture. */
  private project(view: Matrix4): void {
    const { positions, projected, focal } = this;
    const e = view.elements;
    const [x0, y0] = [0.5 * this.raster.width, 0.5 * this.raster.height];
    for (let k = 0; k < positions.length; k += 3) {
      const x = positions[k] as number;
      const y = positions[k + 1] as number;
      const z = positions[k + 2] as number;
      const depth = -(e[2] * x + e[6] * y + e[10] * z + e[14]);
      projected[k] = x0 + (focal * (e[0] * x + e[4] * y + e[8] * z + e[12])) / depth;
      projected[k + 1] = y0 - (focal * (e[1] * x + e[5] * y + e[9] * z + e[13])) / depth;
      projected[k + 2] = depth;
    }
  }

  /** The atoms by their depths, in steps. */
  private nearestFirst(): Uint32Array {
    const { projected, order } = this;
    let [low, high] = [Infinity, -Infinity];
    for (let k = 2; k < projected.length; k += 3) {
      low = Math.min(low, projected[k] as number);
      high = Math.max(high, projected[k] as number);
    }
    const scale = (depthSteps - 1) / Math.max(high - low, 1e-6);
    const step = (atom: number) => ((projected[3 * atom + 2] as number) - low) * scale | 0;
    const starts = new Uint32Array(depthSteps + 1);
    for (let atom = 0; atom < order.length; ++atom) ++(starts[step(atom) + 1] as number);
    for (let k = 0; k < depthSteps; ++k) starts[k + 1] = (starts[k + 1] as number) + (starts[k] as number);
    for (let atom = 0; atom < order.length; ++atom) order[(starts[step(atom)] as number)++] = atom;
    return order;
  }

  /** A bond goes to the nearest image of its partner: from each of its atoms half of it, in that atom's colour. */
  private drawBonds(view: Matrix4, least: number, faded: Fading): void {
    const { atoms, looks } = this;
    if (!atoms) return;
    const start = new Vector3();
    const end = new Vector3();
    for (let k = 0; k < atoms.bonds.length; ++k) {
      const from = atoms.bonds[k] as number;
      start.fromArray(this.positions, 3 * from);
      this.shortest(end.fromArray(this.positions, 3 * (atoms.bonds[k ^ 1] as number)).sub(start));
      end.multiplyScalar(0.5).add(start);
      const colour = looks[atoms.elements[from] as number]?.paint.colour ?? cellColour;
      this.drawLine(start.applyMatrix4(view), end.applyMatrix4(view), bondRadius, colour, (depth) => faded(depth, least));
    }
  }

  /** Of all ways that differ by cells, the one between nearest images. */
  private shortest(way: Vector3): void {
    if (this.directions === 0) return;
    const cells = way.clone().applyMatrix3(this.inverseCell).round();
    way.sub(cells.multiply(new Vector3(...this.repeats)).applyMatrix3(this.cellMatrix));
  }

  /** A line between two places before the viewer, of a width there, or as thin as can be seen. */
  private drawLine(start: Vector3, end: Vector3, radius: number, colour: Colour, faded: (depth: number) => number): void {
    const near = -this.camera.near;
    if (start.z > near && end.z > near) return;
    if (start.z > near) start.lerp(end, (near - start.z) / (end.z - start.z));
    if (end.z > near) end.lerp(start, (near - end.z) / (start.z - end.z));
    const { raster, focal } = this;
    const place = ({ x, y, z }: Vector3) => [0.5 * raster.width - (focal * x) / z, 0.5 * raster.height + (focal * y) / z, -z] as const;
    const depth = -0.5 * (start.z + end.z);
    raster.stick(...place(start), ...place(end), (radius * focal) / depth, colour, faded(depth));
  }

  private drawCell(view: Matrix4): void {
    const corner = (bits: number) => {
      const at = new Vector3();
      this.cell.forEach((vector, k) => bits & (1 << k) && at.add(new Vector3(...vector)));
      return at.applyMatrix4(view);
    };
    for (let bits = 0; bits < 8; ++bits) {
      const within = this.repeated.every((repeats, k) => repeats || !(bits & (1 << k)));
      for (let k = 0; within && k < 3; ++k) {
        if (this.repeated[k] && !(bits & (1 << k))) this.drawLine(corner(bits), corner(bits | (1 << k)), 0, cellColour, () => 0);
      }
    }
  }

  private resize(): void {
    const { clientWidth: width, clientHeight: height } = this.box;
    if (width === 0 || height === 0) return;
    const fine = Math.min(window.devicePixelRatio, finest);
    this.raster.resize(Math.round(fine * width), Math.round(fine * height));
    this.camera.aspect = width / height;
    this.camera.updateProjectionMatrix();
    this.controls.handleResize();
    this.redraw();
  }

  private key(event: KeyboardEvent): void {
    const turn: Record<string, [number, number]> = { ArrowLeft: [0, -1], ArrowRight: [0, 1], ArrowUp: [-1, 0], ArrowDown: [1, 0] };
    const nearer: Record<string, number> = { '+': 0.9, '=': 0.9, '-': 1 / 0.9 };
    const eye = this.camera.position.clone().sub(this.controls.target);
    const turned = turn[event.key];
    const factor = nearer[event.key];
    if (turned) {
      const right = new Vector3().crossVectors(this.camera.up, eye).normalize();
      const rotation = new Quaternion().setFromAxisAngle(right, 0.12 * turned[0]);
      rotation.multiply(new Quaternion().setFromAxisAngle(this.camera.up.clone().normalize(), 0.12 * turned[1]));
      eye.applyQuaternion(rotation);
      this.camera.up.applyQuaternion(rotation);
    } else if (factor) {
      eye.multiplyScalar(factor);
    } else {
      return;
    }
    event.preventDefault();
    this.camera.position.copy(this.controls.target).add(eye);
    this.camera.lookAt(this.controls.target);
    this.redraw();
  }

  /** The atom in front at a place of the picture; null for none. */
  private atomAt(px: number, py: number): number | null {
    const { atoms, projected, looks } = this;
    if (!atoms) return null;
    const fine = this.prepare();
    let nearest: number | null = null;
    let front = Infinity;
    for (let k = 0; k < atoms.count; ++k) {
      const look = looks[atoms.elements[k] as number];
      const depth = projected[3 * k + 2] as number;
      if (!look || depth < this.camera.near || depth >= front) continue;
      // Small atoms are hit by a click beside them.
      const radius = Math.max((this.radiusOf(look) * this.focal) / depth, 4 * fine);
      if (Math.hypot((projected[3 * k] as number) - fine * px, (projected[3 * k + 1] as number) - fine * py) > radius) continue;
      nearest = k;
      front = depth;
    }
    return nearest;
  }

  /** Where an atom stands in the picture, in units of the page. */
  placeOf(atom: number): [number, number] {
    const fine = this.prepare();
    return [(this.projected[3 * atom] as number) / fine, (this.projected[3 * atom + 1] as number) / fine];
  }

  /** Projects the atoms of the model itself; returns the pixels to a unit of the page. */
  private prepare(): number {
    this.camera.updateMatrixWorld();
    this.project(this.camera.matrixWorldInverse);
    return this.raster.width / this.box.clientWidth;
  }
}
