// Links between the pages lead somewhere.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import test from 'node:test';

import { brokenLinks, links, pages, parts, root, slug } from './pages.mjs';

const read = (page) => fs.readFileSync(path.join(root, page), 'utf8');

test('no page has a broken link', () => {
    const exists = (file) => fs.existsSync(path.join(root, file));
    assert.ok(pages.length > 10);
    assert.ok(pages.flatMap((page) => parts(read(page)).lines.flatMap(({ line }) => links(line))).length > 30);
    assert.deepEqual(pages.flatMap((page) => brokenLinks(page, read, exists)), []);
});

test('every page of docs is in its index', () => {
    const index = parts(read('docs/README.md')).lines.flatMap(({ line }) => links(line));
    for (const page of pages.filter((name) => name.startsWith('docs/') && name !== 'docs/README.md'))
        assert.ok(index.includes(path.basename(page)), page);
});

test('shared libraries are called by the version they have', () => {
    const major = /project\(vc_qxparser VERSION (\d+)\./.exec(read('CMakeLists.txt'))[1];
    const names = pages.flatMap((page) => read(page).match(/libvc_qxparser\w*\.so\.\d+/g) ?? []);
    assert.ok(names.length > 0);
    assert.deepEqual(names.filter((name) => !name.endsWith(`.so.${major}`)), []);
});

test('broken links are found', () => {
    const texts = {
        'a.md': '# A\n[b](b.md), [one](b.md#one-x), [self](#a), [there](x.h)\n```\n[no](link.md)\n```\n`[no](link.md)`\n',
        'b.md': '# B\n## One X\n[a](a.md#b)\n\n[c](c.md) [b](#two)\n[x](x.h#y) [out](https://example.org/#x)\n',
    };
    const readPage = (page) => texts[page];
    const exists = (file) => file in texts || file === 'x.h';
    assert.deepEqual(brokenLinks('a.md', readPage, exists), []);
    assert.deepEqual(brokenLinks('b.md', readPage, exists),
        ['b.md:3: a.md#b', 'b.md:5: c.md', 'b.md:5: #two', 'b.md:6: x.h#y']);
});

test('anchors are those that readers of the files have', () => {
    assert.equal(slug('The character #'), 'the-character-');
    assert.equal(slug('qxp `tags`: more_or-less'), 'qxp-tags-more_or-less');
});
