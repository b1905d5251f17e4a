// Bundles the tests that are written in TypeScript, for node to run.
//
//     node tests/build.mjs OUTPUT-FOLDER
import { readdirSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";
import { grammars } from "../build.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const entryPoints = readdirSync(here).filter((name) => name.endsWith(".test.ts"));
await build({
  entryPoints: entryPoints.map((name) => join(here, name)),
  bundle: true,
  platform: "node",
  format: "esm",
  outdir: process.argv[2],
  outExtension: { ".js": ".mjs" },
  plugins: [grammars],
});
