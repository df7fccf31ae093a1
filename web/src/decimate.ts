/** The first place in sorted values whose value is not below `x`. */
export function lowerBound(values: ArrayLike<number>, count: number, x: number): number {
  let low = 0;
  let high = count;
  while (low < high) {
    const middle = (low + high) >> 1;
    if ((values[middle] as number) < x) low = middle + 1;
    else high = middle;
  }
  return low;
}

/**
 * A curve as it looks on `columns` pixels: of the points that fall into one column, the first, the lowest, the highest
 * and the last, in their order. One point on either side of the range is kept, so that lines leave the picture.
 *
 * @param x  ascending; only the first `count` values of x and y are points
 */
export function decimate(
  x: Float32Array,
  y: Float32Array,
  count: number,
  low: number,
  high: number,
  columns: number,
): { x: number[]; y: number[] } {
  const begin = Math.max(lowerBound(x, count, low) - 1, 0);
  const end = Math.min(lowerBound(x, count, high) + 1, count);
  const kept = { x: [] as number[], y: [] as number[] };
  const keep = (k: number) => {
    kept.x.push(x[k] as number);
    kept.y.push(y[k] as number);
  };
  if (end - begin <= 4 * columns) {
    for (let k = begin; k < end; ++k) keep(k);
    return kept;
  }
  const scale = columns / (high - low);
  for (let k = begin; k < end; ) {
    const column = Math.floor(((x[k] as number) - low) * scale);
    // The column ends where the next one begins; rounding may set that back to this very point.
    const next = Math.max(Math.min(lowerBoundFrom(x, k, end, low + (column + 1) / scale), end), k + 1);
    let lowest = k;
    let highest = k;
    for (let j = k + 1; j < next; ++j) {
      if ((y[j] as number) < (y[lowest] as number)) lowest = j;
      if ((y[j] as number) > (y[highest] as number)) highest = j;
    }
    let last = -1;
    for (const place of [k, Math.min(lowest, highest), Math.max(lowest, highest), next - 1]) {
      if (place > last) keep(place);
      last = Math.max(last, place);
    }
    k = next;
  }
  return kept;
}

/** lowerBound from a place on, quick where the answer is near. */
function lowerBoundFrom(values: Float32Array, from: number, count: number, x: number): number {
  let step = 1;
  while (from + step < count && (values[from + step] as number) < x) step *= 2;
  let low = from;
  let high = Math.min(from + step, count);
  while (low < high) {
    const middle = (low + high) >> 1;
    if ((values[middle] as number) < x) low = middle + 1;
    else high = middle;
  }
  return low;
}

/** The lowest and highest value of y among the points in a range of x; null if there is none. */
export function yRange(x: Float32Array, y: Float32Array, count: number, low: number, high: number): [number, number] | null {
  let lowest = Infinity;
  let highest = -Infinity;
  const end = lowerBound(x, count, high);
  for (let k = Math.max(lowerBound(x, count, low) - 1, 0); k < Math.min(end + 1, count); ++k) {
    const value = y[k] as number;
    if (value < lowest) lowest = value;
    if (value > highest) highest = value;
  }
  return lowest <= highest ? [lowest, highest] : null;
}
