// The grammars know the words that the sources know.
import assert from 'node:assert/strict';
import test from 'node:test';

import { read, tokenizer } from './grammar.mjs';

const texts = await tokenizer('text.qxp');
const templates = await tokenizer('text.qxp.template');

/** The literals that `pattern` finds in a source file. */
const literals = (file, pattern) => [...read(file).matchAll(pattern)].map((match) => match[1]);

// "endfor" is no directive of its own: the loop looks for it.
const directives = [...literals('preprocessor/directives.cpp', /\{L"(\w+)", &CPreprocessor::Directive/g), 'endfor'];

const isDirective = (scopes) => scopes.some((scope) => scope.startsWith('keyword.control.directive.'));

test('every directive of the table is a directive', () => {
    assert.ok(directives.length >= 16, `${directives.length} found`);
    for (const word of directives) {
        const [{ line, scopesAt }] = texts(`  #${word} x`);
        assert.ok(isDirective(scopesAt(2)), line);
        assert.ok(isDirective(scopesAt(2 + word.length)), line);
        assert.ok(!isDirective(scopesAt(3 + word.length)), line);
    }
});

test('other words are none', () => {
    for (const text of [...directives.map((word) => `#${word}x`), ...directives.map((word) => `x #${word}`),
        ...directives.map((word) => `##${word}`), '#pragma once'])
        assert.ok(!isDirective(texts(text)[0].scopesAt(text.indexOf('#'))), text);
});

test('every type of tag is known', () => {
    const types = literals('tags/cond_plan_detail.cpp', /\{wxS\("(\w+)"\), CondPlan::Type::/g);
    assert.ok(types.length >= 5, `${types.length} found`);
    for (const type of [...types, ...types.map((name) => name.toUpperCase())])
        assert.ok(templates(`<%${type}%>`)[0].scopesAt(2).includes('keyword.control.template.qxp'), type);
    assert.ok(templates('<%keeps%>')[0].scopesAt(2).includes('invalid.illegal.unknown-tag.template.qxp'));
});

test('scripts in options are scripts', () => {
    const options = [...literals('tags/cond_plan_detail.cpp', /\{wxS\("(\w*DEFINE)"\)/g), 'cond', 'count'];
    assert.ok(options.length >= 4, `${options.length} found`);
    for (const option of options) {
        const text = `<%if ${option}="1"%>`;
        assert.ok(templates(text)[0].scopesAt(text.indexOf('1')).includes('meta.embedded.inline.javascript'), text);
    }
});

/** The texts of a page's blocks "qxp name=FILE", with the line where each begins. */
function inputs(page) {
    const found = [];
    let current = null;
    read(page).split('\n').forEach((line, index) => {
        if (/^```/.test(line)) {
            if (current)
                found.push(current);
            current = /^```qxp name=/.test(line) ? { place: `${page}:${index + 2}`, lines: [] } : null;
        } else if (current)
            current.lines.push(line);
    });
    return found;
}

test('directives in the inputs of the manual are directives, and nothing else is', () => {
    let seen = 0;
    for (const { place, lines } of inputs('docs/preprocessor.md')) {
        let depth = 0; // of block comments
        texts(lines.join('\n')).forEach(({ line, scopesAt }, index) => {
            const word = /^[ \t]*#(\w+)/.exec(line)?.[1];
            if (word && depth === 0) {
                assert.equal(isDirective(scopesAt(line.indexOf('#'))), directives.includes(word), `${place}+${index}`);
                ++seen;
            }
            depth += (line.match(/\/\*/g) ?? []).length - (line.match(/\*\//g) ?? []).length;
            depth = /["'].*[/*]{2}.*["']/.test(line) ? 0 : depth; // a comment's mark in a string
        });
    }
    assert.ok(seen > 100, `${seen} seen`);
});

test('no template of the manual holds something illegal', () => {
    const pages = inputs('docs/templates.md').filter(({ lines }) => lines.some((line) => line.includes('<%')));
    assert.ok(pages.length >= 8, `${pages.length} found`);
    for (const { place, lines } of pages) {
        templates(lines.join('\n')).forEach(({ line, scopesAt }, index) => {
            for (let column = 0; column < line.length; ++column)
                assert.ok(!scopesAt(column).some((scope) => scope.startsWith('invalid.')), `${place}+${index}: ${line}`);
        });
    }
});
