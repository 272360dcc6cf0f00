// Colours and signs of the kinds. All colours of a theme have the same lightness, so that one colour
// of text can be read on each.

interface Look {
  sign: string;
  hue: number;
  chroma: number;
}

const kLooks = new Map<string, Look>(
  Object.entries({
    function: { sign: "f", hue: 255, chroma: 0.11 },
    method: { sign: "m", hue: 232, chroma: 0.09 },
    constructor: { sign: "n", hue: 280, chroma: 0.1 },
    getter: { sign: "g", hue: 208, chroma: 0.08 },
    setter: { sign: "s", hue: 190, chroma: 0.08 },
    class: { sign: "C", hue: 60, chroma: 0.13 },
    interface: { sign: "I", hue: 78, chroma: 0.12 },
    enum: { sign: "E", hue: 92, chroma: 0.12 },
    namespace: { sign: "N", hue: 42, chroma: 0.11 },
    type: { sign: "T", hue: 70, chroma: 0.08 },
    variable: { sign: "v", hue: 148, chroma: 0.11 },
    field: { sign: "d", hue: 165, chroma: 0.08 },
    module: { sign: "i", hue: 335, chroma: 0.07 },
    callback: { sign: "c", hue: 250, chroma: 0.05 },
    logic: { sign: "?", hue: 108, chroma: 0.09 },
    loop: { sign: "o", hue: 124, chroma: 0.1 },
    statement: { sign: "-", hue: 250, chroma: 0.012 },
    element: { sign: "e", hue: 20, chroma: 0.09 },
    link: { sign: "l", hue: 355, chroma: 0.09 },
    script: { sign: "S", hue: 312, chroma: 0.09 },
    block: { sign: "b", hue: 298, chroma: 0.08 },
    file: { sign: "F", hue: 240, chroma: 0.03 },
    folder: { sign: "D", hue: 240, chroma: 0.015 },
  }),
);

const kUnknown: Look = { sign: "*", hue: 0, chroma: 0 };

export class Palette {
  readonly text: string;
  readonly line: string; // between boxes
  readonly small: string; // merged boxes
  readonly faded: string; // boxes that do not match
  readonly around: string; // boxes that contain what matches
  readonly chosen: string;

  constructor(private readonly dark: boolean) {
    this.text = dark ? "#f4f5f7" : "#15181c";
    this.line = dark ? "#15181c" : "#ffffff";
    this.small = dark ? "#4a4f57" : "#c3c7cd";
    this.faded = dark ? "#23272d" : "#f3f4f6";
    this.around = dark ? "#414853" : "#d5dae1";
    this.chosen = dark ? "#ffffff" : "#000000";
  }

  fill(kind: string): string {
    const look = kLooks.get(kind) ?? kUnknown;
    return this.dark
      ? `oklch(0.42 ${look.chroma * 0.9} ${look.hue})`
      : `oklch(0.86 ${look.chroma} ${look.hue})`;
  }
}

export function signOf(kind: string): string {
  return (kLooks.get(kind) ?? kUnknown).sign;
}
