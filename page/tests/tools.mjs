// The tools of the command line and the scripts that the tests use. They run in the project's folder.
import { execFileSync, spawnSync } from "node:child_process";
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

export const root = process.cwd();

export const examples = [
  { name: "lantern-keeper", game: "kv" },
  { name: "salt-ferry", game: "bh" },
  { name: "clockwork-orchard", game: "qf" },
].map((example) => ({ ...example, path: join(root, `examples/${example.name}.scr`) }));

export const temporary = () => mkdtempSync(join(tmpdir(), "varsul-page-"));

// Runs a tool of the command line on a script or listing.
export function run(tool, options, input) {
  const folder = temporary();
  writeFileSync(join(folder, "input"), input);
  const { status, stdout, stderr } = spawnSync(join(root, "build/tool", tool), [...options, "input"], { cwd: folder });
  const files = Object.fromEntries(readdirSync(folder).map((name) => [name, readFileSync(join(folder, name))]));
  rmSync(folder, { recursive: true });
  return { status, output: stdout, messages: stderr, files };
}

// The scripts of the golden cases and of the examples' sources, with their options.
export function goldenScripts() {
  const program = `
import json, pathlib, sys
sys.path.insert(0, "tests")
import golden_test
runs = [run.command for path in sorted(pathlib.Path("tests/cases").glob("*.case")) for run in golden_test.runs_of(path)]
print(json.dumps([[command[0][:-1], command[1].hex()] for command in runs if len(command) == 2]))`;
  const pairs = JSON.parse(execFileSync("python3", ["-c", program], { cwd: root, maxBuffer: 2 ** 28 }));
  return pairs.map(([options, hex]) => ({ options, bytes: Buffer.from(hex, "hex") }));
}
