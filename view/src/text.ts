// How texts of unknown origin are shown, and figures written.

// What has no shape of its own or changes how other characters are laid out: controls, bidi
// controls, zero-width and tag characters, interlinear marks. Tabs are shown as blanks.
const kInvisible =
  /[\u0000-\u0008\u000a-\u001f\u007f-\u009f\u00ad\u061c\u115f\u1160\u180e\u200b\u200e\u200f\u2028-\u202e\u2060-\u206f\u3164\ufeff\uffa0\ufff9-\ufffb]|\udb40[\udc00-\udc7f]/g;

function codePoint(character: string): string {
  return `[U+${character.codePointAt(0)!.toString(16).toUpperCase().padStart(4, "0")}]`;
}

// The text on one line, with invisible characters as [U+202E].
export function visible(text: string): string {
  return text.replace(kInvisible, codePoint).replaceAll("\t", " ");
}

const kNumbers = new Intl.NumberFormat("en-US", { maximumFractionDigits: 0 });

export function number(value: number): string {
  return kNumbers.format(value);
}

export function count(value: number, word: string): string {
  return `${number(value)} ${word}${value === 1 ? "" : "s"}`;
}

export function bytes(value: number): string {
  if (value < 10_000) return count(value, "byte");
  const units = ["kB", "MB", "GB", "TB"];
  let unit = -1;
  do {
    value /= 1000;
    ++unit;
  } while (value >= 1000 && unit < units.length - 1);
  return `${value < 10 ? value.toFixed(1) : Math.round(value)} ${units[unit]}`;
}
