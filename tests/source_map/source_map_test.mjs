// Traces every line of a result with a reader of source maps, and compares what it finds with `qxp --origins`.
//
//     QXP=PROGRAM QXP_NPM_MODULES=FOLDER node --test source_map_test.mjs

import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { after, before, test } from 'node:test';

const require = createRequire(join(process.env.QXP_NPM_MODULES, 'package.json'));
const { TraceMap, eachMapping, originalPositionFor } = require('@jridgewell/trace-mapping');

const Main = `first
#include "parts/a part.inc"

#if 1
kept
#else
dropped
#endif
#for i 1;3;1

outer #i
// a comment
#for k #i;3;1

inner #i #k
#include "parts/a part.inc"

#for m 1;2;1
innermost #m
#endfor
last of #k
#endfor

#{ "two\\nlines of #i" }
#endfor
#{ ["a", "b", "c"].join("\\n") }
last
`;
const Part = `
part
#for j 1;2;1

row #j
#endfor
`;

let folder;

before(() => {
    folder = mkdtempSync(join(tmpdir(), 'qxp-source-map-'));
    mkdirSync(join(folder, 'out'));
    mkdirSync(join(folder, 'maps'));
    put('main.txt', Main);
    put('parts/a part.inc', Part);
});
after(() => rmSync(folder, { recursive: true }));

function put(name, text) {
    mkdirSync(dirname(join(folder, name)), { recursive: true });
    writeFileSync(join(folder, name), text);
}

function qxp(options, input) {
    return execFileSync(process.env.QXP, ['preprocess', ...options], { cwd: folder, encoding: 'utf8', input });
}

function linesOf(text) {
    return text === '' ? [] : text.replace(/\n$/, '').split('\n');
}

/// The lines of a text by the numbers that origins count with: a loop's are the lines behind its #for, without empty
/// ones, whatever its text stands in.
function numberedLines(name) {
    const loop = /^(.*) \(LOOP l\.(\d+)\)$/.exec(name);
    if (loop)
        return numberedLines(loop[1]).slice(Number(loop[2])).filter(line => line.text !== '');
    const texts = readFileSync(join(folder, name), 'utf8').split('\n');
    return texts.map((text, index) => ({ file: name, line: index + 1, text }));
}

function realOrigins(options) {
    return linesOf(qxp([...options, '--origins'])).map(line => {
        const [, name, number] = /^(.*?):(\d+):\t/.exec(line);
        const origin = numberedLines(name)[number - 1];
        return `${origin.file}:${origin.line}`;
    });
}

function readMap(name) {
    return JSON.parse(readFileSync(join(folder, name), 'utf8'));
}

/// Where a reader that knows the map's own place finds each line.
function tracedOrigins(mapName, count) {
    const map = new TraceMap(readMap(mapName), `file:///place/${mapName}`);
    return Array.from({ length: count }, (_, index) => {
        const { source, line, column } = originalPositionFor(map, { line: index + 1, column: 0 });
        assert.equal(column, 0);
        return `${decodeURIComponent(source.replace('file:///place/', ''))}:${line}`;
    });
}

test('every line of includes, nested loops, sections and inline script is traced to its origin', () => {
    qxp(['-o', 'out/result.txt', '--source-map', 'out/result.txt.map', 'main.txt']);
    const result = readFileSync(join(folder, 'out/result.txt'), 'utf8');
    const expected = realOrigins(['main.txt']);
    assert.equal(result, qxp(['main.txt']));
    assert.equal(expected.length, linesOf(result).length);
    assert.ok(expected.length > 40, `${expected.length} lines`);
    assert.deepEqual(tracedOrigins('out/result.txt.map', expected.length), expected);
    const map = readMap('out/result.txt.map');
    assert.equal(map.version, 3);
    assert.equal(map.file, 'result.txt');
    assert.deepEqual(map.sources, ['../main.txt', '../parts/a part.inc']);
    let segments = 0;
    eachMapping(new TraceMap(map), () => ++segments);
    assert.equal(segments, expected.length);
});

test('lines without blanks taken off are traced', () => {
    const options = ['--no-trim', 'main.txt'];
    const expected = realOrigins(options);
    qxp([...options, '--source-map', 'untrimmed.map', '-o', 'untrimmed.txt']);
    assert.deepEqual(tracedOrigins('untrimmed.map', expected.length), expected);
});

test('a line marker is traced to the line that it announces', () => {
    const marked = linesOf(qxp(['--line-markers', '--source-map', 'marked.map', 'main.txt']));
    const traced = tracedOrigins('marked.map', marked.length);
    const expected = realOrigins(['main.txt']);
    assert.deepEqual(traced.filter((_, index) => !marked[index].startsWith('#line ')), expected);
    marked.forEach((line, index) => {
        if (line.startsWith('#line '))
            assert.equal(traced[index], traced[index + 1]);
    });
});

test('files of the search directory are found from the map', () => {
    put('site/pages/page.txt', '#include "../head.inc"\nbody\n');
    put('site/head.inc', 'head\n');
    qxp(['-C', 'site', '--source-map', 'maps/page.map', '-o', 'page.html', 'pages/page.txt']);
    assert.deepEqual(readMap('maps/page.map').sources, ['../site/head.inc', '../site/pages/page.txt']);
    assert.deepEqual(tracedOrigins('maps/page.map', 2), ['site/head.inc:1', 'site/pages/page.txt:2']);
});

test('names with characters that addresses use are traced', () => {
    put('50% of #1?.txt', 'a\n');
    put('a:b.txt', 'b\n');
    qxp(['--source-map', 'names.map', '-o', 'names.txt', '50% of #1?.txt', 'a:b.txt']);
    assert.deepEqual(tracedOrigins('names.map', 2), ['50% of #1?.txt:1', 'a:b.txt:1']);
});

test('standard input has its name, and standard output none', () => {
    assert.equal(qxp(['--source-map', 'stdin.map', '-'], 'a\n\nb\n'), 'a\nb\n');
    assert.deepEqual(readMap('stdin.map'), { version: 3, sources: ['<stdin>'], names: [], mappings: 'AAAA;AAEA' });
});

test('nothing gives an empty map', () => {
    qxp(['--source-map', 'empty.map', '-'], '');
    assert.deepEqual(readMap('empty.map'), { version: 3, sources: [], names: [], mappings: '' });
});
