// The folder editors/ is a package that editors can install: what its manifest names is there, and the documented
// command packs all of it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';

import { manifest, read, root } from './grammar.mjs';

const modules = path.join(process.env.QXP_NPM_MODULES, 'node_modules');
const yauzl = createRequire(path.join(modules, '@vscode/vsce/package.json'))('yauzl');
const { languages, grammars, problemMatchers } = manifest.contributes;
const inEditors = (file) => path.join('editors', file);

test('every file that the manifest names is there and is JSON', () => {
    const named = [...languages.map(({ configuration }) => configuration), ...grammars.map((grammar) => grammar.path)];
    assert.equal(named.length, 6);
    for (const file of named)
        assert.equal(typeof JSON.parse(read(inEditors(file))), 'object', file);
});

test('languages, grammars and matchers fit together', () => {
    assert.deepEqual(grammars.map(({ language }) => language), languages.map(({ id }) => id));
    for (const grammar of grammars)
        assert.equal(JSON.parse(read(inEditors(grammar.path))).scopeName, grammar.scopeName);
    for (const { name } of problemMatchers)
        assert.ok(read('docs/editors.md').includes(`"$${name}"`), name);
});

test('the license is that of the project', () => {
    assert.equal(read('editors/LICENSE'), read('LICENSE'));
    assert.ok(read('LICENSE').startsWith(`${manifest.license} License\n`));
});

/** What an archive holds: texts by names. */
function entries(file) {
    return new Promise((resolve, reject) => {
        yauzl.open(file, { lazyEntries: true }, (error, archive) => {
            if (error)
                return reject(error);
            const found = new Map();
            archive.on('entry', (entry) => archive.openReadStream(entry, async (failure, stream) => {
                if (failure)
                    return reject(failure);
                const parts = [];
                for await (const part of stream)
                    parts.push(part);
                found.set(entry.fileName, Buffer.concat(parts).toString());
                archive.readEntry();
            }));
            archive.on('end', () => resolve(found));
            archive.readEntry();
        });
    });
}

test('the documented command packs the whole folder, without complaints', async () => {
    const [, version, words] = /^npx @vscode\/vsce@(\S+) (package .*)$/m.exec(read('docs/editors.md'));
    assert.equal(version, JSON.parse(read('tests/npm/package.json')).devDependencies['@vscode/vsce']);
    const [, made] = /^code --install-extension (\S+)$/m.exec(read('docs/editors.md'));
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'qxp-editors-'));
    try {
        fs.cpSync(path.join(root, 'editors'), folder, { recursive: true });
        const output = execFileSync(process.execPath, [path.join(modules, '@vscode/vsce/vsce'), ...words.split(' ')],
            { cwd: folder, encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'] });
        assert.ok(!output.includes('WARNING'), output);
        const packed = await entries(path.join(folder, made));
        const files = fs.readdirSync(path.join(root, 'editors'), { recursive: true, withFileTypes: true })
            .filter((entry) => entry.isFile())
            .map((entry) => path.relative(path.join(root, 'editors'), path.join(entry.path, entry.name)));
        assert.ok(files.length >= 9, `${files.length} files`);
        for (const file of files) {
            const name = file === 'LICENSE' ? 'LICENSE.txt' : file;
            assert.equal(packed.get(`extension/${name}`), read(inEditors(file)), file);
        }
    } finally {
        fs.rmSync(folder, { recursive: true });
    }
});
