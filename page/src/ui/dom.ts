// Elements. Text always becomes text nodes, never markup.

type Child = Node | string | null | false;

type Properties<T> = { [K in keyof T]?: T[K] } & {
  on?: { [K in keyof HTMLElementEventMap]?: (event: HTMLElementEventMap[K]) => void };
};

export function element<K extends keyof HTMLElementTagNameMap>(
  name: K,
  properties: Properties<HTMLElementTagNameMap[K]> = {},
  ...children: Child[]
): HTMLElementTagNameMap[K] {
  const made = document.createElement(name);
  const { on, ...fields } = properties;
  Object.assign(made, fields);
  for (const [event, act] of Object.entries(on ?? {})) made.addEventListener(event, act as EventListener);
  made.append(...children.filter((child): child is Node | string => child !== null && child !== false));
  return made;
}

export function svg<K extends keyof SVGElementTagNameMap>(
  name: K,
  attributes: Readonly<Record<string, string | number>> = {},
  ...children: (Node | string)[]
): SVGElementTagNameMap[K] {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, String(value));
  made.append(...children);
  return made;
}

export const button = (label: string, act: () => void, properties: Properties<HTMLButtonElement> = {}) =>
  element("button", { type: "button", textContent: label, ...properties, on: { click: act } });

export function byId<T extends HTMLElement = HTMLElement>(id: string): T {
  return document.getElementById(id) as T;
}

// Calls back once things were quiet for some milliseconds.
export function whenQuiet<A extends unknown[]>(
  milliseconds: number,
  act: (...values: A) => void,
): (...values: A) => void {
  let timer = 0;
  return (...values) => {
    clearTimeout(timer);
    timer = window.setTimeout(() => act(...values), milliseconds);
  };
}
