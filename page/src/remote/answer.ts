// In a worker: answers requests.
import type { Answers, Reply, Shape } from "./protocol";

// The first message starts it, each one after that is a request.
export function answerRequests<R extends Shape<R>, Start = void>(
  start: (start: Start) => void,
  answers: Answers<R>,
): void {
  let started = false;
  self.onmessage = async ({ data }: MessageEvent) => {
    if (!started) {
      started = true;
      return start(data as Start);
    }
    const { kind, input } = data as { kind: keyof R; input: never };
    let reply: Reply;
    try {
      reply = { output: await answers[kind](input) };
    } catch (fault) {
      reply = { fault: fault instanceof Error ? fault.message : String(fault) };
    }
    self.postMessage(reply);
  };
}
