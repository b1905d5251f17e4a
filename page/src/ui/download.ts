// Hands a file to the user.
export function download(name: string, content: BlobPart, type: string): void {
  const url = URL.createObjectURL(new Blob([content], { type }));
  const link = document.createElement("a");
  link.href = url;
  link.download = name;
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(url), 60_000);
}

export const nameOf = (path: string) => path.slice(path.lastIndexOf("/") + 1);

// A file's name with another extension.
export const withExtension = (path: string, extension: string) => nameOf(path).replace(/\.[^.]*$/, "") + extension;
