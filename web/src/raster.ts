/*
 * Draws spheres and sticks into the pixels of a canvas, with a depth for each pixel. Where there is no graphics card
 * this takes a fraction of the time of WebGL, whose shaders are then run by the processor too; and pictures are the
 * same everywhere.
 */

export type Colour = readonly [number, number, number];

/** What lies behind everything, and what the distance fades into; 0 to 255. */
const ground: Colour = [18, 23, 31];
const marked: Colour = [255, 217, 26];

// A place on a sphere is shaded by its light, its gloss, and whether it is in the rim that marks; these are what a
// palette is read with. Fewer steps than pixels have, and none that the eye could see.
const lights = 64;
const mostGloss = 89;  // of 255
const glosses = 16;
const shades = 2 * lights * glosses;
const fades = 32;
// Depths are whole numbers of this part of a unit: comparing those is quicker. Heights are of a part of the radius.
const depthParts = 1024;
const mostHeightBits = 10;
const farthest = 0x7fffffff;
/** Spheres are drawn in sizes that differ by this factor. */
const sizeStep = 1.02;
const smallest = 0.75;
/** Pixels that stencils may have in all before they are made anew. */
const mostStencilPixels = 4 << 20;

/** A colour as spheres have it, in light and shadow, near and far, marked or not. */
export class Paint {
  private readonly palettes: (Uint32Array | undefined)[] = [];

  constructor(readonly colour: Colour) {}

  /** What each shade looks like of which a part (0 to 1) fades away. */
  palette(faded: number, rim: boolean): Uint32Array {
    const step = Math.round(faded * (fades - 1));
    return (this.palettes[2 * step + Number(rim)] ??= this.make(step / (fades - 1), rim));
  }

  private make(faded: number, rim: boolean): Uint32Array {
    return Uint32Array.from({ length: shades }, (_, shade) => {
      const light = ((shade >> 5) & (lights - 1)) / (lights - 1);
      const gloss = (mostGloss * ((shade >> 1) & (glosses - 1))) / (glosses - 1);
      const own = rim && shade & 1 ? marked : this.colour;
      const [red, green, blue] = own.map((part, k) => (1 - faded) * Math.min(light * part + gloss, 255) + faded * ground[k]!) as [number, number, number];
      return packed(red, green, blue);
    });
  }
}

/** What a sphere of one size covers, as seen from afar: row by row the columns, and of each pixel height and shade. */
interface Stencil {
  radius: number;
  first: Int32Array;
  starts: Int32Array;     // of each row in what follows, and the end
  heights: Int32Array;    // 0 to the most
  shades: Uint16Array;
}

const packed = (red: number, green: number, blue: number) => (255 << 24) | (blue << 16) | (green << 8) | red;

export class Raster {
  private readonly context: CanvasRenderingContext2D;
  private image: ImageData;
  private pixels = new Uint32Array(0);
  private depths = new Int32Array(0);
  private stencils: (Stencil | undefined)[] = [];
  private stencilPixels = 0;
  width = 0;
  height = 0;

  constructor(readonly canvas: HTMLCanvasElement) {
    const context = canvas.getContext('2d', { alpha: false });
    if (!context) throw new Error('The browser gives no canvas to draw in.');
    this.context = context;
    this.image = context.createImageData(1, 1);
  }

  resize(width: number, height: number): void {
    this.width = this.canvas.width = width;
    this.height = this.canvas.height = height;
    this.image = this.context.createImageData(width, height);
    this.pixels = new Uint32Array(this.image.data.buffer);
    this.depths = new Int32Array(width * height);
  }

  clear(): void {
    this.pixels.fill(packed(...ground));
    this.depths.fill(farthest);
  }

  show(): void {
    this.context.putImageData(this.image, 0, 0);
  }

  /**
   * A sphere around a pixel place: its radius in pixels, its depth and its radius in units of depth, its paint, how
   * much of it fades away (0 to 1), and whether it has a rim that marks it.
   */
  sphere(x: number, y: number, pixelRadius: number, depth: number, radius: number, paint: Paint, faded: number, rim: boolean): void {
    const { width, height, depths, pixels } = this;
    if (x + pixelRadius < 0 || x - pixelRadius > width || y + pixelRadius < 0 || y - pixelRadius > height) return;
    // One that would fill the picture is left out, as the viewer stands all but in it.
    if (2 * pixelRadius > Math.max(width, height)) return;
    // To half a pixel, so that nothing jumps as it moves.
    const column0 = Math.floor(x);
    const row0 = Math.floor(y);
    const stencil = this.stencil(pixelRadius, x - column0 < 0.5 ? 0 : 1, y - row0 < 0.5 ? 0 : 1);
    const { first, starts, heights, shades } = stencil;
    const palette = paint.palette(faded, rim);
    const middle = Math.min(depth * depthParts, farthest) | 0;
    const size = (radius * depthParts) | 0;
    const top = row0 - stencil.radius;
    const last = Math.min(first.length, height - top);
    for (let line = Math.max(-top, 0); line < last; ++line) {
      const row = (top + line) * width;
      const column = column0 + first[line]!;
      const begin = Math.max(column, 0);
      const from = starts[line]! - column;
      const end = Math.min(starts[line + 1]! - from, width);
      for (let at = begin; at < end; ++at) {
        const here = middle - ((size * heights[from + at]!) >> mostHeightBits);
        if (depths[row + at]! <= here) continue;
        depths[row + at] = here;
        pixels[row + at] = palette[shades[from + at]!]!;
      }
    }
  }

  /** Of a sphere whose middle is a quarter or three quarters of a pixel from the left and the top. */
  private stencil(pixelRadius: number, right: number, low: number): Stencil {
    const size = Math.max(Math.round(Math.log(pixelRadius / smallest) / Math.log(sizeStep)), 0);
    const key = 4 * size + 2 * right + low;
    const known = this.stencils[key];
    if (known) return known;
    if (this.stencilPixels > mostStencilPixels) {
      this.stencils = [];
      this.stencilPixels = 0;
    }
    const made = makeStencil(smallest * sizeStep ** size, 0.25 + 0.5 * right, 0.25 + 0.5 * low);
    this.stencils[key] = made;
    this.stencilPixels += made.heights.length;
    return made;
  }

  /** A round stick from one pixel place and depth to another; half its width in pixels. */
  stick(x0: number, y0: number, depth0: number, x1: number, y1: number, depth1: number, halfWidth: number, colour: Colour, faded: number): void {
    const { width, depths, pixels } = this;
    const half = Math.max(halfWidth, 0.5);
    const length = Math.max(Math.hypot(x1 - x0, y1 - y0), 1e-6);
    const along = [(x1 - x0) / length, (y1 - y0) / length] as const;
    const top = Math.max(Math.ceil(Math.min(y0, y1) - half - 0.5), 0);
    const bottom = Math.min(Math.floor(Math.max(y0, y1) + half - 0.5), this.height - 1);
    for (let row = top; row <= bottom; ++row) {
      const dy = row + 0.5 - y0;
      // Of the row, what lies between the two ends and between the two sides: each is linear in the column.
      const ends = within(along[0], along[1] * dy, 0, length);
      const sides = within(-along[1], along[0] * dy, -half, half);
      const left = Math.max(Math.ceil(Math.max(ends[0], sides[0]) + x0 - 0.5), 0);
      const right = Math.min(Math.floor(Math.min(ends[1], sides[1]) + x0 - 0.5), width - 1);
      for (let column = left, place = row * width + left; column <= right; ++column, ++place) {
        const dx = column + 0.5 - x0;
        const here = Math.min(depthParts * (depth0 + ((depth1 - depth0) * (along[0] * dx + along[1] * dy)) / length), farthest) | 0;
        if ((depths[place] as number) <= here) continue;
        depths[place] = here;
        const across = (along[0] * dy - along[1] * dx) / half;
        const light = (1 - faded) * (0.3 + 0.7 * Math.sqrt(Math.max(1 - across * across, 0)));
        pixels[place] = packed(
          light * colour[0] + faded * ground[0],
          light * colour[1] + faded * ground[1],
          light * colour[2] + faded * ground[2]);
      }
    }
  }
}

/** The range of u for which low <= slope * u + constant <= high. */
function within(slope: number, constant: number, low: number, high: number): readonly [number, number] {
  if (Math.abs(slope) < 1e-9) return constant >= low && constant <= high ? [-Infinity, Infinity] : [Infinity, -Infinity];
  const a = (low - constant) / slope;
  const b = (high - constant) / slope;
  return a < b ? [a, b] : [b, a];
}

function makeStencil(radius: number, x: number, y: number): Stencil {
  const reach = Math.ceil(radius + 1);
  const first: number[] = [];
  const starts = [0];
  const heights: number[] = [];
  const codes: number[] = [];
  for (let row = -reach; row <= reach; ++row) {
    const up = (y - row - 0.5) / radius;
    const half = radius * Math.sqrt(Math.max(1 - up * up, 0));
    const left = Math.ceil(x - half - 0.5);
    const right = Math.abs(up) < 1 ? Math.floor(x + half - 0.5) : left - 1;
    first.push(left);
    for (let column = left; column <= right; ++column) {
      const across = (column + 0.5 - x) / radius;
      const height = Math.sqrt(Math.max(1 - across * across - up * up, 0));
      const light = 0.35 + 0.65 * Math.max(-0.4 * across + 0.5 * up + 0.77 * height, 0);
      const gloss = Math.max(-0.25 * across + 0.32 * up + 0.91 * height, 0) ** 40;
      heights.push(height * (1 << mostHeightBits));
      codes.push((Math.round(light * (lights - 1)) << 5) | (Math.round(Math.min(gloss, 1) * (glosses - 1)) << 1) | Number(height * height < 0.45));
    }
    starts.push(heights.length);
  }
  return { radius: reach, first: Int32Array.from(first), starts: Int32Array.from(starts), heights: Int32Array.from(heights), shades: Uint16Array.from(codes) };
}
