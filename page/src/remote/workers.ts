// Workers for requests: each is answered, fails with a message, or ends its worker when it takes too long.
import type { Reply, Shape } from "./protocol";

interface Job {
  readonly kind: PropertyKey;
  readonly input: unknown;
  readonly resolve: (output: never) => void;
  readonly reject: (fault: Error) => void;
}

export class Stopped extends Error {}

// Workers that share one queue. A worker that takes longer than the limit is ended and replaced.
export class Workers<R extends Shape<R>> {
  private readonly queue: Job[] = [];
  private readonly idle: Worker[] = [];
  private count = 0;

  constructor(
    private readonly code: string,
    private readonly start: unknown,
    private readonly most: number,
    private readonly limitInSeconds: number,
  ) {}

  // Urgent requests go before those that wait.
  ask<K extends keyof R>(kind: K, input: R[K]["input"], urgent = false): Promise<R[K]["output"]> {
    return new Promise((resolve, reject) => {
      const job: Job = { kind, input, resolve, reject };
      if (urgent) this.queue.unshift(job);
      else this.queue.push(job);
      this.next();
    });
  }

  // Drops the requests that wait.
  stop(): void {
    for (const job of this.queue.splice(0)) job.reject(new Stopped("stopped"));
  }

  private next(): void {
    if (this.queue.length === 0) return;
    const worker = this.idle.pop() ?? (this.count < this.most ? this.begin() : null);
    if (worker) this.give(worker, this.queue.shift()!);
  }

  private begin(): Worker {
    ++this.count;
    const url = URL.createObjectURL(new Blob([this.code], { type: "text/javascript" }));
    const worker = new Worker(url);
    URL.revokeObjectURL(url);
    worker.postMessage(this.start);
    return worker;
  }

  private give(worker: Worker, job: Job): void {
    const fail = (message: string) => {
      worker.terminate();
      clearTimeout(timer);
      --this.count;
      job.reject(new Error(message));
      this.next();
    };
    const timer = setTimeout(
      () => fail(`This took longer than ${this.limitInSeconds} seconds and was ended.`),
      this.limitInSeconds * 1000,
    );
    worker.onerror = () => fail("The work ended without a result: its memory is exhausted.");
    worker.onmessage = ({ data }: MessageEvent<Reply>) => {
      clearTimeout(timer);
      this.idle.push(worker);
      if (data.fault === undefined) job.resolve(data.output as never);
      else job.reject(new Error(data.fault));
      this.next();
    };
    worker.postMessage({ kind: job.kind, input: job.input });
  }
}
