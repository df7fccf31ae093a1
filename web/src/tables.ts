/** True for the heading of a table with one row per frame: "rank   entry   frame   time/ps   value". */
export function isHeading(line: string): boolean {
  const columns = line.trim().split(/\s{2,}/);
  return columns.length > 2 && columns.includes('frame');
}

/** The number of the frame in the file that a row names, under the columns of the heading above it; null for no row. */
export function frameOfRow(line: string, columns: string[] | null): number | null {
  if (!columns) return null;
  const cells = line.trim().split(/\s+/);
  const frame = cells[columns.indexOf('frame')];
  const isRow = cells.length === columns.length && cells.every((cell) => Number.isFinite(Number(cell)));
  return isRow && frame !== undefined && Number.isInteger(Number(frame)) ? Number(frame) : null;
}

/** The place of a frame of the file in the range; null where the range leaves it out. */
export function placeInRange(frame: number, first: number, last: number, increment: number): number | null {
  const place = (frame - first) / increment + 1;
  return frame >= first && frame <= last && Number.isInteger(place) ? place : null;
}
