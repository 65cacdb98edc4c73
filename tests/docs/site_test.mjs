// The site has what the pages have, and its links lead somewhere.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import test from 'node:test';

import { pages, parts, root } from './pages.mjs';

const site = process.env.QXP_SITE;
const htmlOf = new Map(fs.readdirSync(site).filter((name) => name.endsWith('.html'))
    .map((name) => [name, fs.readFileSync(path.join(site, name), 'utf8')]));

const entities = { lt: '<', gt: '>', amp: '&', quot: '"', apos: "'", ndash: '–', mdash: '—', '#39': "'", '#160': ' ' };
const unescape = (text) => text.replace(/&(#?\w+);/g, (all, name) => entities[name] ?? all);
const oneLine = (text) => text.replace(/\s+/g, ' ').trim();

const fileOf = (page) => page === 'README.md' ? 'index.html' :
    `${page.replace(/\.md$/, '').replace(/[^A-Za-z0-9]+/g, '_').toLowerCase()}.html`;

/** The code of a page that its text on the site does not have. */
function missingCode(markdown, html) {
    const text = oneLine(unescape(html.replace(/<[^>]*>/g, '')));
    const { lines, blocks } = parts(markdown);
    const spans = lines.flatMap(({ line }) => [...line.matchAll(/`([^`]+)`/g)].map((match) => match[1].replace(/\\\|/g, '|')));
    return [...spans, ...blocks.map(({ line }) => line)].map(oneLine).filter((code) => !text.includes(code));
}

test('code is on the site as it is on the pages', () => {
    for (const page of pages.filter((name) => !name.startsWith('editors/'))) {
        const html = htmlOf.get(fileOf(page));
        assert.ok(html, `${fileOf(page)} is missing`);
        assert.deepEqual(missingCode(fs.readFileSync(path.join(root, page), 'utf8'), html), [], page);
    }
});

test('missing code is found', () => {
    assert.deepEqual(missingCode('`[%a%]` and `x`\n```\nb < c\n```\n', '<code>[a%]</code> <code>x</code><pre>b &lt; c</pre>'),
        ['[%a%]']);
});

test('no link of the site is broken', () => {
    const anchors = new Map([...htmlOf].map(([name, html]) =>
        [name, new Set([...html.matchAll(/ (?:id|name)="([^"]*)"/g)].map((match) => match[1]))]));
    const broken = [];
    let seen = 0;
    for (const [name, html] of htmlOf) {
        for (const [, link] of html.matchAll(/ (?:href|src)="([^"]*)"/g)) {
            // Doxygen heads the list of nested classes with a link also where all of them are private.
            if (/^[a-z]+:/.test(link) || link === '#nested-classes')
                continue;
            const [target, anchor] = unescape(link).split('#');
            const file = target || name;
            const isThere = anchors.has(file) ? !anchor || anchors.get(file).has(anchor) : fs.existsSync(path.join(site, file));
            if (!isThere)
                broken.push(`${name}: ${link}`);
            ++seen;
        }
    }
    assert.ok(seen > 1000, `${seen} seen`);
    assert.deepEqual(broken, []);
});
