import { BulkMessage } from './link';

/** The points of one data set, in arrays that grow. */
export class PointSet {
  x = new Float32Array(0);
  y = new Float32Array(0);
  count = 0;
  /** True while x never falls from one point to the next. */
  ascending = true;

  take(message: BulkMessage): void {
    const values = new Float32Array(message.bytes);
    if (message.first === 0) {
      this.count = 0;
      this.ascending = true;
    }
    this.reserve(message.first + message.count);
    for (let k = 0; k < message.count; ++k) {
      const place = message.first + k;
      this.x[place] = values[2 * k] as number;
      this.y[place] = values[2 * k + 1] as number;
      if (place > 0 && !((this.x[place] as number) >= (this.x[place - 1] as number))) this.ascending = false;
    }
    this.count = message.first + message.count;
  }

  private reserve(count: number): void {
    if (count <= this.x.length) return;
    const grown = Math.max(count, 2 * this.x.length);
    for (const axis of ['x', 'y'] as const) {
      const values = new Float32Array(grown);
      values.set(this[axis]);
      this[axis] = values;
    }
  }
}
