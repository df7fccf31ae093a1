import * as THREE from 'three';
import { TrackballControls } from 'three/addons/controls/TrackballControls.js';
import { colourOf } from './elements';

/*
 * Positions lie in one texture that each frame writes anew; atoms and bonds are drawn from places in it, so that no
 * geometry changes from frame to frame. An atom is one point whose fragments are shaded as a sphere; a bond is two
 * quads that face the viewer and are shaded as a cylinder, each from one of its atoms to the middle, in that atom's
 * colour. A bond goes to the nearest image of its partner.
 */

const textureWidth = 1024;
const selectedColour = 'vec3(1.0, 0.85, 0.1)';

/** What is far from the viewer fades into the ground, so that the picture has depth. */
const depthCue = `
  uniform vec2 depths;  // of the nearest and the farthest atom
  uniform float fade;   // of images
  float fading(float depth) {
    return max(fade, 0.7 * clamp((depth - depths.x) / (depths.y - depths.x), 0.0, 1.0) - 0.1);
  }`;

const fetchPosition = `
  uniform highp sampler2D positions;
  vec3 positionOf(uint place) {
    return texelFetch(positions, ivec2(int(place % ${textureWidth}u), int(place / ${textureWidth}u)), 0).xyz;
  }`;

const atomVertex = `
  precision highp float;
  ${fetchPosition}
  uniform mat4 modelViewMatrix, projectionMatrix;
  uniform float pixels, scale;
  uniform vec3 offset;
  in uint place;
  in vec4 look;     // colour, radius
  in float marked;  // 1: selected
  out vec3 colour;
  out float selected;
  out float faded;
  ${depthCue}
  void main() {
    vec4 eye = modelViewMatrix * vec4(positionOf(place) + offset, 1.0);
    gl_Position = projectionMatrix * eye;
    gl_PointSize = max(look.w * scale * (1.0 + 0.25 * marked) * pixels / gl_Position.w, 1.5);
    colour = look.rgb;
    selected = marked;
    faded = fading(-eye.z);
  }`;

const atomFragment = `
  precision mediump float;
  in vec3 colour;
  in float selected;
  in float faded;
  out vec4 result;
  void main() {
    vec2 p = 2.0 * gl_PointCoord - 1.0;
    float r2 = dot(p, p);
    if (r2 > 1.0) discard;
    float z = sqrt(1.0 - r2);
    float light = 0.35 + 0.65 * max(dot(vec3(p.x, -p.y, z), vec3(-0.4, 0.5, 0.77)), 0.0);
    float gloss = max(dot(vec3(p.x, -p.y, z), vec3(-0.25, 0.32, 0.91)), 0.0);
    gloss *= gloss;
    gloss *= gloss;
    gloss *= gloss;
    gloss *= gloss * gloss * gloss * gloss;  // to the power of 40: without a graphics card, pow takes long
    vec3 shade = mix(colour, ${selectedColour}, selected * step(0.55, r2));
    result = vec4(mix(shade * light + 0.35 * gloss, vec3(0.07, 0.09, 0.12), faded), 1.0);
  }`;

const bondVertex = `
  precision highp float;
  ${fetchPosition}
  uniform mat4 modelViewMatrix, projectionMatrix;
  uniform mat3 cell, inverseCell;
  uniform vec3 repeats;  // 1 along vectors that the model repeats along
  uniform vec3 offset;
  uniform float width;
  in vec3 position;      // a corner: side -1 or 1, end 0 or 1
  in uvec2 pair;
  in vec3 look;
  out vec3 colour;
  out float side;
  out float faded;
  ${depthCue}
  void main() {
    vec3 start = positionOf(pair.x);
    vec3 way = positionOf(pair.y) - start;
    way -= cell * (repeats * round(inverseCell * way));
    vec4 a = modelViewMatrix * vec4(start + offset, 1.0);
    vec4 b = modelViewMatrix * vec4(start + offset + 0.5 * way, 1.0);
    vec4 at = position.y < 0.5 ? a : b;
    vec2 along = b.xy - a.xy;
    float size = length(along);
    vec2 across = size > 1e-6 ? vec2(-along.y, along.x) / size : vec2(0.0);
    at.xy += across * position.x * width;
    gl_Position = projectionMatrix * at;
    colour = look;
    side = position.x;
    faded = fading(-at.z);
  }`;

const bondFragment = `
  precision mediump float;
  in vec3 colour;
  in float side;
  in float faded;
  out vec4 result;
  void main() {
    result = vec4(mix(colour * (0.3 + 0.7 * sqrt(1.0 - side * side)), vec3(0.07, 0.09, 0.12), faded), 1.0);
  }`;

export interface Atoms {
  count: number;
  elements: Uint8Array;
  bonds: Uint32Array;
  symbols: string[];
  radii: number[];
}

type Vector = [number, number, number];

/** The picture of one model in a canvas. */
export class MoleculeView {
  private readonly renderer: THREE.WebGLRenderer;
  private readonly scene = new THREE.Scene();
  private readonly camera = new THREE.PerspectiveCamera(30, 1, 0.1, 10000);
  private readonly controls: TrackballControls;
  private atoms: Atoms | null = null;
  private texture: THREE.DataTexture | null = null;
  private positions = new Float32Array(0);
  private selection: THREE.InstancedBufferAttribute | THREE.BufferAttribute | null = null;
  private pieces = new THREE.Group();
  private cellLines: THREE.LineSegments<THREE.BufferGeometry, THREE.LineBasicMaterial> | null = null;
  private cell: Vector[] = [];
  private directions = 0;
  private readonly shared = {
    positions: { value: null as THREE.DataTexture | null },
    pixels: { value: 1 },
    scale: { value: 0.5 },
    width: { value: 0.16 },
    cell: { value: new THREE.Matrix3() },
    inverseCell: { value: new THREE.Matrix3() },
    repeats: { value: new THREE.Vector3() },
    depths: { value: new THREE.Vector2(0, 1) },
  };
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
    this.renderer = new THREE.WebGLRenderer({ antialias: false, powerPreference: 'high-performance' });
    this.renderer.setClearColor(0x12171f);
    const canvas = this.renderer.domElement;
    canvas.tabIndex = 0;
    canvas.setAttribute('role', 'img');
    canvas.setAttribute('aria-label', 'The structure. Drag turns it, the wheel brings it nearer, a click selects an atom; arrow keys turn it, + and - bring it nearer.');
    box.append(canvas);
    this.scene.add(this.pieces);
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

  /** Has the structure drawn in the browser's next picture. */
  private redraw(): void {
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
      const depth = this.camera.position.distanceTo(this.controls.target);
      this.shared.depths.value.set(depth - this.radius, depth + this.radius);
      this.renderer.render(this.scene, this.camera);
      ++this.drawn;
    });
  }

  setAtoms(atoms: Atoms | null): void {
    this.atoms = atoms;
    this.texture?.dispose();
    this.texture = null;
    if (atoms) {
      const rows = Math.max(Math.ceil(atoms.count / textureWidth), 1);
      this.positions = new Float32Array(4 * textureWidth * rows);
      this.texture = new THREE.DataTexture(this.positions, textureWidth, rows, THREE.RGBAFormat, THREE.FloatType);
    }
    this.shared.positions.value = this.texture;
    this.framed = false;
    this.rebuild();
  }

  /** Moves the atoms: x, y, z of each. */
  setPositions(xyz: Float32Array): void {
    if (!this.atoms || !this.texture || xyz.length !== 3 * this.atoms.count) return;
    for (let k = 0, from = 0, to = 0; k < this.atoms.count; ++k, from += 3, to += 4) {
      this.positions[to] = xyz[from] as number;
      this.positions[to + 1] = xyz[from + 1] as number;
      this.positions[to + 2] = xyz[from + 2] as number;
    }
    this.texture.needsUpdate = true;
    this.redraw();
    if (!this.framed) this.frameAll();
  }

  /** x, y, z of an atom. */
  positionOf(atom: number): Vector {
    return [this.positions[4 * atom] as number, this.positions[4 * atom + 1] as number, this.positions[4 * atom + 2] as number];
  }

  setSelection(flags: Uint8Array): void {
    if (!this.selection || flags.length !== this.selection.count) return;
    for (let k = 0; k < flags.length; ++k) this.selection.array[k] = flags[k] as number;
    this.selection.needsUpdate = true;
    this.redraw();
  }

  setCell(vectors: Vector[], directions: number): void {
    this.cell = vectors;
    const changed = this.directions !== directions;
    this.directions = directions;
    const [a, b, c] = vectors;
    const repeated = [directions === 3, directions >= 2, directions >= 1];
    const filled = [a, b, c].map((v, k) => (repeated[k] && v ? v : ([0, 1, 2].map((j) => (j === k ? 1 : 0)) as Vector)));
    const columns = filled.flat();
    this.shared.cell.value.fromArray(columns);
    this.shared.inverseCell.value.copy(this.shared.cell.value).invert();
    this.shared.repeats.value.set(...(repeated.map(Number) as Vector));
    this.drawCell(filled as Vector[], repeated);
    if (changed || this.images) this.rebuild();
    this.redraw();
  }

  /** To be called after images, spaceFilling or showCell have changed. */
  refresh(): void {
    this.shared.scale.value = this.spaceFilling ? 1.6 : 0.5;
    if (this.cellLines) this.cellLines.visible = this.showCell;
    this.rebuild();
  }

  /** Brings everything into the picture. */
  frameAll(): void {
    if (!this.atoms) return;
    const bounds = new THREE.Box3();
    const point = new THREE.Vector3();
    for (let k = 0; k < this.atoms.count; ++k) bounds.expandByPoint(point.set(...this.positionOf(k)));
    const center = bounds.getCenter(new THREE.Vector3());
    const direction = new THREE.Vector3(0.35, 0.25, 1).normalize();
    const turn = new THREE.Quaternion().setFromRotationMatrix(new THREE.Matrix4().lookAt(direction, new THREE.Vector3(), new THREE.Vector3(0, 1, 0))).invert();
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

  private drawCell(vectors: Vector[], repeated: boolean[]): void {
    if (this.cellLines) {
      // A cell that changes from frame to frame would fill the memory of the graphics card.
      this.scene.remove(this.cellLines);
      this.cellLines.geometry.dispose();
      this.cellLines.material.dispose();
      this.cellLines = null;
    }
    if (this.directions === 0) return;
    const points: number[] = [];
    const corner = (bits: number) =>
      [0, 1, 2].map((axis) => vectors.reduce((sum, v, k) => sum + (bits & (1 << k) ? (v[axis] as number) : 0), 0));
    for (let bits = 0; bits < 8; ++bits) {
      for (let k = 0; k < 3; ++k) {
        const within = [0, 1, 2].every((j) => repeated[j] || !(bits & (1 << j)));
        if (repeated[k] && within && !(bits & (1 << k))) points.push(...corner(bits), ...corner(bits | (1 << k)));
      }
    }
    const geometry = new THREE.BufferGeometry().setAttribute('position', new THREE.Float32BufferAttribute(points, 3));
    this.cellLines = new THREE.LineSegments(geometry, new THREE.LineBasicMaterial({ color: 0x8fa3bf }));
    this.cellLines.visible = this.showCell;
    this.scene.add(this.cellLines);
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

  private rebuild(): void {
    const flags = this.selection?.array.slice();
    for (const piece of [...this.pieces.children] as THREE.Mesh[]) {
      piece.geometry.dispose();
      (piece.material as THREE.Material).dispose();
    }
    this.pieces.clear();
    this.selection = null;
    this.redraw();
    const atoms = this.atoms;
    if (!atoms) return;
    const looks = atomLooks(atoms);
    const points = new THREE.BufferGeometry();
    const places = new THREE.Uint32BufferAttribute(Uint32Array.from({ length: atoms.count }, (_, k) => k), 1);
    places.gpuType = THREE.IntType;
    points.setAttribute('place', places);
    points.setAttribute('look', new THREE.BufferAttribute(looks, 4));
    this.selection = new THREE.BufferAttribute(new Float32Array(atoms.count), 1);
    if (flags && flags.length === atoms.count) (this.selection.array as Float32Array).set(flags as Float32Array);
    points.setAttribute('marked', this.selection);
    points.setDrawRange(0, atoms.count);
    const sticks = this.bondGeometry(atoms, looks);
    for (const [k, offset] of this.offsets().entries()) {
      const uniforms = { ...this.shared, offset: { value: new THREE.Vector3(...offset) }, fade: { value: k === 0 ? 0 : 0.55 } };
      const atomMaterial = new THREE.RawShaderMaterial({ glslVersion: THREE.GLSL3, vertexShader: atomVertex, fragmentShader: atomFragment, uniforms });
      const cloud = new THREE.Points(points, atomMaterial);
      cloud.frustumCulled = false;
      this.pieces.add(cloud);
      if (!sticks || this.spaceFilling) continue;
      const bondMaterial = new THREE.RawShaderMaterial({ glslVersion: THREE.GLSL3, vertexShader: bondVertex, fragmentShader: bondFragment, uniforms, side: THREE.DoubleSide });
      const mesh = new THREE.Mesh(sticks, bondMaterial);
      mesh.frustumCulled = false;
      this.pieces.add(mesh);
    }
  }

  private bondGeometry(atoms: Atoms, looks: Float32Array): THREE.InstancedBufferGeometry | null {
    const halves = atoms.bonds.length;
    if (halves === 0) return null;
    const pairs = new Uint32Array(2 * halves);
    const colours = new Float32Array(3 * halves);
    for (let k = 0; k < halves; ++k) {
      const from = atoms.bonds[k] as number;
      pairs.set([from, atoms.bonds[k ^ 1] as number], 2 * k);
      colours.set(looks.subarray(4 * from, 4 * from + 3), 3 * k);
    }
    const geometry = new THREE.InstancedBufferGeometry();
    geometry.instanceCount = halves;
    geometry.setAttribute('position', new THREE.Float32BufferAttribute([-1, 0, 0, 1, 0, 0, 1, 1, 0, -1, 1, 0], 3));
    geometry.setIndex([0, 1, 2, 0, 2, 3]);
    const pair = new THREE.InstancedBufferAttribute(pairs, 2);
    pair.gpuType = THREE.IntType;
    geometry.setAttribute('pair', pair);
    geometry.setAttribute('look', new THREE.InstancedBufferAttribute(colours, 3));
    return geometry;
  }

  private resize(): void {
    const { clientWidth: width, clientHeight: height } = this.box;
    if (width === 0 || height === 0) return;
    this.renderer.setSize(width, height);
    this.camera.aspect = width / height;
    this.camera.updateProjectionMatrix();
    // Diameter in pixels of a sphere of radius 1 at depth 1.
    this.shared.pixels.value = height / Math.tan((this.camera.fov * Math.PI) / 360);
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
      const right = new THREE.Vector3().crossVectors(this.camera.up, eye).normalize();
      const rotation = new THREE.Quaternion().setFromAxisAngle(right, 0.12 * turned[0]);
      rotation.multiply(new THREE.Quaternion().setFromAxisAngle(this.camera.up.clone().normalize(), 0.12 * turned[1]));
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
    if (!this.atoms) return null;
    const { clientWidth: width, clientHeight: height } = this.box;
    this.camera.updateMatrixWorld();
    const matrix = new THREE.Matrix4().multiplyMatrices(this.camera.projectionMatrix, this.camera.matrixWorldInverse);
    const looks = atomLooks(this.atoms);
    const point = new THREE.Vector4();
    let nearest: number | null = null;
    let depth = Infinity;
    for (let k = 0; k < this.atoms.count; ++k) {
      point.set(...this.positionOf(k), 1).applyMatrix4(matrix);
      const radius = Math.max((0.5 * (looks[4 * k + 3] as number) * this.shared.scale.value * this.shared.pixels.value) / point.w, 4);
      const dx = (0.5 + (0.5 * point.x) / point.w) * width - px;
      const dy = (0.5 - (0.5 * point.y) / point.w) * height - py;
      if (point.w > 0 && point.w < depth && dx * dx + dy * dy <= radius * radius) {
        nearest = k;
        depth = point.w;
      }
    }
    return nearest;
  }

  /** Where an atom stands in the picture, in pixels. */
  placeOf(atom: number): [number, number] {
    this.camera.updateMatrixWorld();
    const point = new THREE.Vector3(...this.positionOf(atom)).project(this.camera);
    return [(0.5 + 0.5 * point.x) * this.box.clientWidth, (0.5 - 0.5 * point.y) * this.box.clientHeight];
  }
}

/** Colour and radius of each atom, in a row. */
function atomLooks(atoms: Atoms): Float32Array {
  const looks = new Float32Array(4 * atoms.count);
  const byElement = atoms.symbols.map((symbol, k) => [...colourOf(symbol), (atoms.radii[k] || 1) * 1.1 + 0.15]);
  for (let k = 0; k < atoms.count; ++k) looks.set(byElement[atoms.elements[k] ?? 0] ?? [1, 0, 1, 1], 4 * k);
  return looks;
}
