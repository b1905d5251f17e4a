// Builds varsul.html, one file with all code, styles, examples and WebAssembly in it.
//
//     node build.mjs WASM OUTPUT      (the library compiled by wasm/, the page to write)
import { createHash } from "node:crypto";
import { readdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { buildParserFile } from "@lezer/generator";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));

// A grammar stands for two modules: its parser, and with ".terms" behind its name its node types.
export const grammars = {
  name: "grammars",
  setup(build) {
    build.onResolve({ filter: /\.grammar(\.terms)?$/ }, ({ path, resolveDir }) => ({
      path: resolve(resolveDir, path),
      namespace: "grammar",
    }));
    build.onLoad({ filter: /.*/, namespace: "grammar" }, ({ path }) => {
      const file = path.replace(/\.terms$/, "");
      const { parser, terms } = buildParserFile(readFileSync(file, "utf8"), { fileName: file, moduleStyle: "es" });
      return {
        contents: file === path ? parser.replace(/^import .*\.terms.*$/m, "") : terms,
        resolveDir: dirname(file),
      };
    });
  },
};

export const common = {
  bundle: true,
  format: "iife",
  target: "es2022",
  charset: "utf8",
  legalComments: "none",
  minify: true,
  write: false,
  plugins: [grammars],
  loader: { ".scr": "binary" },
};

const packages = new Set(); // that the page is bundled with, by their folders

async function bundle(entry, define = {}) {
  const result = await build({
    ...common,
    entryPoints: [join(here, entry)],
    define,
    metafile: true,
    absWorkingDir: here,
  });
  for (const input of Object.keys(result.metafile.inputs)) {
    const [folder] = /^node_modules\/(@[^/]+\/)?[^/]+/.exec(input) ?? [];
    if (folder) packages.add(folder);
  }
  return result.outputFiles[0].text;
}

// What the authors of a package ask to be said: its licence, or the notice that heads its code.
function noticeOf(folder) {
  const {
    name,
    version,
    license,
    main = "dist/viz.js",
  } = JSON.parse(readFileSync(join(here, folder, "package.json"), "utf8"));
  const file = readdirSync(join(here, folder)).find((name) => /^licen[cs]e/i.test(name));
  const text = file
    ? readFileSync(join(here, folder, file), "utf8")
    : /\/\*!\n([^]*?)\*\//.exec(readFileSync(join(here, folder, main), "utf8"))[1];
  return `${name} ${version} (${license})\n\n${text.trim()}\n`;
}

// Inside a script element nothing may look like its end.
const inScript = (code) => code.replace(/<\/(script)/gi, "<\\/$1").replace(/<!--/g, "<\\!--");

const hashOf = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

async function page(wasm, version) {
  const workers = {
    LIBRARY_WORKER: JSON.stringify(await bundle("src/library/worker.ts")),
    DRAWING_WORKER: JSON.stringify(await bundle("src/drawing/worker.ts")),
    LIBRARY_WASM: JSON.stringify(wasm.toString("base64")),
    VERSION: JSON.stringify(version),
  };
  const code = inScript(await bundle("src/main.ts", workers));
  const notices = [...packages]
    .sort()
    .map(noticeOf)
    .join(`\n${"-".repeat(72)}\n\n`);
  const style = (await build({ ...common, entryPoints: [join(here, "src/style.css")] })).outputFiles[0].text;
  const nonce = createHash("sha256").update(code).digest("hex").slice(0, 32);
  const policy = [
    "default-src 'none'",
    `script-src ${hashOf(code)} 'wasm-unsafe-eval'`,
    "worker-src blob:",
    `style-src ${hashOf(style)} 'nonce-${nonce}'`,
    "img-src blob: data:",
    "base-uri 'none'",
    "form-action 'none'",
  ].join("; ");
  const parts = { policy, style, code, nonce, notices: inScript(notices) };
  return readFileSync(join(here, "src/index.html"), "utf8").replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]);
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const [wasm, output] = process.argv.slice(2);
  const version = /project\(varsul VERSION (\S+)/.exec(readFileSync(join(here, "../CMakeLists.txt"), "utf8"))[1];
  writeFileSync(output, await page(readFileSync(wasm), version));
}
