// Loads the grammars of editors/ for tests.
import fs from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

export const root = fileURLToPath(new URL('../..', import.meta.url));
export const read = (file) => fs.readFileSync(path.join(root, file), 'utf8');
export const manifest = JSON.parse(read('editors/package.json'));

const require = createRequire(path.join(process.env.QXP_NPM_MODULES, 'package.json'));
const textmate = require('vscode-textmate');
const oniguruma = require('vscode-oniguruma');

const files = new Map(manifest.contributes.grammars.map((g) => [g.scopeName, path.join('editors', g.path)]));

const onigLib = oniguruma.loadWASM(fs.readFileSync(require.resolve('vscode-oniguruma/release/onig.wasm')).buffer)
    .then(() => ({
        createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
        createOnigString: (text) => new oniguruma.OnigString(text),
    }));

const registry = new textmate.Registry({
    onigLib,
    loadGrammar: async (scope) =>
        files.has(scope) ? textmate.parseRawGrammar(read(files.get(scope)), files.get(scope)) : null,
});

/** A function from a text to its lines, each with a function `scopesAt(column)` that gives a list of scopes. */
export async function tokenizer(scope) {
    const grammar = await registry.loadGrammar(scope);
    return (text) => {
        let stack = textmate.INITIAL;
        return text.split('\n').map((line) => {
            const { tokens, ruleStack } = grammar.tokenizeLine(line, stack);
            stack = ruleStack;
            const scopesAt = (column) => tokens.find((t) => t.startIndex <= column && column < t.endIndex).scopes;
            return { line, scopesAt };
        });
    };
}
