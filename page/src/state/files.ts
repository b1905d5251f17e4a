// Files and folders that a user picked or dropped.
import type { Bytes } from "../script/script";

export interface Picked {
  readonly path: string;
  readonly size: number;
  read(): Promise<Bytes>;
}

function picked(file: File, path: string): Picked {
  return { path, size: file.size, read: async () => new Uint8Array(await file.arrayBuffer()) };
}

export const fromInput = (files: FileList): Picked[] =>
  [...files].map((file) => picked(file, file.webkitRelativePath || file.name));

export async function fromDrop(transfer: DataTransfer): Promise<Picked[]> {
  // The items are gone once this function waits.
  const items = [...transfer.items].map((item) => item.webkitGetAsEntry() ?? item.getAsFile());
  const found: Picked[] = [];
  for (const item of items) {
    if (item instanceof File) found.push(picked(item, item.name));
    else if (item) await collect(item, found);
  }
  return found;
}

async function collect(entry: FileSystemEntry, found: Picked[]): Promise<void> {
  if (entry.isFile) {
    const file = await new Promise<File>((resolve, reject) => (entry as FileSystemFileEntry).file(resolve, reject));
    found.push(picked(file, entry.fullPath.replace(/^\//, "")));
    return;
  }
  const reader = (entry as FileSystemDirectoryEntry).createReader();
  for (;;) {
    // Each call gives some more of the folder.
    const some = await new Promise<FileSystemEntry[]>((resolve, reject) => reader.readEntries(resolve, reject));
    if (some.length === 0) return;
    for (const inner of some) await collect(inner, found);
  }
}
