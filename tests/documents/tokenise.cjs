// tokenise.cjs GRAMMAR FILE: prints every piece of text that the grammar gives no scope of its own.
const fs = require('fs');
const oniguruma = require('vscode-oniguruma');
const textmate = require('vscode-textmate');

const [grammarFile, listing] = process.argv.slice(2);

async function main() {
  const wasm = fs.readFileSync(require.resolve('vscode-oniguruma').replace(/main\.js$/, 'onig.wasm'));
  await oniguruma.loadWASM(wasm.buffer.slice(wasm.byteOffset, wasm.byteOffset + wasm.byteLength));
  const registry = new textmate.Registry({
    onigLib: Promise.resolve({
      createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
      createOnigString: (text) => new oniguruma.OnigString(text),
    }),
    loadGrammar: async () => textmate.parseRawGrammar(fs.readFileSync(grammarFile, 'utf8'), grammarFile),
  });
  const grammar = await registry.loadGrammar('source.varsul');
  let state = textmate.INITIAL;
  let tokens = 0;
  const scopes = new Map();
  const bare = new Set();
  for (const line of fs.readFileSync(listing, 'utf8').split('\n')) {
    const result = grammar.tokenizeLine(line, state);
    state = result.ruleStack;
    for (const token of result.tokens) {
      const text = line.slice(token.startIndex, token.endIndex);
      if (text.trim() === '') continue;
      ++tokens;
      const scope = token.scopes.at(-1);
      scopes.set(scope, (scopes.get(scope) ?? 0) + 1);
      if (token.scopes.length < 2) bare.add(`${JSON.stringify(text)} in ${JSON.stringify(line)}`);
    }
  }
  if (process.env.VERBOSE) for (const [scope, count] of scopes) console.log(count, scope);
  for (const piece of bare) console.log(`no scope: ${piece}`);
  console.log(`${tokens} tokens, ${bare.size} without a scope, ${scopes.size} scopes`);
  if (tokens < 1000 || bare.size > 0) process.exitCode = 1;
}

main();
