// Which byte of the script each line of a listing begins with.

const dumpLine = /^; ([0-9A-F]{8}):( [0-9A-F]{2}| END$)/;

// From a listing with its dump: the offset of each line of the plain listing, by line number - 1; -1
// for a line that begins no node, as the second line of a text.
export function offsetsOf(plain: string, withDump: string): Int32Array {
  const lines = plain.split("\n");
  const offsets = new Int32Array(lines.length).fill(-1);
  const dumped = withDump.split("\n");
  let offset = -1;
  let at = 0;
  lines.forEach((line, index) => {
    if (line === "" || line.startsWith("; END")) return;
    while (at < dumped.length && dumped[at] !== line) {
      const dump = dumpLine.exec(dumped[at++]!);
      if (dump && offset < 0) offset = parseInt(dump[1]!, 16);
    }
    ++at;
    if (line.endsWith(":") && !line.startsWith(" ")) {
      offsets[index] = parseInt(line.slice(-9, -1), 16);
    } else {
      offsets[index] = offset;
      offset = -1;
    }
  });
  return offsets;
}
