// Requests to workers and their replies: each request kind has its input and its output.

export type Shape<R> = { [K in keyof R]: { input: unknown; output: unknown } };
export type Answers<R extends Shape<R>> = {
  [K in keyof R]: (input: R[K]["input"]) => R[K]["output"] | Promise<R[K]["output"]>;
};

export interface Reply {
  readonly output?: unknown;
  readonly fault?: string;
}
