// The problem matchers of editors/package.json find the places in what qxp says.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import test from 'node:test';

import { manifest, root } from './grammar.mjs';

/** The problem in a line, as an editor sees it; null for none. */
function problem(line) {
    const found = manifest.contributes.problemMatchers.map(({ pattern }) => {
        const match = new RegExp(pattern.regexp).exec(line);
        return match && {
            file: match[pattern.file],
            line: Number(match[pattern.line]),
            severity: match[pattern.severity],
            message: match[pattern.message],
        };
    }).filter(Boolean);
    assert.ok(found.length < 2, `several matchers take ${line}`);
    return found[0] ?? null;
}

test('a place is found', () => {
    assert.deepEqual(problem('a b/in.txt:12: error: "bad" is not defined !'),
        { file: 'a b/in.txt', line: 12, severity: 'error', message: '"bad" is not defined !' });
    assert.deepEqual(problem('in.txt:3: warning: careful: 1: error: x'),
        { file: 'in.txt', line: 3, severity: 'warning', message: 'careful: 1: error: x' });
    assert.deepEqual(problem('in.txt:3: note: included from here'),
        { file: 'in.txt', line: 3, severity: 'note', message: 'included from here' });
});

test('in a loop the place is that of the outermost for', () => {
    assert.deepEqual(problem('in.txt (LOOP l.2):1: error: x'), { file: 'in.txt', line: 2, severity: 'error', message: 'x' });
    assert.deepEqual(problem('in.txt (LOOP l.2) (LOOP l.4):1: error: x'),
        { file: 'in.txt', line: 2, severity: 'error', message: 'x' });
});

test('what has no place is none', () => {
    for (const line of ['qxp: error: Output file not writable', 'qxp: note: unresolved directives were kept', '    #bad', ''])
        assert.equal(problem(line), null, line);
});

test('every diagnostic of the golden runs is understood', () => {
    const cases = path.join(root, 'tests/cli/cases');
    let seen = 0;
    for (const file of fs.readdirSync(cases, { recursive: true }).filter((name) => path.basename(name) === 'stderr')) {
        if (file.includes('color'))
            continue;
        for (const line of fs.readFileSync(path.join(cases, file), 'utf8').split('\n')) {
            const place = /^(?!qxp: |\s)(.+):(\d+): (?:error|warning|note): /.exec(line);
            assert.equal(problem(line) !== null, place !== null, `${file}: ${line}`);
            if (place) {
                ++seen;
                assert.ok(place[1].startsWith(problem(line).file), line);
            }
        }
    }
    assert.ok(seen > 50, `${seen} seen`);
});
