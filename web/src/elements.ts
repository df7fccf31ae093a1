/** Colours of common elements, for a dark background; all others are pink. */
const colours: Record<string, number> = {
  H: 0xf2f2f2, D: 0xdde6f2, C: 0x8c8c8c, N: 0x4f7bff, O: 0xff4a3d, F: 0x8fdc5a, P: 0xff9a2e, S: 0xf2d43c, Cl: 0x3fd645,
  Br: 0xb0443a, I: 0xa04bc4, He: 0xc9ffff, Ne: 0xa8e4f5, Ar: 0x6fd0dc, Kr: 0x5cb8d1, Xe: 0x429eb0, Li: 0xcc80ff,
  Na: 0xab7cf2, K: 0x9f60e0, Mg: 0x8fe060, Ca: 0x5fd23c, B: 0xffb5a8, Si: 0xe0c08c, Al: 0xbfa6a6, Fe: 0xe0773c,
  Cu: 0xd08a4a, Zn: 0x9a9fc4, Ti: 0xbfc2c7, Au: 0xffd123, Ag: 0xc8c8c8,
};
const other = 0xe58ac0;

/** Red, green and blue of an element, 0 to 255. */
export function colourOf(symbol: string): [number, number, number] {
  const hex = colours[symbol] ?? other;
  return [hex >> 16, (hex >> 8) & 255, hex & 255];
}
